// Before all headers: on boards with 32-bit time_t, files may be younger than 2038 then.
#define _TIME_BITS 64

#include "time/KorZoneSourceDetail.h"

#include "text/KorSharedDetail.h"
#include "text/KorStringDetail.h"
#include "time/KorZoneFileDetail.h"
#include "time/KorZoneRuleDetail.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

bool IsRegular(const struct stat& oStatus)
{
    return S_ISREG(oStatus.st_mode);
}

/// Opens a regular file. Looks before, because to open another one may have a consequence, and
/// again afterwards, because by then it may be another one.
/// @return its descriptor, or -1
int OpenRegularFile(const std::string& strPath)
{
    struct stat oStatus;
    if (stat(strPath.c_str(), &oStatus) != 0 || !IsRegular(oStatus))
        return -1;
    const int nFile = open(strPath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (nFile < 0 || (fstat(nFile, &oStatus) == 0 && IsRegular(oStatus)))
        return nFile;
    close(nFile);
    return -1;
}

/// Closes a file at the end of the scope.
struct SClosing
{
    ~SClosing() { close(m_nFile); }
    const int m_nFile;
};

/// Reads all of a file, up to a size that no zone has, and closes it.
bool ReadAll(int nFile, std::string& strContent)
{
    const SClosing oClosing{nFile};
    constexpr std::size_t MAX_SIZE = 1 << 20;
    char aBuffer[4096];
    ssize_t nRead = 1;
    while ((nRead > 0 || (nRead < 0 && errno == EINTR)) && strContent.size() <= MAX_SIZE) {
        nRead = read(nFile, aBuffer, sizeof aBuffer);
        if (nRead > 0)
            strContent.append(aBuffer, static_cast<std::size_t>(nRead));
    }
    return nRead == 0;
}

bool HasParent(const std::string& strName)
{
    return std::strstr(KorConcat({"/", strName, "/"}).c_str(), "/../") != nullptr;
}

} // namespace

bool KorZonePath(const std::string& strName, std::string& rstrPath)
{
    const bool bIsPath = strName[0] == '/';
    if (!bIsPath && HasParent(strName))
        return false;
    const char* const pszDirectory = getenv("TZDIR");
    const bool bIsSet = pszDirectory != nullptr && *pszDirectory != '\0';
    rstrPath.clear();
    if (!bIsPath)
        rstrPath.append(bIsSet ? pszDirectory : "/usr/share/zoneinfo").append("/");
    rstrPath.append(strName);
    return true;
}

EKorZoneSearch KorLoadZone(const std::string& strPath, const std::string& strRule,
                           KorZonePointer& rpZone)
{
    KorZonePointer pZone;
    const int nFile = OpenRegularFile(strPath);
    if (nFile >= 0) {
        std::string strContent;
        pZone = ReadAll(nFile, strContent) ? KorReadZoneFile(strContent) : nullptr;
    } else {
        CKorZoneRule oRule;
        if (!oRule.Parse(strRule))
            return ZONE_ABSENT;
        pZone = KorMakeShared<CKorZoneData>(oRule);
    }
    if (pZone == nullptr)
        return ZONE_REFUSED;
    rpZone = std::move(pZone);
    return ZONE_FOUND;
}
