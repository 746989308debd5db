#include "fs/KorPathFunc.h"
#include "tests/fs/PathTest.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace
{

TEST(MakePathAbsolute, JoinsAPathToTheBase)
{
    EXPECT_EQ("/opt/app/x.ini", MakePathAbsolute("x.ini", "/opt/app"));
    EXPECT_EQ("/opt/app/x.ini", MakePathAbsolute("x.ini", "/opt/app/"));
    EXPECT_EQ("/opt/app/tool", MakePathAbsolute("tool", "/opt/app"));
    EXPECT_EQ("/x.ini", MakePathAbsolute("x.ini", "/"));
    EXPECT_EQ("app/x.ini", MakePathAbsolute("x.ini", "app"));
}

TEST(MakePathAbsolute, TakesTheRootForAMissingBase)
{
    EXPECT_EQ("/x.ini", MakePathAbsolute("x.ini", nullptr));
    EXPECT_EQ("/x.ini", MakePathAbsolute("x.ini", ""));
    EXPECT_EQ("/x.ini", MakePathAbsolute("../x.ini", nullptr));
}

TEST(MakePathAbsolute, TakesLeadingStepsAgainstTheBase)
{
    EXPECT_EQ("/opt/x.ini", MakePathAbsolute("..\\x.ini", "/opt/app/"));
    EXPECT_EQ("/opt/x.ini", MakePathAbsolute("./../x.ini", "/opt/app"));
    EXPECT_EQ("/opt/app/x.ini", MakePathAbsolute(".\\./x.ini", "/opt/app"));
    EXPECT_EQ("/opt/x.ini", MakePathAbsolute("/.././x.ini", "/opt/app"));
    EXPECT_EQ("/opt/x.ini", MakePathAbsolute("..//x.ini", "/opt/app"));
}

TEST(MakePathAbsolute, DropsALeadingSeparator)
{
    EXPECT_EQ("/opt/app/etc/x.ini", MakePathAbsolute("/etc/x.ini", "/opt/app"));
    EXPECT_EQ("/opt/app/etc/x.ini", MakePathAbsolute("\\etc\\x.ini", "/opt/app"));
    EXPECT_EQ("/opt/app//x.ini", MakePathAbsolute("//x.ini", "/opt/app"));
}

TEST(MakePathAbsolute, GoesUpNoFurtherThanTheFirstComponent)
{
    EXPECT_EQ("/x", MakePathAbsolute("../../x", "/opt"));
    EXPECT_EQ("/x", MakePathAbsolute("../../../../x", "/opt/app"));
    EXPECT_EQ("opt/x", MakePathAbsolute("../../x", "opt/app"));
}

TEST(MakePathAbsolute, TurnsEveryBackslashIntoASlash)
{
    EXPECT_EQ("C:/opt/app/sub/x.ini", MakePathAbsolute("sub\\x.ini", "C:\\opt\\app\\"));
    EXPECT_EQ("//server/share/x.ini", MakePathAbsolute("..\\x.ini", "\\\\server\\share\\app"));
}

TEST(MakePathAbsolute, GoesUpNoFurtherThanTheServer)
{
    EXPECT_EQ("//server/share/x", MakePathAbsolute("../../x", "\\\\server\\share"));
    EXPECT_EQ("//server//x", MakePathAbsolute("../x", "\\\\server"));
    EXPECT_EQ("//server//x", MakePathAbsolute("x", "\\\\server\\"));
}

TEST(MakePathAbsolute, KeepsWhatIsNoLeadingStep)
{
    EXPECT_EQ("/a/b/../c/./d", MakePathAbsolute("b/../c/./d", "/a"));
    EXPECT_EQ("/a/b//c", MakePathAbsolute("b//c", "/a"));
    EXPECT_EQ("/a//b/c", MakePathAbsolute("c", "/a//b"));
    EXPECT_EQ("/a/../b/c", MakePathAbsolute("c", "/a/../b"));
}

TEST(MakePathAbsolute, JoinsDottedNamesAsTheyStand)
{
    EXPECT_EQ("/a/.cfg", MakePathAbsolute(".cfg", "/a"));
    EXPECT_EQ("/a/.", MakePathAbsolute(".", "/a"));
    EXPECT_EQ("/a/..", MakePathAbsolute("..", "/a"));
    EXPECT_EQ("/a/.../x", MakePathAbsolute(".../x", "/a"));
    EXPECT_EQ("/a/..cfg", MakePathAbsolute("..cfg", "/a"));
    EXPECT_EQ("/.cfg", MakePathAbsolute("../.cfg", "/a"));
    EXPECT_EQ("/a/.cfg", MakePathAbsolute("/.cfg", "/a"));
}

TEST(MakePathAbsolute, GivesTheBaseWithASlashForAnEmptyRest)
{
    EXPECT_EQ("/a/", MakePathAbsolute("", "/a"));
    EXPECT_EQ("/a/", MakePathAbsolute("/", "/a"));
    EXPECT_EQ("/a/", MakePathAbsolute("./", "/a"));
    EXPECT_EQ("/", MakePathAbsolute("../", "/a"));
    EXPECT_EQ("/", MakePathAbsolute("", nullptr));
}

TEST(MakePathAbsolute, FailsForANullPath)
{
    ExpectNullFailure([] { MakePathAbsolute(nullptr, "/opt"); });
    ExpectNullFailure([] { MakePathAbsolute(nullptr, nullptr); });
}

/// The joined path worked out pass by pass on whole texts.
std::string JoinNaively(std::string strRest, std::string strDir)
{
    std::replace(strRest.begin(), strRest.end(), '\\', '/');
    if (!strDir.empty() && strDir.back() == '/')
        strDir.pop_back();
    for (size_t nBefore = std::string::npos; strRest.size() != nBefore;) {
        nBefore = strRest.size();
        if (strRest.substr(0, 1) == "/")
            strRest = strRest.substr(1);
        if (strRest.substr(0, 3) == "../") {
            strRest = strRest.substr(3);
            const size_t nSlash = strDir.rfind('/');
            strDir = nSlash == std::string::npos ? strDir : strDir.substr(0, nSlash);
        } else if (strRest.substr(0, 2) == "./") {
            strRest = strRest.substr(2);
        } else {
            break;
        }
    }
    return strDir + "/" + strRest;
}

TEST(MakePathAbsolute, EndsForEveryDottedName)
{
    std::mt19937 oRandom(42);
    for (int i = 0; i < 20000; ++i) {
        const std::string strPath = RandomPath(oRandom);
        EXPECT_EQ(JoinNaively(strPath, "/opt/app/sub"),
                  MakePathAbsolute(strPath.c_str(), "\\opt\\app/sub"))
            << strPath;
    }
}

} // namespace
