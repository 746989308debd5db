// Paths cut and joined: the parts give the path again, and joining agrees with a list of names.

#include "fs/KorPathFunc.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <stdexcept>

namespace
{

constexpr char SEPARATORS[] = "/\\";

bool EndsInSeparator(const std::string& strText)
{
    return !strText.empty() && IsSeparator(strText.back());
}

void CheckParts(const std::string& strPath, const std::string& strDrive, const std::string& strDir,
                const std::string& strTitle, const std::string& strExt)
{
    ExpectEqual(strPath, strDrive + strDir + strTitle + strExt, "the parts give the path again");
    Expect(strDir.empty() || EndsInSeparator(strDir), "a directory ends in a separator");
    Expect(strTitle.find_first_of(SEPARATORS, 1) == std::string::npos &&
               strExt.find_first_of(SEPARATORS) == std::string::npos,
           "a name has no separator but as its first character");
    Expect(strExt.empty() || (strExt[0] == '.' && strExt.rfind('.') == 0), "an extension");
    Expect(strDrive.empty() || strDrive.compare(0, 2, "\\\\") == 0, "a drive");
}

void CheckSplitting(const std::string& strPath)
{
    std::string strDrive;
    std::string strDir;
    std::string strTitle;
    std::string strExt;
    bool bThrown = false;
    try {
        SplitPath(strPath.c_str(), &strDrive, &strDir, &strTitle, &strExt);
        ExpectEqual(strTitle + strExt, GetFileName(strPath.c_str()), "the name");
        ExpectEqual(strDrive + strDir, GetPathName(strPath.c_str()), "the way there");
    } catch (const std::out_of_range&) {
        bThrown = true;
    }
    CheckParts(strPath, strDrive, strDir, strTitle, strExt);
    const bool bDirectory =
        strPath.empty() || (EndsInSeparator(strPath) && strPath != strDrive && !strDir.empty());
    const bool bDot = strTitle.find('.') != std::string::npos || !strExt.empty();
    ExpectEqual(!bDirectory && !bDot, bThrown, "a name without a dot fails, nothing else does");
}

/// Takes off one step; -1 when there is none, else how many names of the base it takes away.
int TakeStep(std::string& strPath)
{
    if (!strPath.empty() && IsSeparator(strPath[0]))
        strPath.erase(0, 1);
    for (int nDots = 1; nDots <= 2; ++nDots) {
        const auto nLength = static_cast<std::size_t>(nDots);
        if (strPath.size() > nLength && strPath.compare(0, nLength, "..", nLength) == 0 &&
            IsSeparator(strPath[nLength])) {
            strPath.erase(0, nLength + 1);
            return nDots - 1;
        }
    }
    return -1;
}

std::string ModelJoin(std::string strPath, std::string strBase)
{
    std::string strDrive;
    if (strBase.compare(0, 2, "\\\\") == 0) {
        const std::size_t nEnd = strBase.find_first_of(SEPARATORS, 2);
        strDrive = strBase.substr(0, nEnd == std::string::npos ? nEnd : nEnd + 1);
        strDrive += EndsInSeparator(strDrive) ? "" : "/";
        strBase.erase(0, strDrive.size());
    }
    if (EndsInSeparator(strBase))
        strBase.pop_back();
    for (int nStep = TakeStep(strPath); nStep >= 0; nStep = TakeStep(strPath)) {
        const std::size_t nCut = strBase.find_last_of(SEPARATORS);
        if (nStep == 1 && nCut != std::string::npos)
            strBase.erase(nCut);
    }
    std::string strResult = strDrive + strBase + "/" + strPath;
    std::replace(strResult.begin(), strResult.end(), '\\', '/');
    return strResult;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const std::string strBase = oInput.ConsumeRandomLengthString(200).c_str();
    const std::string strPath = oInput.ConsumeRemainingBytesAsString().c_str();
    CheckSplitting(strPath);
    CheckSplitting(strBase);
    ExpectEqual(ModelJoin(strPath, strBase), MakePathAbsolute(strPath.c_str(), strBase.c_str()),
                "a joined path");
    ExpectEqual(ModelJoin(strPath, ""), MakePathAbsolute(strPath.c_str(), nullptr),
                "from the root");
    return 0;
}
