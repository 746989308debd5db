#pragma once

#include "fs/KorWholeFile.h"

#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace std::string_literals;

inline mode_t ModeOf(const std::string& strFile)
{
    struct stat oStat
    {
    };
    EXPECT_EQ(0, stat(strFile.c_str(), &oStat)) << strFile;
    return oStat.st_mode & 07777U;
}

/// Sets the umask for the scope.
class Umask
{
public:
    explicit Umask(mode_t nMask) : m_nBefore(umask(nMask)) {}
    ~Umask() { umask(m_nBefore); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    const mode_t m_nBefore;
};

class KorWholeFile : public testing::Test
{
protected:
    /// Replaces the file and tells 0 or the errno of the failure.
    static int Replace(const std::string& strFile, const std::string& strContent)
    {
        errno = 0;
        return KorReplaceFile(strFile.c_str(), strContent) ? 0 : errno;
    }
    /// What the file is refused with; it and its directory must stay as they are.
    int Refusal(const std::string& strFile)
    {
        const auto vecBefore = Names();
        const int nError = Replace(strFile, "new");
        EXPECT_EQ(vecBefore, Names());
        return nError;
    }
    /// Names of all that lies in the directory.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> vecNames;
        for (const auto& oEntry : std::filesystem::directory_iterator(m_oDir.Path()))
            vecNames.push_back(oEntry.path().filename());
        std::sort(vecNames.begin(), vecNames.end());
        return vecNames;
    }

    ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("file");
};
