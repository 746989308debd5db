#pragma once

/// @file
/// The log of a daemon.

#include "KorExport.h"

#include <atomic>
#include <memory>
#include <string>

/// @addtogroup log
/// @{

class CKorLogSink;

/// Writes lines for people: to standard error, to a file that is kept small, or to syslog. New
/// programs take it through KorGetLog(), the process's own.
///
///     KorGetLog().UseFile("/var/log/gateway.log", 100000, 3); // stays with standard error if false
///     KorGetLog().SetLevel(CKorLog::LEVEL_DEBUG);
///     KorGetLog().Write(CKorLog::LEVEL_WARNING, "meter %d does not answer", nStation);
///     // 2026-11-21 14:15:43.123 +0100 warning: meter 7 does not answer
///
/// **Lines.** Each begins with local time, its offset and the level. Where standard error is the
/// journal's (`JOURNAL_STREAM` names it) there stands `<4>` instead, which is how the journal takes
/// the level. A line has at most 8,192 bytes, its line feed included; a longer one is cut and ends
/// in "...". One final line feed of a message is dropped; other control characters appear as
/// `\x0a`, so that no message can feign a line. A line is one write.
///
/// **Nothing waits.** A reader of standard error that stalls - a pipe, a socket, a terminal - or a
/// syslog that does costs lines, never time; so do a full disk and a reader that went away. The
/// lines are dropped and counted, and as soon as one can be written again the first says how many
/// were lost. No part of a line is left out: what a terminal or a stream socket took of one is
/// completed before anything else. (Of a pipe that is more than a third full no line of more than
/// 4,096 bytes is begun, for it might not find room as a whole.) The descriptor's mode, which other
/// programs share, stays as it is: pipes and terminals are opened once more for each line through
/// `/proc/self/fd/2`. Where that is not permitted a line is written as far as the system says that
/// there is room; then another program that writes to the same pipe at that moment can make it wait.
///
/// **Threads.** All operations may be called on any thread, none in a signal handler. A forked
/// copy of the process goes on logging. Write() leaves `errno` as it was.
class TARVO_EXT_API CKorLog
{
public:
    /// How much a line matters, by the numbers of syslog.
    enum ELevel
    {
        LEVEL_ERROR = 3,   ///< Something failed for good.
        LEVEL_WARNING = 4, ///< Something failed and is tried again, or is about to fail.
        LEVEL_NOTICE = 5,  ///< Rare and worth knowing: start, end, reload.
        LEVEL_INFO = 6,    ///< The normal course of things.
        LEVEL_DEBUG = 7    ///< For those who look for a fault.
    };

    /// A log on standard error at #LEVEL_INFO.
    CKorLog();

    /// Closes file or socket.
    virtual ~CKorLog();

    CKorLog(const CKorLog&) = delete;
    CKorLog& operator=(const CKorLog&) = delete;

    /// Writes a line when its level is enabled.
    /// @param eLevel     its level
    /// @param pszFormat  format and arguments as of printf()
    void Write(ELevel eLevel, const char* pszFormat, ...) __attribute__((format(printf, 3, 4)));

    /// Enables this level and all that matter more.
    void SetLevel(ELevel eLevel) { m_nLevel = eLevel; }

    /// The level that SetLevel() set.
    ELevel GetLevel() const { return static_cast<ELevel>(m_nLevel.load()); }

    /// Whether Write() would write: ask before a text that is expensive to make.
    bool IsEnabled(ELevel eLevel) const { return eLevel <= m_nLevel; }

    /// Writes to standard error from now on.
    void UseStandardError();

    /// Appends to a file from now on, which is created with mode 0644 less the umask. It never
    /// exceeds a size, except by a single longer line: when the next line would not fit, NAME.1
    /// becomes NAME.2 and so on, NAME becomes NAME.1, and NAME begins anew with the same mode.
    /// Where a name cannot be changed the log goes on in the same file. One process a file: a
    /// second one would not follow the rotation. Not only regular files will do; others, such as
    /// a FIFO, are not rotated.
    /// @param pszName   the file; a relative name counts from the present working directory
    /// @param nMaxSize  in bytes, what is in the file already included; 0: no limit
    /// @param nKeep     how many former files to keep; 0: the file itself is emptied
    /// @return false with `errno` when it cannot be opened; the log then stays what it was
    bool UseFile(const char* pszName, unsigned long nMaxSize, unsigned int nKeep);

    /// Writes to the system's log at `/dev/log` from now on, as a daemon's messages.
    /// @param pszName  the program's name there; null or empty for that of the program file
    /// @return false with `errno` when nobody listens there; the log then stays what it was
    bool UseSyslog(const char* pszName);

    /// Opens the file of UseFile() anew by its name, after somebody moved or removed it; the socket
    /// of UseSyslog() likewise. On standard error there is nothing to do.
    /// @return false with `errno`; the log then stays what it was
    bool Reopen();

    /// How many lines were dropped since the log exists.
    unsigned long GetLostCount() const { return m_nLost; }

protected:
    std::atomic<int> m_nLevel;            ///< what is enabled
    std::atomic<unsigned long> m_nLost;   ///< see GetLostCount()
    unsigned long m_nUntold;              ///< how many of them no line told of yet
    std::unique_ptr<CKorLogSink> m_pSink; ///< where lines go

private:
    TARVO_EXT_LOCAL bool Use(std::unique_ptr<CKorLogSink> pSink);
    TARVO_EXT_LOCAL void WriteText(int nLevel, const char* pText, std::size_t nLength);
    TARVO_EXT_LOCAL bool Emit(int nLevel, const char* pText, std::size_t nLength);
    TARVO_EXT_LOCAL bool TellLost();
};

/// The process's log. It exists from the first call on and is never destroyed: exit handlers and
/// destructors of static objects may write to it.
TARVO_EXT_API CKorLog& KorGetLog();

/// @}
