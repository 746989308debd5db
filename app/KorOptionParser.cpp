#include "app/KorOptionParser.h"

#include "app/KorOptionHelpDetail.h"
#include "text/KorStringDetail.h"
#include "text/KorStringFunc.h"

#include <algorithm>
#include <iterator>

namespace
{

std::string Quoted(std::string_view strText)
{
    return std::string("'").append(strText).append("'");
}

/// The name as a person types it.
std::string Shown(std::string_view strName)
{
    return std::string(strName.size() == 1 ? "-" : "--").append(strName);
}

/// What stands behind the last "/"; also for a program without extension.
std::string FileNameOf(std::string_view strPath)
{
    return std::string(strPath.substr(strPath.rfind('/') + 1)); // npos + 1 is 0
}

bool IsNumber(std::string_view strText)
{
    double nNumber = 0;
    return KorReadText(strText, nNumber);
}

} // namespace

/// Builds the help.
struct TARVO_EXT_LOCAL CKorOptionParser::SHelp
{
    static std::string Of(const CKorOptionParser& oParser);
    static std::string Usage(const CKorOptionParser& oParser);
    static std::string Label(const CKorOptionParser& oParser, const SEntry& oEntry);
    static std::list<SKorHelpRow> Rows(const CKorOptionParser& oParser, bool bArguments);
};

std::string CKorOptionParser::SHelp::Usage(const CKorOptionParser& oParser)
{
    std::string strUsage = "[OPTION...]";
    for (const SEntry& oEntry : oParser.m_lstEntries) {
        if (!IsArgument(oEntry))
            continue;
        const bool bRequired = oEntry.eKind == KIND_REQUIRED;
        strUsage.append(bRequired ? " " : " [").append(oEntry.strMeta);
        strUsage.append(oEntry.oTarget.bRepeats ? "..." : "").append(bRequired ? "" : "]");
    }
    return strUsage;
}

/// The names under which an entry can be reached, and its value.
std::string CKorOptionParser::SHelp::Label(const CKorOptionParser& oParser, const SEntry& oEntry)
{
    std::string strLabel;
    bool bLong = false;
    for (const std::string& strName : oEntry.vecNames) {
        if (const_cast<CKorOptionParser&>(oParser).Find(strName) != &oEntry)
            continue;
        if (strLabel.empty() && strName.size() > 1)
            strLabel = "    ";
        else if (!strLabel.empty())
            strLabel.append(", ");
        strLabel.append(Shown(strName));
        bLong = strName.size() > 1;
    }
    if (oEntry.eKind == KIND_OPTION)
        strLabel.append(bLong ? "=" : " ").append(oEntry.strMeta);
    return strLabel;
}

std::list<SKorHelpRow> CKorOptionParser::SHelp::Rows(const CKorOptionParser& oParser,
                                                     bool bArguments)
{
    std::list<SKorHelpRow> lstRows;
    for (const SEntry& oEntry : oParser.m_lstEntries) {
        const std::string strLabel = bArguments ? oEntry.strMeta : Label(oParser, oEntry);
        if (IsArgument(oEntry) == bArguments && !strLabel.empty())
            lstRows.push_back({strLabel, oEntry.strHelp});
    }
    return lstRows;
}

std::string CKorOptionParser::SHelp::Of(const CKorOptionParser& oParser)
{
    const size_t nWidth = KorHelpWidth();
    const std::string& strName = oParser.m_oInfo.GetApplName();
    const std::string& strDescription = oParser.m_oInfo.GetApplDescription();
    std::string strHelp;
    const std::string strUsage =
        std::string("Usage: ").append(strName).append(" ").append(Usage(oParser));
    KorHelpWrap(strHelp, strUsage, 0, 7, nWidth);
    if (!strDescription.empty() && strDescription != strName)
        KorHelpWrap(strHelp, strDescription, 0, 0, nWidth);
    const std::list<SKorHelpRow> lstArguments = Rows(oParser, true);
    if (!lstArguments.empty())
        strHelp.append("\nArguments:\n");
    KorHelpList(strHelp, lstArguments, nWidth);
    strHelp.append("\nOptions:\n");
    KorHelpList(strHelp, Rows(oParser, false), nWidth);
    return strHelp;
}

