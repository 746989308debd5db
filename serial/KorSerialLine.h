#pragma once

/// @file
/// A serial line for the field.

#include "KorExport.h"
#include "serial/KorSerial.h"
#include "serial/KorSerialPorts.h"

#include <functional>
#include <memory>
#include <string>

/// @addtogroup serialline
/// @{

class CKorLineState;

/// How the driver switches the transmitter of a two-wire line (RS-485).
struct SKorRS485
{
    bool m_bEnabled = false;         ///< The driver switches between sending and receiving.
    bool m_bRtsOnSend = true;        ///< RTS is active while the line sends.
    bool m_bRtsAfterSend = false;    ///< RTS is active while it does not.
    bool m_bReceiveOwn = false;      ///< What is sent is received too.
    unsigned int m_nDelayBefore = 0; ///< From RTS to the first bit, in ms.
    unsigned int m_nDelayAfter = 0;  ///< From the last bit to RTS, in ms.
};

/// How a line is opened.
struct SKorLineOptions
{
    /// Flow control.
    enum EFlow
    {
        FLOW_NONE,    ///< All 256 bytes pass; nothing holds them up.
        FLOW_RTS_CTS, ///< By the lines RTS and CTS.
        FLOW_XON_XOFF ///< By the two bytes #m_cXon and #m_cXoff, which then do not pass.
    };

    unsigned int m_nSpeed = 9600; ///< In bit/s: any rate that the driver can make, but 0.
    CKorSerial::E_PARITY m_eParity = CKorSerial::PARITY_NONE;        ///< Parity.
    CKorSerial::E_NUM_STOPBITS m_eStopbits = CKorSerial::STOPBITS_1; ///< Stop bits.
    CKorSerial::E_BYTESIZE m_eByteSize = CKorSerial::BYTESIZE_8;     ///< Data bits.
    EFlow m_eFlow = FLOW_NONE;                                       ///< Flow control.
    char m_cXon = 0x11;  ///< Lets the other side send on, with #FLOW_XON_XOFF.
    char m_cXoff = 0x13; ///< Lets it pause.
    /// RTS after Open(), where the driver has it. With #FLOW_RTS_CTS and on a two-wire line the
    /// driver moves it itself.
    bool m_bRts = true;
    bool m_bDtr = true; ///< DTR after Open(), where the driver has it.
    bool m_bExclusive =
        true;           ///< Nobody else may open the line; else others that do not ask for it.
    SKorRS485 m_oRS485; ///< Applied when enabled.
};

/// The lines of a modem cable; true is active.
struct SKorModemLines
{
    bool m_bCts = false;  ///< Clear to send, an input.
    bool m_bDsr = false;  ///< Data set ready, an input.
    bool m_bDcd = false;  ///< Carrier, an input.
    bool m_bRing = false; ///< Ring, an input.
    bool m_bRts = false;  ///< Request to send, an output.
    bool m_bDtr = false;  ///< Data terminal ready, an output.
};

/// What the driver counted since it was loaded.
struct SKorLineCounts
{
    unsigned int m_nFrame = 0;         ///< Bytes without their stop bit.
    unsigned int m_nOverrun = 0;       ///< Bytes lost in the hardware.
    unsigned int m_nParity = 0;        ///< Bytes with wrong parity.
    unsigned int m_nBreak = 0;         ///< Breaks.
    unsigned int m_nBufferOverrun = 0; ///< Bytes lost in the kernel.
};

/// A serial line: 8-bit clean, exclusive, with waits that end when something happens.
///
/// New programs take this class. CKorSerial stays as it is for programs written for it: it
/// translates some bytes, looks every 25 ms, welcomes a second opener, keeps a hang-up to itself
/// and makes the line the controlling terminal of a daemon.
///
///     CKorSerialLine oLine;
///     if (oLine.Open("/dev/ttyUSB0") != CKorSerial::SERIAL_OK)
///         return oLine.GetLastError();
///     oLine.WriteText("ID?\r", 500);
///     oLine.ReadUntil("\r", strAnswer, 500);
///
/// **Results.** Operations that return an `int` return one of CKorSerial's `SERIAL_` codes.
/// `SERIAL_WOULDBLOCK` is a time-out. `SERIAL_NOT_SUPPORTED` is what driver or kernel does not
/// have. `SERIAL_IO_ERROR` is any other failure. Why a call failed is in `errno` when it returns
/// and, in the same thread, in GetLastError(). A failed call changes none of its arguments.
///
/// **Time-outs** are in milliseconds, on the monotonic clock, and each is the total of its call:
/// 0 takes (or sends) what can be had at once, 0xFFFFFFFF waits without limit. Signals interrupt
/// nothing.
///
/// **Received bytes.** There is no thread: the call that waits reads, in blocks, into memory that
/// the object keeps. What it does not give stays there for the next call, so that no byte behind
/// a delimiter is lost and none is lost in a time-out. The object reads no more than a call asks
/// for and a block of 4 KiB. Only StartReception() makes a thread.
///
/// **Hang-up.** When the far end of a pseudo-terminal closes, an adapter is unplugged or the
/// driver fails, each call first gives what the object holds, where it can do with it, and then
/// `SERIAL_IO_ERROR` with the driver's error, usually `EIO`. The line stays hung up until the
/// next Open().
///
/// **Threads.** One thread may read while another writes and a third closes or cancels; all other
/// calls may come from any thread at any time. Two threads that read, or two that write, at the
/// same time do no harm but share the bytes as it happens. While one thread is in Open(), Close()
/// in another waits for it.
///
/// **On an event loop.** GetHandle() becomes readable when the kernel has bytes. Take all of them,
/// since the descriptor does not tell of those that the object holds:
///
///     oLoop.WatchHandle(oLine.GetHandle(), CKorEventLoop::EVENT_READABLE, [&](unsigned int) {
///         while (oLine.Read(4096, strData, 0) == CKorSerial::SERIAL_OK)
///             oParser.Take(strData);
///         if (oLine.IsHungUp())
///             oLine.Close(); // the loop drops a handle that was closed
///     });
class TARVO_EXT_API CKorSerialLine
{
public:
    /// Takes received bytes: on the reception's thread, in order. The memory is the caller's.
    using DataHandler = std::function<void(const char* pData, unsigned int nLength)>;
    /// Learns of a hang-up with the error that the line gave.
    using HangupHandler = std::function<void(int nErrno)>;
    /// Sees bytes that were sent (true) or received. The memory is the caller's.
    using TraceHandler = std::function<void(bool bSent, const char* pData, unsigned int nLength)>;

