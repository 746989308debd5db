#include "app/KorLog.h"

#include "app/KorLogSinkDetail.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
#include <pthread.h>

namespace
{

// One lock and one pair of buffers for all logs: a thread's stack may be too small for them.
std::mutex oMutex;
CKorLogLine oLine;
char acText[CKorLogLine::MAX_LENGTH];

// Lets a forked copy of the process log, too: no thread holds the lock in the copy.
[[maybe_unused]] const int nRegistered =
    pthread_atfork([] { oMutex.lock(); }, [] { oMutex.unlock(); }, [] { oMutex.unlock(); });

/// The length of the message in the buffer.
/// @param nFormatted  what the C library says of it
std::size_t MessageLength(int nFormatted, const char* pszFormat)
{
    // Arguments that cannot be shown, for example wide characters that the locale does not have.
    if (nFormatted < 0)
        nFormatted = std::snprintf(acText, sizeof acText, "%s", pszFormat);
    return std::min(static_cast<std::size_t>(nFormatted), sizeof acText - 1);
}

} // namespace

CKorLog::CKorLog()
    : m_nLevel(LEVEL_INFO), m_nLost(0), m_nUntold(0), m_pSink(KorLogToStandardError())
{
}

CKorLog::~CKorLog() = default;

void CKorLog::Write(ELevel eLevel, const char* pszFormat, ...)
{
    if (!IsEnabled(eLevel))
        return;
    const int nError = errno;
    if (pszFormat == nullptr)
        pszFormat = "";
    {
        const std::lock_guard<std::mutex> oLock(oMutex);
        va_list pArguments;
        va_start(pArguments, pszFormat);
        const int nLength = std::vsnprintf(acText, sizeof acText, pszFormat, pArguments);
        va_end(pArguments);
        WriteText(eLevel, acText, MessageLength(nLength, pszFormat));
    }
    errno = nError;
}

void CKorLog::WriteText(int nLevel, const char* pText, std::size_t nLength)
{
    if (TellLost() && Emit(nLevel, pText, nLength))
        return;
    ++m_nLost;
    ++m_nUntold;
}

bool CKorLog::Emit(int nLevel, const char* pText, std::size_t nLength)
{
    oLine.Clear();
    m_pSink->Begin(oLine, nLevel);
    oLine.AddMessage(pText, nLength);
    oLine.End();
    return m_pSink->Write(oLine);
}

bool CKorLog::TellLost()
{
    if (m_nUntold == 0)
        return true;
    char szText[64];
    std::snprintf(szText, sizeof szText, "%lu log %s lost", m_nUntold,
                  m_nUntold == 1 ? "line was" : "lines were");
    if (!Emit(LEVEL_WARNING, szText, std::strlen(szText)))
        return false;
    m_nUntold = 0;
    return true;
}

void CKorLog::UseStandardError()
{
    Use(KorLogToStandardError());
}

bool CKorLog::UseFile(const char* pszName, unsigned long nMaxSize, unsigned int nKeep)
{
    return Use(KorLogToFile(pszName, nMaxSize, nKeep));
}

bool CKorLog::UseSyslog(const char* pszName)
{
    return Use(KorLogToSyslog(pszName));
}

bool CKorLog::Use(std::unique_ptr<CKorLogSink> pSink)
{
    if (!pSink)
        return false;
    const std::lock_guard<std::mutex> oLock(oMutex);
    m_pSink = std::move(pSink);
    return true;
}

bool CKorLog::Reopen()
{
    const std::lock_guard<std::mutex> oLock(oMutex);
    return m_pSink->Reopen();
}

CKorLog& KorGetLog()
{
    alignas(CKorLog) static unsigned char acStorage[sizeof(CKorLog)];
    static CKorLog* const pLog = new (acStorage) CKorLog;
    return *pLog;
}

namespace
{

// Made before there are threads: a copy forked while another thread makes it would wait for ever.
[[maybe_unused]] const CKorLog& oMadeEarly = KorGetLog();

} // namespace
