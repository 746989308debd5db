#include "fs/KorPathFunc.h"
#include "tests/fs/PathTest.h"

#include <gtest/gtest.h>
#include <random>
#include <stdexcept>

namespace
{

struct Parts
{
    std::string strDrive;
    std::string strDir;
    std::string strTitle;
    std::string strExt;
};

bool operator==(const Parts& oLeft, const Parts& oRight)
{
    return oLeft.strDrive == oRight.strDrive && oLeft.strDir == oRight.strDir &&
           oLeft.strTitle == oRight.strTitle && oLeft.strExt == oRight.strExt;
}

std::ostream& operator<<(std::ostream& oStream, const Parts& oParts)
{
    return oStream << '[' << oParts.strDrive << "][" << oParts.strDir << "][" << oParts.strTitle
                   << "][" << oParts.strExt << ']';
}

/// The parts before the call: an operation that forgets to empty one is caught.
const Parts UNTOUCHED = {"old", "old", "old", "old"};

void SplitInto(Parts& oParts, const char* pszPath)
{
    SplitPath(pszPath, &oParts.strDrive, &oParts.strDir, &oParts.strTitle, &oParts.strExt);
}

Parts Split(const char* pszPath)
{
    Parts oParts = UNTOUCHED;
    SplitInto(oParts, pszPath);
    return oParts;
}

/// What the failed call left in the outputs.
Parts SplitFailing(const char* pszPath)
{
    Parts oParts = UNTOUCHED;
    try {
        SplitInto(oParts, pszPath);
        ADD_FAILURE() << pszPath << " does not fail";
    } catch (const std::out_of_range& oFailure) {
        EXPECT_STREQ("basic_string::substr", oFailure.what());
    }
    return oParts;
}

TEST(SplitPath, CutsAPathIntoDirectoryTitleAndExtension)
{
    EXPECT_EQ((Parts{"", "/usr/bin/", "tool", ".bin"}), Split("/usr/bin/tool.bin"));
    EXPECT_EQ((Parts{"", "", "x", ".y"}), Split("x.y"));
    EXPECT_EQ((Parts{"", "dir.d/", "f", ".x"}), Split("dir.d/f.x"));
}

TEST(SplitPath, GivesDriveLettersNoMeaning)
{
    EXPECT_EQ((Parts{"", "C:\\dir\\", "file", ".txt"}), Split("C:\\dir\\file.txt"));
}

TEST(SplitPath, TakesTheServerOfANetworkPathAsDrive)
{
    EXPECT_EQ((Parts{"\\\\server\\", "share\\", "f", ".x"}), Split("\\\\server\\share\\f.x"));
    EXPECT_EQ((Parts{"\\\\server/", "share/", "f", ".x"}), Split("\\\\server/share/f.x"));
    EXPECT_EQ((Parts{"\\\\server\\", "", "f", ".x"}), Split("\\\\server\\f.x"));
    EXPECT_EQ((Parts{"\\\\\\", "a\\", "f", ".x"}), Split("\\\\\\a\\f.x"));
}

TEST(SplitPath, TakesTwoSlashesForADirectory)
{
    EXPECT_EQ((Parts{"", "//server/share/", "f", ".x"}), Split("//server/share/f.x"));
    EXPECT_EQ((Parts{"", "/\\server/", "f", ".x"}), Split("/\\server/f.x"));
}

TEST(SplitPath, LeavesALeadingSeparatorThatIsTheOnlyOneWithTheTitle)
{
    EXPECT_EQ((Parts{"", "", "/name", ".ext"}), Split("/name.ext"));
    EXPECT_EQ((Parts{"", "", "\\name", ".ext"}), Split("\\name.ext"));
    EXPECT_EQ((Parts{"", "", "/", ".ext"}), Split("/.ext"));
    EXPECT_EQ((Parts{"\\\\server\\", "", "/name", ".ext"}), Split("\\\\server\\/name.ext"));
    EXPECT_EQ((Parts{"", "//", "name", ".ext"}), Split("//name.ext"));
}

TEST(SplitPath, TakesATrailingSeparatorForADirectoryAlone)
{
    EXPECT_EQ((Parts{"", "dir/", "", ""}), Split("dir/"));
    EXPECT_EQ((Parts{"", "/", "", ""}), Split("/"));
    EXPECT_EQ((Parts{"", "\\", "", ""}), Split("\\"));
    EXPECT_EQ((Parts{"", "a/b\\", "", ""}), Split("a/b\\"));
    EXPECT_EQ((Parts{"\\\\server\\", "share\\", "", ""}), Split("\\\\server\\share\\"));
}

TEST(SplitPath, CutsTheExtensionAtTheLastDot)
{
    EXPECT_EQ((Parts{"", "", "a.b", ".c"}), Split("a.b.c"));
    EXPECT_EQ((Parts{"", "", "a", "."}), Split("a."));
    EXPECT_EQ((Parts{"", "", ".", "."}), Split(".."));
}

TEST(SplitPath, TakesAHiddenNameForATitle)
{
    EXPECT_EQ((Parts{"", "", ".profile", ""}), Split(".profile"));
    EXPECT_EQ((Parts{"", "/home/", ".profile", ""}), Split("/home/.profile"));
    EXPECT_EQ((Parts{"", "", ".", ""}), Split("."));
}

TEST(SplitPath, GivesFourEmptyPartsForAnEmptyPath)
{
    EXPECT_EQ((Parts{"", "", "", ""}), Split(""));
}

TEST(SplitPath, FailsForATitleWithoutDotAndLeavesItWhole)
{
    EXPECT_EQ((Parts{"", "", "tool", ""}), SplitFailing("tool"));
    EXPECT_EQ((Parts{"", "/usr/bin/", "tool", ""}), SplitFailing("/usr/bin/tool"));
    EXPECT_EQ((Parts{"", "dir.d/", "tool", ""}), SplitFailing("dir.d/tool"));
    EXPECT_EQ((Parts{"", "", "/tool", ""}), SplitFailing("/tool"));
}

TEST(SplitPath, FailsForANetworkPrefixAlone)
{
    EXPECT_EQ((Parts{"\\\\server", "", "", ""}), SplitFailing("\\\\server"));
    EXPECT_EQ((Parts{"\\\\server\\", "", "", ""}), SplitFailing("\\\\server\\"));
    EXPECT_EQ((Parts{"\\\\", "", "", ""}), SplitFailing("\\\\"));
}

TEST(SplitPath, FailsForANullPath)
{
    ExpectNullFailure([] { Split(nullptr); });
    ExpectNullFailure([] { GetFileName(nullptr); });
    ExpectNullFailure([] { GetPathName(nullptr); });
}

TEST(SplitPath, ComputesPartsThatNobodyAsksFor)
{
    std::string strTitle = "old";
    SplitPath("/usr/bin/tool.bin", nullptr, nullptr, &strTitle, nullptr);
    EXPECT_EQ("tool", strTitle);
    SplitPath("/usr/bin/tool.bin", nullptr, nullptr, nullptr, nullptr);
    EXPECT_THROW(SplitPath("tool", nullptr, nullptr, nullptr, nullptr), std::out_of_range);
}

TEST(SplitPath, MaySplitATextInPlace)
{
    std::string strPath = "/usr/bin/tool.bin";
    std::string strExt;
    SplitPath(strPath.c_str(), nullptr, nullptr, &strPath, &strExt);
    EXPECT_EQ("tool", strPath);
    EXPECT_EQ(".bin", strExt);
}

TEST(SplitPath, LosesNoCharacterOfAnyPath)
{
    std::mt19937 oRandom(41);
    for (int i = 0; i < 20000; ++i) {
        const std::string strPath = RandomPath(oRandom);
        Parts oParts = UNTOUCHED;
        try {
            SplitInto(oParts, strPath.c_str());
        } catch (const std::out_of_range&) {
            EXPECT_EQ(std::string::npos, oParts.strTitle.find('.')) << strPath;
        }
        EXPECT_EQ(strPath, oParts.strDrive + oParts.strDir + oParts.strTitle + oParts.strExt);
        EXPECT_TRUE(oParts.strDir.empty() || IsSeparator(oParts.strDir.back())) << strPath;
        EXPECT_TRUE(oParts.strExt.empty() || oParts.strExt.front() == '.') << strPath;
    }
}

TEST(PathNames, GiveTheLastComponentAndWhatIsInFrontOfIt)
{
    EXPECT_EQ("b.c", GetFileName("/a/b.c"));
    EXPECT_EQ("/a/", GetPathName("/a/b.c"));
    EXPECT_EQ("", GetFileName("/a/"));
    EXPECT_EQ("/a/", GetPathName("/a/"));
    EXPECT_EQ("\\\\server\\share\\", GetPathName("\\\\server\\share\\f.x"));
    EXPECT_EQ("f.x", GetFileName("\\\\server\\share\\f.x"));
}

TEST(PathNames, FailForATitleWithoutDot)
{
    EXPECT_THROW(GetFileName("/usr/bin/tool"), std::out_of_range);
    EXPECT_THROW(GetPathName("/usr/bin/tool"), std::out_of_range);
}

TEST(IsSeparator, IsTrueForSlashAndBackslashOnly)
{
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(c == 47 || c == 92, IsSeparator(static_cast<char>(c))) << c;
}

TEST(KorSplitPath, AnOutputMayBeThePathItself)
{
    for (std::string Parts::*pOutput :
         {&Parts::strDrive, &Parts::strDir, &Parts::strTitle, &Parts::strExt}) {
        for (const char* pszPath : {"/usr/bin/x.bin", "\\\\srv\\share\\a-long-title-of-a-file.x"}) {
            Parts oParts = UNTOUCHED;
            oParts.*pOutput = pszPath;
            SplitInto(oParts, (oParts.*pOutput).c_str());
            EXPECT_EQ(Split(pszPath), oParts);
        }
    }
}

} // namespace
