#include "tools/linesim/LineTrace.h"

#include "text/KorHexText.h"

LineTrace::~LineTrace()
{
    if (m_pFile != nullptr && m_pFile != stderr)
        std::fclose(m_pFile);
}

bool LineTrace::Open(const std::string& strFile)
{
    m_pFile = strFile == "-" ? stderr : std::fopen(strFile.c_str(), "we");
    return m_pFile != nullptr;
}

void LineTrace::Begin(const std::string& strLine)
{
    const long long nMicroseconds = m_oSinceStart.GetElapsed().GetTotalMicroSeconds();
    std::fprintf(m_pFile, "%lld.%06lld %s ", nMicroseconds / 1000000, nMicroseconds % 1000000,
                 strLine.c_str());
}

void LineTrace::Bytes(const std::string& strLine, char cDirection, const std::string& strBytes)
{
    if (m_pFile == nullptr)
        return;
    const std::string strHex =
        KorToHexText(strBytes.data(), static_cast<unsigned int>(strBytes.size()));
    Begin(strLine);
    std::fprintf(m_pFile, "%c %s\n", cDirection, strHex.c_str());
    std::fflush(m_pFile);
}

void LineTrace::Event(const std::string& strLine, const char* pszEvent)
{
    if (m_pFile == nullptr)
        return;
    Begin(strLine);
    std::fprintf(m_pFile, "- %s\n", pszEvent);
    std::fflush(m_pFile);
}
