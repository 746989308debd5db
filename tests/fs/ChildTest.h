#pragma once

#include "fs/KorChild.h"

#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using Options = SKorChildOptions;

inline std::vector<std::string> Shell(const std::string& strScript)
{
    return {"sh", "-c", strScript};
}

/// Reads a blocking handle to its end.
inline std::string ReadAll(int nHandle)
{
    std::string strAll;
    char acBuffer[4096];
    for (ssize_t nRead = 0; (nRead = read(nHandle, acBuffer, sizeof acBuffer)) > 0;)
        strAll.append(acBuffer, static_cast<size_t>(nRead));
    return strAll;
}

/// What a program writes to its standard output; fails the running test when it cannot run.
inline std::string OutputOf(const std::vector<std::string>& vecArguments, Options oOptions = {})
{
    CKorChild oChild;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    EXPECT_TRUE(oChild.Start(vecArguments, oOptions)) << oChild.GetLastError();
    std::string strOutput = ReadAll(oChild.GetOutputHandle());
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    return strOutput;
}

inline int ErrorOf(const std::vector<std::string>& vecArguments, const Options& oOptions = {})
{
    CKorChild oChild;
    errno = 0;
    EXPECT_FALSE(oChild.Start(vecArguments, oOptions));
    EXPECT_EQ(errno, oChild.GetLastError());
    EXPECT_EQ(0, oChild.GetProcessID());
    EXPECT_FALSE(oChild.IsRunning());
    return oChild.GetLastError();
}

/// Sets an environment variable for the scope.
class Variable
{
public:
    Variable(const char* pszName, const std::string& strValue) : m_pszName(pszName)
    {
        const char* const pszFormer = std::getenv(pszName);
        m_bFormer = pszFormer != nullptr;
        m_strFormer = m_bFormer ? pszFormer : "";
        setenv(pszName, strValue.c_str(), 1);
    }
    ~Variable()
    {
        if (m_bFormer)
            setenv(m_pszName, m_strFormer.c_str(), 1);
        else
            unsetenv(m_pszName);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_pszName;
    bool m_bFormer;
    std::string m_strFormer;
};

inline void WriteScript(const std::string& strName, const std::string& strText)
{
    WriteFile(strName, "#!/bin/sh\n" + strText + "\n");
    EXPECT_EQ(0, chmod(strName.c_str(), 0755));
}

inline bool Exists(pid_t nProcessID)
{
    return kill(nProcessID, 0) == 0;
}

/// The descriptors that a program finds, but for the one that lists them.
inline std::string DescriptorsOfAProgram()
{
    return OutputOf(Shell("cd /proc/self/fd; for f in *; do [ -e $f ] && echo $f; done"));
}
