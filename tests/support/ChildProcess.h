#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

/// How a child process ended, and what it printed.
struct ChildResult
{
    int nExitStatus = -1; ///< exit status, or -1 when a signal ended it
    int nSignal = 0;      ///< the signal that ended it, or 0
    std::string strOut;   ///< its standard output
    std::string strErr;   ///< its standard error
};

/// A real child process with its outputs caught in files and its input taken from one.
///
/// Start one with a program or with a function that runs in a forked copy of the test; talk to
/// it with signals; Wait() for its end. One that still lives at the end of the scope is killed.
class ChildProcess
{
public:
    /// Starts the program vecArgs[0] (searched along PATH) with the given arguments.
    explicit ChildProcess(const std::vector<std::string>& vecArgs,
                          const std::string& strInput = "");
    /// Runs @p fnMain in a forked copy of this process; its result is the exit status.
    explicit ChildProcess(const std::function<int()>& fnMain);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Id() const { return m_nPID; }
    /// Sends the signal.
    void Signal(int nSignal) const;
    /// Whether it has not ended yet.
    bool IsRunning() { return !Poll(); }
    /// What it printed so far.
    std::string OutputSoFar() const;
    /// Waits until its output holds @p strText; false when it ended or 60 s passed without it.
    bool WaitForOutput(const std::string& strText);
    /// The same for its standard error.
    std::string ErrorsSoFar() const;
    bool WaitForErrors(const std::string& strText);
    /// Waits for its end; fails the running test and kills it after 60 s.
    const ChildResult& Wait();

private:
    void Launch(const std::function<int()>& fnMain, const std::string& strInput);
    bool Poll();
    std::string Content(int nFile) const;
    bool WaitFor(int nFile, const std::string& strText);

    pid_t m_nPID = -1;
    int m_nOutFile = -1;
    int m_nErrFile = -1;
    bool m_bEnded = false;
    ChildResult m_oResult;
};

/// Runs a program to its end.
ChildResult RunProgram(const std::vector<std::string>& vecArgs, const std::string& strInput = "");
