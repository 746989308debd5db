#include "ReadingStore.h"

#include "app/KorLog.h"
#include "examples/gateway/Crc32.h"
#include "fs/KorWholeFile.h"
#include "time/KorUnixTime.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace
{

std::string HexText(std::uint32_t nNumber)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string strText;
    for (int nShift = 28; nShift >= 0; nShift -= 4)
        strText += DIGITS[nNumber >> nShift & 15];
    return strText;
}

/// The name of a file with its directory, however the program was started.
std::string AbsoluteName(const std::string& strFile)
{
    char* const pszDirectory = strFile[0] == '/' ? nullptr : getcwd(nullptr, 0);
    if (pszDirectory == nullptr)
        return strFile;
    std::string strName = std::string(pszDirectory) + "/" + strFile;
    std::free(pszDirectory);
    return strName;
}

/// A number that differs from one start of the system to the next, and from #JOURNAL_CLOSED.
std::uint32_t BootNumber()
{
    std::string strBoot;
    KorReadFile("/proc/sys/kernel/random/boot_id", strBoot);
    return Crc32(strBoot) | 1;
}

constexpr std::uint32_t LEAST_SIZE = 2 * JOURNAL_MAX_CONTENT;

/// Seconds since 1970, at least one.
std::uint64_t Now()
{
    return static_cast<std::uint64_t>(
        std::max<std::int64_t>(KorToUnixTime(CKorUTCTime::CurrentTime()), 1));
}

/// The first number of the run that follows that of @p nSequence.
std::uint64_t NextRun(std::uint64_t nSequence)
{
    return (nSequence / JOURNAL_RUN + 1) * JOURNAL_RUN;
}

} // namespace

bool ReadingStore::Open()
{
    m_oMarks = {};
    m_oSettings.m_nMaxSize = std::max(m_oSettings.m_nMaxSize, LEAST_SIZE);
    if (!m_oSettings.m_strFile.empty()) {
        m_oSettings.m_strFile = AbsoluteName(m_oSettings.m_strFile);
        if ((!OpenDisk() && errno == EBUSY) || (!OpenYoung() && errno == EBUSY))
            return false;
    }
    GoOnCounting();
    return true;
}

bool ReadingStore::OpenDisk()
{
    if (!m_oDisk.Open(m_oSettings.m_strFile, m_oSettings.m_nMaxSize))
        return Fail(m_oSettings.m_strFile);
    m_oMarks.m_nDone = std::max(m_oMarks.m_nDone, m_oDisk.Marks().m_nDone);
    m_oMarks.m_nReserved = std::max(m_oMarks.m_nReserved, m_oDisk.Marks().m_nReserved);
    return true;
}

bool ReadingStore::OpenYoung()
{
    const std::string strName = "/gateway-" + std::to_string(geteuid()) + "-" +
                                HexText(Crc32(m_oSettings.m_strFile)) + ".young";
    const std::string strBeside = m_oSettings.m_strFile + ".young";
    if (!m_oYoung.Open(m_oSettings.m_strMemoryDir + strName, m_oSettings.m_nMaxSize) &&
        (errno == EBUSY || !m_oYoung.Open(strBeside, m_oSettings.m_nMaxSize)))
        return Fail(strBeside);
    m_oMarks.m_nDone = std::max(m_oMarks.m_nDone, m_oYoung.Marks().m_nDone);
    m_oYoung.Forget(m_oDisk.Newest());
    return true;
}

// A failure that lasts is told once.
bool ReadingStore::Fail(const std::string& strFile)
{
    const int nError = errno;
    const std::string strError = strFile + ": " + std::strerror(nError);
    if (strError != m_strLastError)
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "store %s", strError.c_str());
    m_strLastError = strError;
    errno = nError;
    return false;
}

// The younger journal knows the last number, unless it is gone or from before a power cut.
void ReadingStore::GoOnCounting()
{
    m_oMarks.m_nBoot = BootNumber();
    const std::uint64_t nNewest = std::max({m_oMarks.m_nDone, m_oDisk.Newest(), m_oYoung.Newest()});
    if (m_oYoung.HasMarks() && m_oYoung.Marks().m_nBoot == m_oMarks.m_nBoot)
        m_nNext = nNewest + 1;
    else if (m_oDisk.HasMarks() && m_oDisk.Marks().m_nBoot == JOURNAL_CLOSED)
        m_nNext = m_oDisk.Marks().m_nReserved;
    else if (m_oDisk.HasMarks())
        m_nNext = NextRun(std::max(nNewest, m_oMarks.m_nReserved));
    else
        m_nNext = std::max(NextRun(nNewest), Now() * JOURNAL_RUN);
    ForgetEverywhere(m_oMarks.m_nDone);
    m_nMissing = m_oDisk.Missing(m_oMarks.m_nDone) +
                 m_oYoung.Missing(std::max(m_oMarks.m_nDone, m_oDisk.Newest()));
    if (m_oYoung.IsOpen())
        m_oYoung.SetMarks(m_oMarks);
    if (m_oDisk.IsOpen() && IsReserveShort())
        Flush(false);
}

