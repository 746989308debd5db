#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

struct SKorChildOptions;

/// All that a child process needs to become another program, made ready by the parent: between
/// fork and exec nothing may be allocated.
class CKorSpawn
{
public:
    /// Takes what was asked for, which stays the caller's until Run() has returned.
    /// @return false with `EINVAL` for what makes no sense
    bool Prepare(const std::vector<std::string>& vecArguments, const SKorChildOptions& oOptions);

    /// Has the child take a descriptor of the parent, 3 or greater, as its standard stream.
    void SetStream(int nStream, int nHandle) { m_anStreams[nStream] = nHandle; }

    /// Starts the program. @return the process id, or -1 with `errno`
    pid_t Run();

private:
    static constexpr int INHERITED = -1;
    static constexpr int NOT_SHARED = -1;

    bool PrepareArguments(const std::vector<std::string>& vecArguments);
    bool PrepareEnvironment(const SKorChildOptions& oOptions);
    void PreparePrograms(const std::string& strProgram);
    pid_t Fork(int hReport);
    [[noreturn]] void Become(int hReport);
    bool SetUp(int hReport) const;
    void Execute() const;

    std::vector<std::string> m_vecPrograms; ///< Names to try one after the other.
    std::vector<char*> m_vecArguments;      ///< With a null pointer at the end, as the next.
    std::vector<char*> m_vecEnvironment;
    const char* m_pszWorkDir = "";
    int m_anStreams[3] = {INHERITED, INHERITED, INHERITED};
    bool m_bErrorToOutput = false;
    bool m_bNewGroup = false;
    bool m_bEndWithParent = false;
    pid_t m_nParent = 0;
    /// What a child that runs in this memory failed with; 0 when it did not.
    volatile int m_nError = NOT_SHARED;
};

/// Closes every descriptor from 3 on but one. Safe between fork and exec.
void KorCloseAllBut(int hKept);
