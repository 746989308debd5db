#include "fs/KorPathFunc.h"

#include <stdexcept>

namespace
{

constexpr char SEPARATORS[] = "/\\";

/// Moves the network prefix of a path that begins with two backslashes from strDir to strDrive.
void SplitNetworkPrefix(std::string& strDrive, std::string& strDir)
{
    if (strDir.compare(0, 2, "\\\\") != 0)
        return;
    const size_t nEnd = strDir.find_first_of(SEPARATORS, 2);
    strDrive = strDir.substr(0, nEnd == std::string::npos ? nEnd : nEnd + 1);
    strDir.erase(0, strDrive.size());
}

/// Moves what follows the last separator from strDir to strTitle. A separator at index 0 does not
/// count: "/name.ext" is a title without directory, and callers rely on it.
void SplitTitle(std::string& strDir, std::string& strTitle)
{
    const size_t nSeparator = strDir.find_last_of(SEPARATORS);
    const size_t nTitle = nSeparator == std::string::npos || nSeparator == 0 ? 0 : nSeparator + 1;
    strTitle = strDir.substr(nTitle);
    strDir.erase(nTitle);
}

void SplitExtension(std::string& strTitle, std::string& strExt)
{
    const size_t nDot = strTitle.rfind('.');
    if (nDot == 0)
        return;
    // Wanted: a title without "." fails, with the text that callers compare.
    if (nDot == std::string::npos)
        throw std::out_of_range("basic_string::substr");
    strExt = strTitle.substr(nDot);
    strTitle.erase(nDot);
}

} // namespace

void SplitPath(const char* pszPath, std::string* pstrDrive, std::string* pstrDir,
               std::string* pstrTitle, std::string* pstrExt)
{
    if (pszPath == nullptr)
        throw std::logic_error("basic_string::_S_construct NULL not valid");

    std::string astrDropped[4];
    std::string& strDrive = pstrDrive != nullptr ? *pstrDrive : astrDropped[0];
    std::string& strDir = pstrDir != nullptr ? *pstrDir : astrDropped[1];
    std::string& strTitle = pstrTitle != nullptr ? *pstrTitle : astrDropped[2];
    std::string& strExt = pstrExt != nullptr ? *pstrExt : astrDropped[3];

    strDir = pszPath;
    strDrive.clear();
    strTitle.clear();
    strExt.clear();
    if (strDir.empty())
        return;

    SplitNetworkPrefix(strDrive, strDir);
    if (!strDir.empty() && IsSeparator(strDir.back()))
        return;
    SplitTitle(strDir, strTitle);
    SplitExtension(strTitle, strExt);
}

std::string GetFileName(const char* pszPath)
{
    std::string strTitle;
    std::string strExt;
    SplitPath(pszPath, nullptr, nullptr, &strTitle, &strExt);
    return strTitle + strExt;
}

std::string GetPathName(const char* pszPath)
{
    std::string strDrive;
    std::string strDir;
    SplitPath(pszPath, &strDrive, &strDir, nullptr, nullptr);
    return strDrive + strDir;
}

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}