    /// A closed line.
    CKorSerialLine();
    /// Closes the line, as Close() does. May run in the object's own handlers.
    virtual ~CKorSerialLine();
    CKorSerialLine(const CKorSerialLine&) = delete;
    CKorSerialLine& operator=(const CKorSerialLine&) = delete;

    /// @name The line
    /// @{

    /// Opens a line; one that is open is closed first. It is locked before anything else touches
    /// it, made raw in every bit whatever it was before, and what it had received is discarded.
    /// Does not wait for a carrier, does not make the line a controlling terminal, and programs
    /// started later do not inherit it.
    /// @param pszDevice  name of the device; null reads as the empty name
    /// @param oOptions   how to open it
    /// @return `SERIAL_OK`; `SERIAL_NOT_SUPPORTED` when the options enable RS-485 and the driver
    ///         does not have it; else `SERIAL_OPEN_ERROR`: `EBUSY` when the line is taken, for
    ///         root too, `ENOTTY` when the device is no terminal, `EINVAL` when the options make
    ///         no sense or the driver did not take speed (to 3 %), size, parity or stop bits (a
    ///         pseudo-terminal, which has no size and no parity, is not held to these), or the
    ///         system's error. After a failure the object is closed and settings, input and
    ///         exclusive mode of the line are as they were.
    int Open(const char* pszDevice, const SKorLineOptions& oOptions = {});

    /// Changes the settings of the open line at once. Nothing received is lost. RTS and DTR stay
    /// as they are.
    /// @return `SERIAL_OK`, or as for Open() with `SERIAL_IO_ERROR` in place of
    ///         `SERIAL_OPEN_ERROR`; the old settings then stand
    int SetOptions(const SKorLineOptions& oOptions);

    /// Closes the line. What is not sent yet and what was not taken is discarded (Drain() and
    /// Read() first for an orderly end); the line gets back the settings it had, lock and
    /// exclusive mode are dropped, for forked children too. Calls that wait return
    /// `SERIAL_IO_ERROR` with `ECANCELED`; all later ones `EBADF`.
    ///
    /// May be called from any thread and from the data and hang-up handlers. Returns when no
    /// other call uses the descriptor any more and, but in those handlers, when no handler runs.
    void Close();

    /// Makes the calls that wait return `SERIAL_IO_ERROR` with `ECANCELED`. The line stays open,
    /// nothing is lost, and reception goes on. From any thread.
    void Cancel();

    /// Whether the line is open; a line that hung up is.
    bool IsOpen() const { return GetHandle() != -1; }
    /// Whether the line hung up, since the last Open() that succeeded.
    bool IsHungUp() const;
    /// `errno` of this thread's last call that failed or timed out; 0 when there was none. The
    /// object remembers the last eight threads that failed.
    int GetLastError() const;
    /// The descriptor, for poll and event loops; -1 when closed. It does not block and belongs to
    /// the object.
    int GetHandle() const;
    /// @}

    /// @name Receiving
    /// All give `SERIAL_NOT_SUPPORTED` with `EOPNOTSUPP` during StartReception(), and leave
    /// @p strData unless they return `SERIAL_OK`. A string that has room is filled without
    /// allocation.
    /// @{

    /// Takes what comes first: what the object holds and the kernel has at once, else the first
    /// block that comes.
    /// @param nMax          at most so many bytes; 0 gives none, at once
    /// @param[out] strData  the bytes, at least one
    /// @param nTimeout      the longest wait, in ms
    int Read(unsigned int nMax, std::string& strData, unsigned int nTimeout);