CKorOptionParser::CKorOptionParser(const CKorApplicationInfo& oInfo)
    : m_oInfo(oInfo),
      m_ppszNext(nullptr),
      m_ppszEnd(nullptr),
      m_bOptionsEnded(false),
      m_eResult(PARSE_OK)
{
    const STarget oNone = {nullptr, nullptr, true};
    Add(KIND_HELP, "h,help", "", "show this help", oNone);
    Add(KIND_VERSION, "version", "", "show the version", oNone);
}

CKorOptionParser::~CKorOptionParser() = default;

void CKorOptionParser::AddFlag(const char* pszNames, bool& rbValue, const char* pszHelp)
{
    Add(KIND_FLAG, pszNames, "", pszHelp,
        {&rbValue,
         [](std::string_view, void* pValue, bool) { return *static_cast<bool*>(pValue) = true; },
         true});
}

void CKorOptionParser::Add(EKind eKind, const char* pszNames, const char* pszMeta,
                           const char* pszHelp, const STarget& oTarget)
{
    // In front of help and version, so that a name of the program's own is found first.
    auto itPlace = m_lstEntries.end();
    if (eKind < KIND_HELP)
        std::advance(itPlace, -2);
    SEntry& roEntry = *m_lstEntries.emplace(itPlace);
    roEntry.eKind = eKind;
    roEntry.vecNames = KorGetParameterList(pszNames, ',');
    roEntry.strMeta = KorText(pszMeta);
    roEntry.strHelp = KorText(pszHelp);
    roEntry.oTarget = oTarget;
}

bool CKorOptionParser::IsArgument(const SEntry& oEntry)
{
    return oEntry.eKind == KIND_ARGUMENT || oEntry.eKind == KIND_REQUIRED;
}

CKorOptionParser::EResult CKorOptionParser::Parse(int argc, const char* const* argv)
{
    m_strText.clear();
    m_eResult = PARSE_OK;
    m_bOptionsEnded = false;
    for (SEntry& roEntry : m_lstEntries)
        roEntry.nGiven = 0;
    if (m_oInfo.GetApplName().empty() && argv != nullptr && argc > 0)
        m_oInfo.SetApplName(FileNameOf(KorText(argv[0])).c_str());
    const bool bHasWords = argv != nullptr && argc > 0;
    m_ppszNext = bHasWords ? argv + 1 : nullptr;
    m_ppszEnd = bHasWords ? argv + argc : nullptr;

    bool bGoOn = true;
    while (bGoOn && m_ppszNext != m_ppszEnd)
        bGoOn = Take(KorText(*m_ppszNext++));
    if (bGoOn)
        CheckRequired();
    return m_eResult;
}

CKorOptionParser::SEntry* CKorOptionParser::Find(std::string_view strName)
{
    for (SEntry& roEntry : m_lstEntries) {
        for (const std::string& strOne : roEntry.vecNames) {
            if (!IsArgument(roEntry) && !strName.empty() && strOne == strName)
                return &roEntry;
        }
    }
    return nullptr;
}

bool CKorOptionParser::IsOption(std::string_view strText)
{
    if (m_bOptionsEnded || strText.size() < 2 || strText.front() != '-')
        return false;
    return !IsNumber(strText) || Find(strText.substr(1, 1)) != nullptr;
}

bool CKorOptionParser::Take(std::string_view strText)
{
    if (!IsOption(strText))
        return TakeArgument(strText);
    if (strText != "--")
        return strText[1] == '-' ? TakeLong(strText) : TakeShort(strText);
    m_bOptionsEnded = true;
    return true;
}

