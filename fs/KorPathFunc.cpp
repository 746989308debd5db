#include "fs/KorPathFunc.h"

#include <algorithm>
#include <stdexcept>

namespace
{

constexpr char SEPARATORS[] = "/\\";

/// Fails for a null path, with the text that callers compare.
void RequirePath(const char* pszPath)
{
    if (pszPath == nullptr)
        throw std::logic_error("basic_string::_S_construct NULL not valid");
}

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

void RemoveTrailingSeparator(std::string& strDir)
{
    if (!strDir.empty() && IsSeparator(strDir.back()))
        strDir.pop_back();
}

/// Drops the last separator and what follows it; a directory of one name stays as it is.
void RemoveLastComponent(std::string& strDir)
{
    const size_t nSeparator = strDir.find_last_of(SEPARATORS);
    if (nSeparator != std::string::npos)
        strDir.erase(nSeparator);
}

/// Takes one leading "./" or "../" off the path, the latter together with a component of strDir.
/// @return the path behind it; the same path when it begins with neither
const char* TakeStep(const char* pszPath, std::string& strDir)
{
    if (pszPath[0] == '.' && IsSeparator(pszPath[1]))
        return pszPath + 2;
    if (pszPath[0] == '.' && pszPath[1] == '.' && IsSeparator(pszPath[2])) {
        RemoveLastComponent(strDir);
        return pszPath + 3;
    }
    return pszPath;
}

const char* SkipOneSeparator(const char* pszPath)
{
    return IsSeparator(*pszPath) ? pszPath + 1 : pszPath;
}

/// Takes all leading steps off the path. One separator in front of each step goes with it.
const char* TakeSteps(const char* pszPath, std::string& strDir)
{
    for (;;) {
        pszPath = SkipOneSeparator(pszPath);
        const char* const pszRest = TakeStep(pszPath, strDir);
        if (pszRest == pszPath)
            return pszPath;
        pszPath = pszRest;
    }
}

} // namespace

void SplitPath(const char* pszPath, std::string* pstrDrive, std::string* pstrDir,
               std::string* pstrTitle, std::string* pstrExt)
{
    RequirePath(pszPath);
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

std::string MakePathAbsolute(const char* pszPath, const char* pszBase)
{
    RequirePath(pszPath);
    std::string strDir = pszBase != nullptr ? pszBase : "";
    if (!strDir.empty() && !IsSeparator(strDir.back()))
        strDir += '/';

    // Ends in a separator, so that it has no title: the drive is all there is to split off.
    std::string strDrive;
    SplitNetworkPrefix(strDrive, strDir);
    RemoveTrailingSeparator(strDir);
    const char* const pszRest = TakeSteps(pszPath, strDir);

    std::string strResult = strDrive + strDir + '/' + pszRest;
    std::replace(strResult.begin(), strResult.end(), '\\', '/');
    return strResult;
}