void ReadingStore::Close()
{
    if (IsFlushDue() && !Flush(true))
        return;
    m_oMarks.m_nReserved = m_nNext;
    m_oMarks.m_nBoot = JOURNAL_CLOSED;
    if (m_oDisk.IsOpen() && m_oDisk.SetMarks(m_oMarks) && m_oDisk.Sync())
        m_oYoung.Remove();
}

bool ReadingStore::IsReserveShort() const
{
    return m_nNext + JOURNAL_RUN / 2 > m_oMarks.m_nReserved;
}

void ReadingStore::Append(const std::string& strContent)
{
    const JournalRecord oRecord = {m_nNext++, strContent};
    if (strContent.size() > JOURNAL_MAX_CONTENT) {
        ++m_nDropped;
        return;
    }
    Shelter();
    if (!m_deqInProcess.empty() || !Keep(oRecord))
        KeepInProcess(oRecord);
    if (m_oDisk.Count() == 0)
        m_oMarks.m_nDone = std::max(m_oMarks.m_nDone, m_oYoung.NewestDropped());
}

bool ReadingStore::Keep(const JournalRecord& oRecord)
{
    return m_oYoung.IsOpen() && m_oYoung.Append(oRecord) && m_oYoung.Write();
}

void ReadingStore::Shelter()
{
    while (!m_deqInProcess.empty() && Keep(m_deqInProcess.front()))
        DropFromProcess();
}

void ReadingStore::KeepInProcess(const JournalRecord& oRecord)
{
    m_nInProcess += oRecord.m_strContent.size();
    m_deqInProcess.push_back(oRecord);
    for (; m_nInProcess > MOST_IN_PROCESS; ++m_nDropped)
        DropFromProcess();
}

void ReadingStore::DropFromProcess()
{
    m_nInProcess -= m_deqInProcess.front().m_strContent.size();
    m_deqInProcess.pop_front();
}

bool ReadingStore::FindAfter(std::uint64_t nSequence, JournalRecord& rRecord)
{
    return m_oDisk.FindAfter(nSequence, rRecord) || m_oYoung.FindAfter(nSequence, rRecord) ||
           FindInProcess(nSequence, rRecord);
}

bool ReadingStore::FindInProcess(std::uint64_t nSequence, JournalRecord& rRecord) const
{
    const auto iFound = std::find_if(
        m_deqInProcess.begin(), m_deqInProcess.end(),
        [nSequence](const JournalRecord& oRecord) { return oRecord.m_nSequence > nSequence; });
    if (iFound == m_deqInProcess.end())
        return false;
    rRecord = *iFound;
    return true;
}

void ReadingStore::Acknowledge(std::uint64_t nSequence)
{
    m_oMarks.m_nDone = std::max(m_oMarks.m_nDone, nSequence);
    ForgetEverywhere(nSequence);
    if (m_oYoung.IsOpen())
        m_oYoung.SetMarks(m_oMarks);
}

void ReadingStore::ForgetEverywhere(std::uint64_t nSequence)
{
    m_oDisk.Forget(nSequence);
    m_oYoung.Forget(nSequence);
    while (!m_deqInProcess.empty() && m_deqInProcess.front().m_nSequence <= nSequence)
        DropFromProcess();
}

bool ReadingStore::IsFlushDue() const
{
    const JournalMarks& oWritten = m_oDisk.Marks();
    return m_oYoung.Count() > 0 || !m_deqInProcess.empty() || IsReserveShort() ||
           std::min(m_oMarks.m_nDone, m_oDisk.Newest()) > oWritten.m_nDone;
}

bool ReadingStore::Flush(bool bWait)
{
    if (m_oSettings.m_strFile.empty())
        return true;
    if (!m_oDisk.IsOpen() && !OpenDisk())
        return false;
    if (IsReserveShort())
        m_oMarks.m_nReserved = NextRun(m_nNext);
    if (!MoveToDisk() || !m_oDisk.SetMarks(m_oMarks))
        return Fail(m_oSettings.m_strFile);
    m_strLastError.clear();
    if (bWait)
        return m_oDisk.Sync() || Fail(m_oSettings.m_strFile);
    m_oDisk.SyncAside();
    return true;
}

bool ReadingStore::MoveToDisk()
{
    JournalRecord oRecord;
    bool bTaken = true;
    for (std::uint64_t nLast = m_oDisk.Newest();
         bTaken && (m_oYoung.FindAfter(nLast, oRecord) || FindInProcess(nLast, oRecord));
         nLast = oRecord.m_nSequence)
        bTaken = m_oDisk.Append(oRecord);
    const bool bWritten = m_oDisk.Write() && bTaken;
    const int nError = errno;
    m_oYoung.Forget(m_oDisk.Newest());
    while (!m_deqInProcess.empty() && m_deqInProcess.front().m_nSequence <= m_oDisk.Newest())
        DropFromProcess();
    m_oMarks.m_nDone = std::max(m_oMarks.m_nDone, m_oDisk.NewestDropped());
    errno = nError;
    return bWritten;
}

std::uint64_t ReadingStore::Count() const
{
    return m_oDisk.Count() + m_oYoung.Count() + m_deqInProcess.size();
}

std::uint64_t ReadingStore::Dropped() const
{
    return m_oDisk.Dropped() + m_oYoung.Dropped() + m_nDropped;
}
