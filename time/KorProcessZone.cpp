// Before all headers: on boards with 32-bit time_t, files may be younger than 2038 then.
#define _TIME_BITS 64

#include "time/KorSystemClockDetail.h"
#include "time/KorZoneSourceDetail.h"

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sys/stat.h>

namespace
{

/// What is kept of a variable: "=" and its value, or nothing when it is not set.
std::string Variable(const char* pszName)
{
    const char* const pszValue = getenv(pszName);
    return pszValue != nullptr ? std::string("=").append(pszValue) : std::string();
}

/// The name of the zone that TZ asks for, as C libraries understand it.
std::string NameIn(const std::string& strZone)
{
    if (strZone.empty())
        return "/etc/localtime";
    return strZone.substr(strZone[1] == ':' ? 2 : 1);
}

/// What changes with a file.
struct SFileStamp
{
    dev_t nDevice;
    ino_t nInode;
    off_t nSize;
    timespec oChanged;

    bool operator==(const SFileStamp& oOther) const
    {
        return nDevice == oOther.nDevice && nInode == oOther.nInode && nSize == oOther.nSize &&
               oChanged.tv_sec == oOther.oChanged.tv_sec &&
               oChanged.tv_nsec == oOther.oChanged.tv_nsec;
    }
};

/// The stamp of a file; that of no file when there is none.
SFileStamp StampOf(const std::string& strPath)
{
    struct stat oStatus;
    if (stat(strPath.c_str(), &oStatus) != 0)
        return {};
    return {oStatus.st_dev, oStatus.st_ino, oStatus.st_size, oStatus.st_ctim};
}

/// Whether a file may change once more without another stamp, because the clock of file systems
/// is a coarse one.
bool IsFresh(const SFileStamp& oStamp)
{
    constexpr std::int64_t SECONDS = 2;
    const std::int64_t nAge = KorReadSystemClock().nSeconds - oStamp.oChanged.tv_sec;
    return nAge >= -SECONDS && nAge <= SECONDS;
}

/// The process's zone as it was last, and what it was read from.
class CProcessZone
{
public:
    EKorZoneSearch Get(KorZonePointer& rpZone)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        if (!IsUpToDate())
            Load();
        rpZone = m_pZone;
        return m_eSearch;
    }

private:
    bool IsUpToDate()
    {
        return m_bLoaded && !m_bFresh && Variable("TZ") == m_strZone &&
               Variable("TZDIR") == m_strDirectory && StampOf(m_strPath) == m_oStamp;
    }

    void Load()
    {
        m_bLoaded = false; // until all is read: memory may run out
        m_strZone = Variable("TZ");
        m_strDirectory = Variable("TZDIR");
        m_strPath.clear();
        m_pZone = nullptr;
        const std::string strName = NameIn(m_strZone);
        const bool bGoodName = KorZonePath(strName, m_strPath);
        // Taken before the file is read: when it changes meanwhile, the next call reads it again.
        m_oStamp = StampOf(m_strPath);
        m_bFresh = IsFresh(m_oStamp);
        m_eSearch = bGoodName ? KorLoadZone(m_strPath, strName, m_pZone) : ZONE_REFUSED;
        m_bLoaded = true;
    }

    std::mutex m_oMutex;
    bool m_bLoaded = false;
    std::string m_strZone; ///< as Variable() tells it, as the next
    std::string m_strDirectory;
    std::string m_strPath;
    SFileStamp m_oStamp = {};
    bool m_bFresh = false;
    EKorZoneSearch m_eSearch = ZONE_ABSENT;
    KorZonePointer m_pZone;
};

std::atomic<CProcessZone*> s_pZone{nullptr};

// A forked copy begins anew: another thread may have been at work in the zone it has a copy of.
const int s_nRegistered = pthread_atfork(nullptr, nullptr, [] { s_pZone = nullptr; });

} // namespace

// Never destroyed: other objects' destructors may still ask.
EKorZoneSearch KorProcessZone(KorZonePointer& rpZone)
{
    CProcessZone* pZone = s_pZone;
    if (pZone == nullptr) {
        auto pNew = std::make_unique<CProcessZone>();
        if (s_pZone.compare_exchange_strong(pZone, pNew.get()))
            pZone = pNew.release();
    }
    return pZone->Get(rpZone);
}
