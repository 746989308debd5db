#include "tests/support/ChildProcess.h"

#include "tests/support/Patience.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

constexpr std::chrono::milliseconds POLL_INTERVAL(2);

int UnnamedFile()
{
    char szName[] = "/tmp/tarvo-child-XXXXXX";
    const int nFile = mkstemp(szName);
    if (nFile != -1)
        unlink(szName);
    return nFile;
}

[[noreturn]] void Execute(const std::vector<std::string>& vecArgs)
{
    std::vector<char*> vecPointers;
    for (const std::string& strArg : vecArgs)
        vecPointers.push_back(const_cast<char*>(strArg.c_str()));
    vecPointers.push_back(nullptr);
    execvp(vecPointers[0], vecPointers.data());
    std::perror(vecPointers[0]);
    _exit(127);
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& vecArgs, const std::string& strInput)
{
    Launch([&vecArgs]() -> int { Execute(vecArgs); }, strInput);
}

ChildProcess::ChildProcess(const std::function<int()>& fnMain)
{
    Launch(fnMain, "");
}

ChildProcess::~ChildProcess()
{
    if (!m_bEnded) {
        kill(m_nPID, SIGKILL);
        waitpid(m_nPID, nullptr, 0);
    }
    close(m_nOutFile);
    close(m_nErrFile);
}

void ChildProcess::Launch(const std::function<int()>& fnMain, const std::string& strInput)
{
    m_nOutFile = UnnamedFile();
    m_nErrFile = UnnamedFile();
    const int nInFile = UnnamedFile();
    const ssize_t nWritten = write(nInFile, strInput.data(), strInput.size());
    EXPECT_EQ(static_cast<ssize_t>(strInput.size()), nWritten);
    lseek(nInFile, 0, SEEK_SET);

    std::fflush(nullptr);
    m_nPID = fork();
    if (m_nPID == 0) {
        dup2(nInFile, STDIN_FILENO);
        dup2(m_nOutFile, STDOUT_FILENO);
        dup2(m_nErrFile, STDERR_FILENO);
        std::exit(fnMain());
    }
    close(nInFile);
    if (m_nPID == -1) {
        m_bEnded = true;
        ADD_FAILURE() << "cannot fork";
    }
}

void ChildProcess::Signal(int nSignal) const
{
    EXPECT_EQ(0, kill(m_nPID, nSignal));
}

std::string ChildProcess::Content(int nFile) const
{
    std::string strContent;
    char szBuffer[4096];
    ssize_t nRead = 0;
    while ((nRead =
                pread(nFile, szBuffer, sizeof szBuffer, static_cast<off_t>(strContent.size()))) > 0)
        strContent.append(szBuffer, static_cast<size_t>(nRead));
    return strContent;
}

std::string ChildProcess::OutputSoFar() const
{
    return Content(m_nOutFile);
}

std::string ChildProcess::ErrorsSoFar() const
{
    return Content(m_nErrFile);
}

bool ChildProcess::WaitForOutput(const std::string& strText)
{
    return WaitFor(m_nOutFile, strText);
}

bool ChildProcess::WaitForErrors(const std::string& strText)
{
    return WaitFor(m_nErrFile, strText);
}

bool ChildProcess::WaitFor(int nFile, const std::string& strText)
{
    const auto oDeadline = std::chrono::steady_clock::now() + PATIENCE;
    while (Content(nFile).find(strText) == std::string::npos) {
        if (Poll() || std::chrono::steady_clock::now() > oDeadline)
            return Content(nFile).find(strText) != std::string::npos;
        std::this_thread::sleep_for(POLL_INTERVAL);
    }
    return true;
}

bool ChildProcess::Poll()
{
    int nStatus = 0;
    if (!m_bEnded && waitpid(m_nPID, &nStatus, WNOHANG) == m_nPID) {
        m_bEnded = true;
        if (WIFEXITED(nStatus))
            m_oResult.nExitStatus = WEXITSTATUS(nStatus);
        if (WIFSIGNALED(nStatus))
            m_oResult.nSignal = WTERMSIG(nStatus);
        m_oResult.strOut = Content(m_nOutFile);
        m_oResult.strErr = Content(m_nErrFile);
    }
    return m_bEnded;
}

const ChildResult& ChildProcess::Wait()
{
    const auto oDeadline = std::chrono::steady_clock::now() + PATIENCE;
    while (!Poll()) {
        if (std::chrono::steady_clock::now() > oDeadline) {
            ADD_FAILURE() << "the child process does not end";
            kill(m_nPID, SIGKILL);
        }
        std::this_thread::sleep_for(POLL_INTERVAL);
    }
    return m_oResult;
}

ChildResult RunProgram(const std::vector<std::string>& vecArgs, const std::string& strInput)
{
    return ChildProcess(vecArgs, strInput).Wait();
}
