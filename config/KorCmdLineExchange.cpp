#include "config/KorCmdLineExchange.h"

#include "config/KorCmdLine.h"
#include "text/KorStringDetail.h"

CKorCmdLineExchange::CKorCmdLineExchange(CKorCmdLine* pCmdLine)
    : m_pCmdLine(pCmdLine), m_bInitialized(false)
{
    CKorCmdLineExchange::Initialize();
}

CKorCmdLineExchange::~CKorCmdLineExchange() = default;

void CKorCmdLineExchange::Initialize()
{
    m_bInitialized = false;
    if (m_pCmdLine != nullptr)
        m_pCmdLine->DoOptionExchange(this);
    CopyCmdLineArgs();
    m_bInitialized = true;
}

void CKorCmdLineExchange::CopyCmdLineArgs()
{
    m_vecArgs.clear();
    if (m_pCmdLine == nullptr)
        return;
    for (const std::string& strArgument : m_pCmdLine->m_vecArgs)
        KorAdd(m_vecArgs, strArgument);
}

bool CKorCmdLineExchange::IsInitialized() const
{
    return m_bInitialized;
}

void CKorCmdLineExchange::AddParamDescription(const char* pszName, bool bHasValue)
{
    if (pszName != nullptr && *pszName != '\0')
        m_vecOptionDesc.push_back({bHasValue, pszName});
}

bool CKorCmdLineExchange::GetParameter(const char* pszName, bool bHasValue, std::string& strValue)
{
    if (pszName == nullptr || *pszName == '\0')
        return GetPositional(strValue);
    return GetOption(std::string("-") + pszName, bHasValue, strValue);
}

bool CKorCmdLineExchange::GetOption(const std::string& strArgument, bool bHasValue,
                                    std::string& strValue)
{
    strValue = "0";
    auto itOption = m_vecArgs.begin();
    while (itOption != m_vecArgs.end() && *itOption != strArgument)
        ++itOption;
    if (itOption == m_vecArgs.end())
        return false;
    if (!bHasValue) {
        strValue = "1";
        return true;
    }

    const auto itValue = itOption + 1;
    const bool bLast = itValue == m_vecArgs.end();
    strValue = bLast ? std::string_view() : *itValue;
    m_vecArgs.erase(itOption, bLast ? itValue : itValue + 1);
    return true;
}

bool CKorCmdLineExchange::GetPositional(std::string& strValue)
{
    for (size_t i = 0; i < m_vecArgs.size(); ++i) {
        const EArgument nArgument = Classify(m_vecArgs[i]);
        if (nArgument == EArgument::POSITIONAL) {
            strValue = m_vecArgs[i];
            const auto itArgument = m_vecArgs.begin() + static_cast<std::ptrdiff_t>(i);
            m_vecArgs.erase(itArgument, itArgument + 1);
            return true;
        }
        if (nArgument == EArgument::OPTION_WITH_VALUE)
            ++i;
    }
    return false;
}

CKorCmdLineExchange::EArgument CKorCmdLineExchange::Classify(const std::string& strArgument) const
{
    if (strArgument.empty() || strArgument[0] != '-')
        return EArgument::POSITIONAL;

    EArgument nArgument = EArgument::POSITIONAL;
    for (const SOptionDesc& oDesc : m_vecOptionDesc) {
        if (std::string_view(strArgument).substr(1) != oDesc.m_strName)
            continue;
        if (oDesc.m_bHasValue)
            return EArgument::OPTION_WITH_VALUE;
        nArgument = EArgument::FLAG;
    }
    return nArgument;
}
