#include "fs/KorChild.h"
#include "fs/KorSpawnDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace
{

/// By these a service manager talks to the process that it started itself.
constexpr char MANAGER_VARIABLES[][16] = {"NOTIFY_SOCKET=", "WATCHDOG_USEC=", "WATCHDOG_PID=",
                                          "LISTEN_PID=",    "LISTEN_FDS=",    "LISTEN_FDNAMES="};

constexpr const char* DEFAULT_PATH = "/bin:/usr/bin";

/// Adds a text, which exec() takes as one that it may change, and does not.
void Add(std::vector<char*>& rvecTexts, const char* pszText)
{
    rvecTexts.push_back(const_cast<char*>(pszText));
}

bool HoldsZero(const std::string& strText)
{
    return strText.find('\0') != std::string::npos;
}

bool IsOfManager(const char* pszEntry)
{
    for (const auto& pszName : MANAGER_VARIABLES) {
        if (std::strncmp(pszEntry, pszName, std::strlen(pszName)) == 0)
            return true;
    }
    return false;
}

/// Whether one of the entries from a place on has the name of this one.
bool IsReplaced(const char* pszEntry, const std::vector<std::string>& vecEntries, size_t nFrom)
{
    for (; nFrom < vecEntries.size(); ++nFrom) {
        const size_t nName = vecEntries[nFrom].find('=') + 1;
        if (std::strncmp(vecEntries[nFrom].c_str(), pszEntry, nName) == 0)
            return true;
    }
    return false;
}

/// A folder of the search path as an absolute name, because the child changes its directory
/// before it searches.
std::string AbsoluteFolder(const std::string& strFolder)
{
    if (!strFolder.empty() && strFolder.front() == '/')
        return strFolder;
    char szCurrent[PATH_MAX];
    std::string strAbsolute = getcwd(szCurrent, sizeof szCurrent) != nullptr ? szCurrent : ".";
    if (!strFolder.empty())
        strAbsolute.append("/").append(strFolder);
    return strAbsolute;
}

} // namespace

bool CKorSpawn::Prepare(const std::vector<std::string>& vecArguments,
                        const SKorChildOptions& oOptions)
{
    const bool bValid = !vecArguments.empty() && PrepareArguments(vecArguments) &&
                        PrepareEnvironment(oOptions) && !HoldsZero(oOptions.m_strWorkDir);
    if (!bValid) {
        errno = EINVAL;
        return false;
    }
    PreparePrograms(vecArguments.front());
    m_pszWorkDir = oOptions.m_strWorkDir.c_str();
    m_bErrorToOutput = oOptions.m_eError == SKorChildOptions::STREAM_STDOUT;
    m_bNewGroup = oOptions.m_bNewGroup;
    m_bEndWithParent = oOptions.m_bEndWithParent;
    return true;
}

bool CKorSpawn::PrepareArguments(const std::vector<std::string>& vecArguments)
{
    for (const std::string& strArgument : vecArguments) {
        if (HoldsZero(strArgument))
            return false;
        Add(m_vecArguments, strArgument.c_str());
    }
    Add(m_vecArguments, nullptr);
    return true;
}

bool CKorSpawn::PrepareEnvironment(const SKorChildOptions& oOptions)
{
    const std::vector<std::string>& vecNew = oOptions.m_vecEnvironment;
    for (char** ppszOld = environ; !oOptions.m_bClearEnvironment && *ppszOld != nullptr;
         ++ppszOld) {
        if (!IsOfManager(*ppszOld) && !IsReplaced(*ppszOld, vecNew, 0))
            Add(m_vecEnvironment, *ppszOld);
    }
    for (size_t nEntry = 0; nEntry < vecNew.size(); ++nEntry) {
        const size_t nEquals = vecNew[nEntry].find('=');
        if (nEquals == 0 || nEquals == std::string::npos || HoldsZero(vecNew[nEntry]))
            return false;
        if (!IsReplaced(vecNew[nEntry].c_str(), vecNew, nEntry + 1))
            Add(m_vecEnvironment, vecNew[nEntry].c_str());
    }
    Add(m_vecEnvironment, nullptr);
    return true;
}

void CKorSpawn::PreparePrograms(const std::string& strProgram)
{
    if (strProgram.empty() || strProgram.find('/') != std::string::npos) {
        KorAdd(m_vecPrograms, strProgram);
        return;
    }
    const char* const pszPath = std::getenv("PATH");
    const std::string strPath = pszPath != nullptr ? pszPath : DEFAULT_PATH;
    for (size_t nBegin = 0; nBegin <= strPath.size();) {
        const size_t nEnd = std::min(strPath.find(':', nBegin), strPath.size());
        KorAdd(m_vecPrograms, AbsoluteFolder(strPath.substr(nBegin, nEnd - nBegin)));
        m_vecPrograms.back().append("/").append(strProgram);
        nBegin = nEnd + 1;
    }
}