    /// Takes exactly @p nCount bytes.
    int ReadBytes(unsigned int nCount, std::string& strData, unsigned int nTimeout);

    /// Takes everything up to and including the first @p strDelimiter. A later call goes on
    /// searching where this one stopped.
    /// @param strDelimiter  an empty one is `SERIAL_IO_ERROR` with `EINVAL`
    /// @param[out] strData  the bytes with the delimiter
    /// @param nTimeout      the longest wait, in ms
    /// @param nMax          at most so many bytes, the delimiter included; when it is not among
    ///                      the first @p nMax bytes the result is `SERIAL_IO_ERROR` with
    ///                      `EMSGSIZE`, and the bytes stay for Read() or DiscardInput()
    int ReadUntil(const std::string& strDelimiter, std::string& strData, unsigned int nTimeout,
                  unsigned int nMax = 65536);

    /// Takes a frame: everything until the line was silent. The silence counts from the moment
    /// the object saw the last byte; the kernel keeps no arrival times, so bytes that it held
    /// count as arrived when they are read. Held bytes that are old enough, with nothing behind
    /// them in the kernel, are given at once. A hang-up is a silence too.
    /// @param nSilence      in microseconds
    /// @param[out] strData  the frame, at least one byte
    /// @param nTimeout      the longest wait in ms, the silence included
    /// @param nMax          a longer frame is `SERIAL_IO_ERROR` with `EMSGSIZE`, the bytes kept
    int ReadFrame(unsigned int nSilence, std::string& strData, unsigned int nTimeout,
                  unsigned int nMax = 65536);

    /// Bytes that the object holds: received and not taken. What the kernel holds is not counted.
    unsigned int GetHeldCount() const;
    /// Discards what was received, in the object and in the kernel.
    int DiscardInput();

    /// Starts a thread that hands on everything received, what the object holds first. Every call
    /// may be made from the handlers, Close(), Open() and the next StartReception() included.
    /// They run one at a time and with all signals blocked that the system sends to a process.
    /// @param fnData    takes the bytes
    /// @param fnHangup  called once, as the last, when the line hangs up, never for Close(); may be
    ///                  empty
    /// @return `SERIAL_OK`; `SERIAL_THREAD_RUNNING` when reception runs, which goes on;
    ///         `SERIAL_IO_ERROR`, with `EINVAL` without @p fnData
    int StartReception(DataHandler fnData, HangupHandler fnHangup);

    /// Ends the reception; what it had not handed on stays for the reads. Returns, but in the
    /// handlers themselves, when no handler runs any more.
    void StopReception();
    /// @}

    /// @name Sending
    /// @{

    /// Sends all bytes. Waits where the line is stopped or full.
    /// @return `SERIAL_OK` when the kernel has all; after `SERIAL_WOULDBLOCK` and other failures
    ///         GetWrittenCount() tells how many it took
    int Write(const char* pData, unsigned int nLength, unsigned int nTimeout);
    /// Sends a text, as Write() does.
    int WriteText(const std::string& strText, unsigned int nTimeout);
    /// How many bytes the kernel took of the last Write().
    unsigned int GetWrittenCount() const;
    /// Waits until everything written is on the wire, as far as the driver tells.
    int Drain(unsigned int nTimeout);
    /// Discards what the kernel has not sent yet.
    int DiscardOutput();
    /// Holds the line in the break state. Call Drain() first: what is being sent meanwhile is
    /// garbled. The state ends with the call, also when that is cancelled.
    /// @param nMilliseconds  how long
    int SendBreak(unsigned int nMilliseconds);
    /// @}

    /// @name Lines, driver and counts
    /// @{

    /// Sets both outputs.
    int SetModemLines(CKorSerial::E_RTS_STATE eRts, CKorSerial::E_DTR_STATE eDtr);
    /// Reads the lines. @param[out] rLines  unchanged on failure
    int GetModemLines(SKorModemLines& rLines);
    /// Makes the driver switch the transmitter of a two-wire line, or ends that. Close() gives
    /// back what the line had.
    int SetRS485(const SKorRS485& oRS485);
    /// Asks the driver to hand on bytes at once rather than in larger blocks. Close() gives back
    /// what the line had.
    int SetLowLatency(bool bLowLatency);
    /// Reads the driver's counts. Bytes with parity or framing errors are delivered as the driver
    /// read them, a break as a NUL. @param[out] rCounts  unchanged on failure
    int GetErrorCounts(SKorLineCounts& rCounts);
    /// @}

    /// Shows every byte that came or went, in order and none twice at once; a sent byte before
    /// its answer. The handler runs in the calls that read and write and must not call the object.
    /// When this returns, the handler before is not running any more.
    /// @param fnTrace  the handler; an empty one ends the trace
    void SetTrace(TraceHandler fnTrace);

protected:
    /// Keeps the reason of a failure and gives the result code for it; 0 is no failure.
    int Result(int nErrno) const;

    std::shared_ptr<CKorLineState> m_pState; ///< Everything; the reception's thread shares it.
};

/// @}
