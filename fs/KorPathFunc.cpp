#include "fs/KorPathFunc.h"

#include "text/KorStringDetail.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace
{

constexpr char SEPARATORS[] = "/\\";

/// Fails for a null path, with the text that callers compare.
void RequirePath(const char* pszPath)
{
    if (pszPath == nullptr)
        throw std::logic_error("basic_string::_S_construct NULL not valid");
}

/// The length of the network prefix of a path that begins with two backslashes, separator
/// included, and 0 for any other path.
size_t DriveLength(std::string_view strPath)
{
    if (strPath.size() < 2 || strPath[0] != '\\' || strPath[1] != '\\')
        return 0;
    const size_t nEnd = strPath.find_first_of(SEPARATORS, 2);
    return nEnd == std::string_view::npos ? strPath.size() : nEnd + 1;
}

/// The length of the directory in a path without drive. A separator that begins the path counts
/// only where it is all of it: "/name.ext" is a title without directory, and callers rely on it.
size_t DirectoryLength(std::string_view strPath)
{
    size_t n = strPath.size();
    if (n == 1)
        return IsSeparator(strPath[0]) ? 1 : 0;
    while (n > 1 && !IsSeparator(strPath[n - 1]))
        --n;
    return n > 1 ? n : 0;
}

/// Whether a text begins inside of an output.
bool IsPartOf(const char* pszText, const std::string* pstrOutput)
{
    return pstrOutput != nullptr && reinterpret_cast<std::uintptr_t>(pszText) -
                                            reinterpret_cast<std::uintptr_t>(pstrOutput->data()) <=
                                        pstrOutput->size();
}

void Put(std::string* pstrOutput, std::string_view strPart)
{
    if (pstrOutput == nullptr)
        return;
    if (strPart.size() > pstrOutput->size()) {
        pstrOutput->assign(strPart);
    } else { // cheaper, and most outputs are used again
        strPart.copy(pstrOutput->data(), strPart.size());
        pstrOutput->erase(strPart.size());
    }
}

void RemoveTrailingSeparator(std::string& strDir)
{
    if (!strDir.empty() && IsSeparator(strDir.back()))
        strDir.erase(strDir.size() - 1);
}

/// Drops the last separator and what follows it; a directory of one name stays as it is.
void RemoveLastComponent(std::string& strDir)
{
    size_t nEnd = strDir.size();
    while (nEnd > 0 && !IsSeparator(strDir[nEnd - 1]))
        --nEnd;
    if (nEnd > 0)
        strDir.erase(nEnd - 1);
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
    for (const std::string* const pstrOutput : {pstrDrive, pstrDir, pstrTitle, pstrExt}) {
        if (IsPartOf(pszPath, pstrOutput))
            return SplitPath(std::string(pszPath).c_str(), pstrDrive, pstrDir, pstrTitle, pstrExt);
    }

    const std::string_view strPath(pszPath);
    const size_t nDrive = DriveLength(strPath);
    const size_t nDir = DirectoryLength(strPath.substr(nDrive));
    const std::string_view strTitle = strPath.substr(nDrive + nDir);
    const size_t nDot = strTitle.rfind('.');
    const size_t nTitle = nDot != 0 ? std::min(nDot, strTitle.size()) : strTitle.size();
    Put(pstrDrive, strPath.substr(0, nDrive));
    Put(pstrDir, strPath.substr(nDrive, nDir));
    Put(pstrTitle, strTitle.substr(0, nTitle));
    Put(pstrExt, strTitle.substr(nTitle));

    // Wanted: a title without "." fails, with the text that callers compare.
    const bool bIsDirectory = strPath.empty() || (nDir != 0 && strTitle.empty());
    if (!bIsDirectory && nDot == std::string_view::npos)
        throw std::out_of_range("basic_string::substr");
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
    const std::string strDrive = strDir.substr(0, DriveLength(strDir));
    strDir.erase(0, strDrive.size());
    RemoveTrailingSeparator(strDir);
    const char* const pszRest = TakeSteps(pszPath, strDir);

    std::string strResult = KorConcat({strDrive, strDir, "/", pszRest});
    std::replace(strResult.begin(), strResult.end(), '\\', '/');
    return strResult;
}
