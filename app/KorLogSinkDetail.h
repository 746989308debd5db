#pragma once

#include "app/KorLogLineDetail.h"

#include <memory>
#include <string>

/// Where the lines of a log go. Its log's lock is held during every call.
class CKorLogSink
{
public:
    CKorLogSink() = default;
    virtual ~CKorLogSink() = default;
    CKorLogSink(const CKorLogSink&) = delete;
    CKorLogSink& operator=(const CKorLogSink&) = delete;

    /// Adds what stands before a message.
    virtual void Begin(CKorLogLine& oLine, int nLevel) const;
    /// Writes a line without waiting. @return false when it was dropped
    virtual bool Write(const CKorLogLine& oLine) = 0;
    /// See CKorLog::Reopen().
    virtual bool Reopen() { return true; }
};

/// A descriptor that takes lines, and possibly only a part of one.
class CKorLogStream : public CKorLogSink
{
public:
    /// @param nHandle  stays the caller's
    explicit CKorLogStream(int nHandle) : m_nHandle(nHandle), m_nRestOwner(0) {}

    bool Write(const CKorLogLine& oLine) override;

protected:
    /// Takes another descriptor.
    void SetHandle(int nHandle);
    int Handle() const { return m_nHandle; }

private:
    bool WriteRest();

    int m_nHandle;
    std::string m_strRest; // what the descriptor did not take of the last line
    int m_nRestOwner;      // the process that owes it: not a forked copy
};

/// Each returns null with errno when there is no such target.
std::unique_ptr<CKorLogSink> KorLogToStandardError();
std::unique_ptr<CKorLogSink> KorLogToFile(const char* pszName, unsigned long nMaxSize,
                                          unsigned int nKeep);
std::unique_ptr<CKorLogSink> KorLogToSyslog(const char* pszName);
