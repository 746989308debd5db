#include "fs/KorChild.h"
#include "fs/KorSpawnDetail.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace
{

/// By these a service manager talks to the process that it started itself.
constexpr const char* MANAGER_VARIABLES[] = {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID",
                                             "LISTEN_PID",    "LISTEN_FDS",    "LISTEN_FDNAMES"};

constexpr const char* DEFAULT_PATH = "/bin:/usr/bin";

bool HoldsZero(const std::string& strText)
{
    return strText.find('\0') != std::string::npos;
}

bool AnyHoldsZero(const std::vector<std::string>& vecTexts)
{
    return std::any_of(vecTexts.begin(), vecTexts.end(), HoldsZero);
}

/// The name of an environment entry with its "=".
std::string NameOf(const std::string& strEntry)
{
    return strEntry.substr(0, strEntry.find('=') + 1);
}

bool IsOfManager(const std::string& strEntry)
{
    return std::any_of(
        std::begin(MANAGER_VARIABLES), std::end(MANAGER_VARIABLES),
        [&](const char* pszName) { return NameOf(strEntry) == std::string(pszName) + '='; });
}

void SetEntry(std::vector<std::string>& vecEnvironment, const std::string& strEntry)
{
    const std::string strName = NameOf(strEntry);
    const auto itOld =
        std::find_if(vecEnvironment.begin(), vecEnvironment.end(), [&](const std::string& strOld) {
            return strOld.compare(0, strName.size(), strName) == 0;
        });
    if (itOld != vecEnvironment.end())
        *itOld = strEntry;
    else
        vecEnvironment.push_back(strEntry);
}

std::vector<char*> PointersTo(std::vector<std::string>& vecTexts)
{
    std::vector<char*> vecPointers;
    vecPointers.reserve(vecTexts.size() + 1);
    for (std::string& strText : vecTexts)
        vecPointers.push_back(strText.data());
    vecPointers.push_back(nullptr);
    return vecPointers;
}

/// A folder of the search path as an absolute name, because the child changes its directory
/// before it searches.
std::string AbsoluteFolder(const std::string& strFolder)
{
    if (!strFolder.empty() && strFolder.front() == '/')
        return strFolder;
    char* const pszCurrent = getcwd(nullptr, 0); // allocates; not in POSIX, but everywhere on Linux
    const std::string strCurrent = pszCurrent != nullptr ? pszCurrent : ".";
    std::free(pszCurrent);
    return strFolder.empty() ? strCurrent : strCurrent + '/' + strFolder;
}

} // namespace

bool CKorSpawn::Prepare(const std::vector<std::string>& vecArguments,
                        const SKorChildOptions& oOptions)
{
    const bool bValid = !vecArguments.empty() && !AnyHoldsZero(vecArguments) &&
                        !HoldsZero(oOptions.m_strWorkDir) && PrepareEnvironment(oOptions);
    if (!bValid) {
        errno = EINVAL;
        return false;
    }
    PreparePrograms(vecArguments.front());
    m_vecArguments = vecArguments;
    m_vecArgumentPointers = PointersTo(m_vecArguments);
    m_strWorkDir = oOptions.m_strWorkDir;
    m_bErrorToOutput = oOptions.m_eError == SKorChildOptions::STREAM_STDOUT;
    m_bNewGroup = oOptions.m_bNewGroup;
    m_bEndWithParent = oOptions.m_bEndWithParent;
    return true;
}

bool CKorSpawn::PrepareEnvironment(const SKorChildOptions& oOptions)
{
    for (char** ppszEntry = environ; !oOptions.m_bClearEnvironment && *ppszEntry != nullptr;
         ++ppszEntry) {
        if (!IsOfManager(*ppszEntry))
            m_vecEnvironment.emplace_back(*ppszEntry);
    }
    for (const std::string& strEntry : oOptions.m_vecEnvironment) {
        if (NameOf(strEntry).size() < 2 || HoldsZero(strEntry))
            return false;
        SetEntry(m_vecEnvironment, strEntry);
    }
    m_vecEnvironmentPointers = PointersTo(m_vecEnvironment);
    return true;
}

void CKorSpawn::PreparePrograms(const std::string& strProgram)
{
    m_vecPrograms.clear();
    if (strProgram.empty() || strProgram.find('/') != std::string::npos) {
        m_vecPrograms.push_back(strProgram);
        return;
    }
    const char* const pszPath = std::getenv("PATH");
    const std::string strPath = pszPath != nullptr ? pszPath : DEFAULT_PATH;
    for (size_t nBegin = 0; nBegin <= strPath.size();) {
        const size_t nEnd = std::min(strPath.find(':', nBegin), strPath.size());
        m_vecPrograms.push_back(AbsoluteFolder(strPath.substr(nBegin, nEnd - nBegin)) + '/' +
                                strProgram);
        nBegin = nEnd + 1;
    }
}
