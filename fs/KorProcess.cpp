#include "fs/KorProcess.h"

#include "fs/KorProcessDetail.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace
{

constexpr size_t WORK_DIR_SIZE = 350;
constexpr size_t LINK_NAME_SIZE = 30;
constexpr size_t PROGRAM_NAME_SIZE = 2047;

} // namespace

CKorProcess::CKorProcess() : m_nProcessID(0), m_nHandle(-1)
{
    Refresh();
}

CKorProcess::~CKorProcess() = default;

int CKorProcess::Refresh()
{
    m_nProcessID = getpid();
    m_nHandle = -1;
    return m_nProcessID;
}

// The child of vfork lives in the caller's memory until it has executed the program: it calls
// nothing but execvp and _exit, and the errno that it leaves behind is put back.
int CKorProcess::Spawn(const char* pszFile, const char** ppszArgs)
{
    const int nErrno = errno;
    // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.vfork): fork needs twice the memory
    if (vfork() == 0) {
        if (pszFile != nullptr && ppszArgs != nullptr)
            execvp(pszFile, const_cast<char* const*>(ppszArgs));
        _exit(255);
    }
    errno = nErrno;
    return -1; // Wanted, whatever happened.
}

std::string CKorProcess::GetCurrentWorkDir()
{
    char szDir[WORK_DIR_SIZE];
    std::string strDir = getcwd(szDir, sizeof szDir) != nullptr ? szDir : ".";
    if (!IsSeparator(strDir.back()))
        strDir += '/';
    return strDir;
}

std::string CKorProcess::GetCurrentProgDir()
{
    char szLink[LINK_NAME_SIZE];
    std::snprintf(szLink, sizeof szLink, "/proc/%d/exe", getpid());
    char acProgram[PROGRAM_NAME_SIZE];
    const ssize_t nLength = readlink(szLink, acProgram, sizeof acProgram);
    if (nLength < 1)
        return "";
    return DirectoryOfProgram(std::string(acProgram, static_cast<size_t>(nLength)));
}
