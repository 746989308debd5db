#pragma once

#include "fs/KorProcess.h"

#include "fs/KorProcessDetail.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

/// Changes the working directory for the scope.
class WorkDir
{
public:
    explicit WorkDir(const std::string& strDir) : m_nBefore(open(".", O_RDONLY | O_DIRECTORY))
    {
        EXPECT_EQ(0, chdir(strDir.c_str())) << strDir;
    }
    ~WorkDir()
    {
        EXPECT_EQ(0, fchdir(m_nBefore));
        close(m_nBefore);
    }
    WorkDir(const WorkDir&) = delete;
    WorkDir& operator=(const WorkDir&) = delete;

private:
    int m_nBefore;
};

/// Goes down into new directories until the working directory's name has that many bytes.
inline void DescendTo(size_t nLength)
{
    constexpr size_t LONGEST_NAME = 200;
    for (size_t nNow = std::filesystem::current_path().native().size(); nNow < nLength;) {
        size_t nName = std::min(nLength - nNow - 1, LONGEST_NAME);
        if (nLength - nNow - nName - 1 == 1)
            --nName; // leaves room for a separator and a name
        const std::string strName(nName, 'd');
        ASSERT_EQ(0, mkdir(strName.c_str(), 0700));
        ASSERT_EQ(0, chdir(strName.c_str()));
        nNow += nName + 1;
    }
}