bool CKorOptionParser::TakeLong(std::string_view strText)
{
    const size_t nEquals = std::min(strText.find('='), strText.size());
    const std::string strShown(strText.substr(0, nEquals));
    SEntry* const pEntry = nEquals > 3 ? Find(strText.substr(2, nEquals - 2)) : nullptr;
    if (pEntry == nullptr)
        return Refuse("unknown option", strShown);
    const std::string_view strAttached = strText.substr(std::min(nEquals + 1, strText.size()));
    return Give(*pEntry, strShown, nEquals < strText.size() ? &strAttached : nullptr);
}

bool CKorOptionParser::TakeShort(std::string_view strText)
{
    for (size_t i = 1; i < strText.size(); ++i) {
        const std::string strShown = Shown(strText.substr(i, 1));
        SEntry* const pEntry = Find(strText.substr(i, 1));
        if (pEntry == nullptr)
            return Refuse("unknown option", strShown);
        const std::string_view strRest = strText.substr(i + 1);
        if (pEntry->eKind == KIND_OPTION)
            return Give(*pEntry, strShown, strRest.empty() ? nullptr : &strRest);
        if (!Give(*pEntry, strShown, nullptr))
            return false;
    }
    return true;
}

bool CKorOptionParser::TakeArgument(std::string_view strText)
{
    for (SEntry& roEntry : m_lstEntries) {
        if (IsArgument(roEntry) && (roEntry.nGiven == 0 || roEntry.oTarget.bRepeats))
            return GiveValue(roEntry, roEntry.strMeta, strText);
    }
    return Refuse("unexpected argument", strText);
}

/// @param pstrAttached  the value that is attached to the name, or null
bool CKorOptionParser::Give(SEntry& roEntry, const std::string& strShown,
                            const std::string_view* pstrAttached)
{
    if (roEntry.eKind != KIND_OPTION) {
        if (pstrAttached != nullptr)
            return Refuse("option", strShown, " takes no value");
        return roEntry.eKind == KIND_FLAG ? GiveValue(roEntry, strShown, "") : Answer(roEntry);
    }
    if (roEntry.nGiven > 0 && !roEntry.oTarget.bRepeats)
        return Refuse("option", strShown, " is given twice");
    if (pstrAttached != nullptr)
        return GiveValue(roEntry, strShown, *pstrAttached);
    if (m_ppszNext == m_ppszEnd)
        return Refuse("option", strShown, " needs a value");
    return GiveValue(roEntry, strShown, KorText(*m_ppszNext++));
}

bool CKorOptionParser::GiveValue(SEntry& roEntry, const std::string& strShown,
                                 std::string_view strText)
{
    if (roEntry.oTarget.pfnRead(strText, roEntry.oTarget.pValue, roEntry.nGiven++ == 0))
        return true;
    return Refuse(IsArgument(roEntry) ? "argument" : "option", strShown,
                  KorConcat({" cannot be ", Quoted(strText)}));
}

/// Answers help and version. @return false: there is nothing more to do
bool CKorOptionParser::Answer(const SEntry& oEntry)
{
    m_eResult = PARSE_DONE;
    m_strText =
        oEntry.eKind == KIND_HELP
            ? SHelp::Of(*this)
            : KorConcat({m_oInfo.GetVersionString(), "\n", m_oInfo.GetCopyrightString(), "\n"});
    return false;
}

bool CKorOptionParser::Refuse(const char* pszWhat, std::string_view strName,
                              std::string_view strWhy)
{
    m_eResult = PARSE_WRONG;
    m_strText = m_oInfo.GetApplName();
    m_strText.append(": ").append(pszWhat).append(" ").append(Quoted(strName));
    m_strText.append(strWhy).append(" (try --help)\n");
    return false;
}

bool CKorOptionParser::CheckRequired()
{
    for (const SEntry& oEntry : m_lstEntries) {
        if (oEntry.eKind == KIND_REQUIRED && oEntry.nGiven == 0)
            return Refuse("argument", oEntry.strMeta, " is missing");
    }
    return true;
}
