#pragma once

/// @file
/// A serial port with a receive thread.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#serial-ports

#include "KorExport.h"
#include "base/KorThread.h"
#include "serial/KorXonXoff.h"
#include "text/KorMutexBuffer.h"

#include <string>
#include <termios.h>

/// @addtogroup serialline
/// @{

/// A serial port.
///
/// open() opens and configures the device and starts a thread that reads what the device holds.
/// Each character goes to DataInd(), which keeps it in a buffer; from there the application takes
/// it, at once with GetReceivedData() or when enough has come with WaitForData(). A request and
/// its answer take three lines:
///
///     port.ClearBuffer();
///     port.DataReq("ID?\r", 4, 0);
///     if (port.WaitForData("\r", strAnswer, 500) == CKorSerial::SERIAL_OK) ...
///
/// **Settings.** The setters edit a copy of the line settings, which InitPort() hands to the
/// device. The port sets speed, parity, stop bits and character size, switches to
/// non-canonical input without echo and signals, and ends the translation of line ends on
/// output. Everything else (`VMIN`, `VTIME`, `CLOCAL`, `CREAD`, `CRTSCTS`, `OPOST`, the
/// translations on input) stays as the driver has it. A driver's usual settings are not
/// transparent: a received CR arrives as LF, and XON and XOFF are taken out.
///
/// **Results.** Operations that return an `int` return one of the `SERIAL_` codes. All time-outs
/// are in milliseconds.
///
/// **Failing lines.** While reads fail at once or return nothing (a hang-up), the thread pauses
/// between them, first for 1 ms, then for longer, at most for its time-out (100 ms); the first
/// character brings it back to full speed. It never gives up by itself: close the port and open
/// it again.
///
/// **Threads.** One thread owns the port: it opens, configures, closes and consumes. DataReq()
/// may run while the receive thread reads, and in a thread of its own, but not while open() or
/// close() runs. DataInd() runs on the receive thread.
///
/// **Deriving.** The destructor closes the port, but it runs after the destructors of derived
/// classes. A derived class, above all one that overrides DataInd(), therefore calls close() in
/// its own destructor, and again when it returns #SERIAL_THREAD_RUNNING and DataInd() is known to
/// come to an end.
class TARVO_EXT_API CKorSerial
{
public:
    /// @name Result codes
    /// @{
    static constexpr int SERIAL_OK = 0;             ///< Done.
    static constexpr int SERIAL_WOULDBLOCK = 1;     ///< Nothing to be had now, or a time-out.
    static constexpr int SERIAL_OPEN_ERROR = 2;     ///< The device cannot be opened or configured.
    static constexpr int SERIAL_IO_ERROR = 4;       ///< Any other failure of a system call.
    static constexpr int SERIAL_NOT_SUPPORTED = 5;  ///< The operation is not available.
    static constexpr int SERIAL_THREAD_RUNNING = 8; ///< The receive thread did not end in time.
    /// @}

    /// Line speeds. Each value is the platform's own code for that speed.
    enum E_BAUDRATE : int
    {
        BAUD_50 = B50,           ///< 50 baud
        BAUD_75 = B75,           ///< 75 baud
        BAUD_110 = B110,         ///< 110 baud
        BAUD_134 = B134,         ///< 134.5 baud
        BAUD_150 = B150,         ///< 150 baud
        BAUD_200 = B200,         ///< 200 baud
        BAUD_300 = B300,         ///< 300 baud
        BAUD_600 = B600,         ///< 600 baud
        BAUD_1200 = B1200,       ///< 1,200 baud
        BAUD_1800 = B1800,       ///< 1,800 baud
        BAUD_2400 = B2400,       ///< 2,400 baud
        BAUD_4800 = B4800,       ///< 4,800 baud
        BAUD_9600 = B9600,       ///< 9,600 baud
        BAUD_19200 = B19200,     ///< 19,200 baud
        BAUD_38400 = B38400,     ///< 38,400 baud
        BAUD_57600 = B57600,     ///< 57,600 baud
        BAUD_115200 = B115200,   ///< 115,200 baud
        BAUD_230400 = B230400,   ///< 230,400 baud
        BAUD_460800 = B460800,   ///< 460,800 baud
        BAUD_500000 = B500000,   ///< 500,000 baud
        BAUD_576000 = B576000,   ///< 576,000 baud
        BAUD_921600 = B921600,   ///< 921,600 baud
        BAUD_1000000 = B1000000, ///< 1,000,000 baud
        BAUD_1152000 = B1152000, ///< 1,152,000 baud
        BAUD_1500000 = B1500000, ///< 1,500,000 baud
        BAUD_2000000 = B2000000, ///< 2,000,000 baud
        BAUD_2500000 = B2500000, ///< 2,500,000 baud
        BAUD_3000000 = B3000000, ///< 3,000,000 baud
        BAUD_3500000 = B3500000, ///< 3,500,000 baud
        BAUD_4000000 = B4000000  ///< 4,000,000 baud
    };

    /// Parities. Note the order: 0 is even parity, not its absence.
    enum E_PARITY : int
    {
        PARITY_EVEN = 0, ///< even parity
        PARITY_ODD = 1,  ///< odd parity
        PARITY_NONE = 2  ///< no parity bit
    };

    /// Numbers of stop bits.
    enum E_NUM_STOPBITS : int
    {
        STOPBITS_1 = 0, ///< one stop bit
        STOPBITS_2 = 1  ///< two stop bits
    };

    /// Character sizes.
    enum E_BYTESIZE : int
    {
        BYTESIZE_5 = CS5, ///< 5 data bits
        BYTESIZE_6 = CS6, ///< 6 data bits
        BYTESIZE_7 = CS7, ///< 7 data bits
        BYTESIZE_8 = CS8  ///< 8 data bits
    };

    /// States of the line RTS.
    enum E_RTS_STATE : int
    {
        RTS_OFF = 0, ///< inactive
        RTS_ON = 1   ///< active
    };

    /// States of the line DTR.
    enum E_DTR_STATE : int
    {
        DTR_OFF = 0, ///< inactive
        DTR_ON = 1   ///< active
    };

    /// The thread that reads an open port.
    class TARVO_EXT_API CKorSerialRcvThread : public CKorThread
    {
    public:
        /// A thread with the system's default stack and a time-out of 100 ms, without a port.
        CKorSerialRcvThread();
        /// Asks the thread to end and waits for it, for a second and one time-out. The base class
        /// then has the last word.
        ~CKorSerialRcvThread() override;

        /// Reads what the device holds and hands it to CKorSerial::DataInd, character by
        /// character, until termination is asked for, which it sees after each character and
        /// within one time-out. What it has read and not handed on by then is lost. Returns at
        /// once without a port.
        void Run() override;

        using CKorThread::Initialize;
        /// Binds the thread to the port that it serves. Call it before Start().
        void Initialize(CKorSerial* pSerial);

        /// How long one wait for a character may last, in milliseconds.
        unsigned int GetTimeout() const;
        /// Sets how long one wait for a character may last, in milliseconds. May be called from
        /// any thread; the wait that is under way keeps its length. With 0 the thread never rests.
        void SetTimeout(unsigned int nTimeout);

    protected:
        CKorSerial* m_pSerial;   ///< The port that this thread serves.
        unsigned int m_nTimeout; ///< The longest wait for a character, in ms.
    };

    /// A closed port.
    CKorSerial();
    /// Calls close(). A receive thread that did not end within its second gets one time-out more;
    /// then the device is closed in any case. Characters not taken are lost. Also ends when a
    /// signal's handler destroys a port whose buffer the interrupted code was just using; a thread
    /// that is stuck in an override of DataInd() it awaits without limit.
    virtual ~CKorSerial();
    CKorSerial(const CKorSerial&) = delete;
    CKorSerial& operator=(const CKorSerial&) = delete;

    /// Takes one received character; called on the receive thread. Appends it to the buffer from
    /// which all other operations take; an override that does not call this one keeps the
    /// characters for itself. It must neither close the port nor read the device, of which more
    /// may have been read already. An exception that leaves it ends the process.
    virtual void DataInd(char c);

    /// A hook for derived classes that watch modem lines. Does nothing; the library never calls it.
    virtual void LineStateInd(E_RTS_STATE eRts, E_DTR_STATE eDtr);

    /// Opens the device, applies the settings and starts reception. Output that the device still
    /// holds is sent first, for as long as that takes; input that it holds is lost. An open port is
    /// not closed before: close() it first, or its descriptor stays open and unreachable.
    /// @param pszDevice   name of the device; null reads as the empty name
    /// @param eBaudrate   speed in both directions
    /// @param eParity     parity
    /// @param eStopbits   stop bits
    /// @param eByteSize   character size
    /// @param pXonXoff    software flow control; null leaves the device's as it is. Not kept.
    /// @return #SERIAL_OK or #SERIAL_OPEN_ERROR; after the latter the device may be open without
    ///         reception, which close() ends. #SERIAL_OK does not tell that reception works: with
    ///         a descriptor of 1,024 or more, or when the system has no room for a thread, the
    ///         port sends but is deaf.
    int open(const char* pszDevice, E_BAUDRATE eBaudrate, E_PARITY eParity,
             E_NUM_STOPBITS eStopbits, E_BYTESIZE eByteSize, CKorXonXoff* pXonXoff);

    /// The same for the device "/dev/ttyAM<port>": port 0 is "/dev/ttyAM0".
    int open(unsigned int nPort, E_BAUDRATE eBaudrate, E_PARITY eParity, E_NUM_STOPBITS eStopbits,
             E_BYTESIZE eByteSize, CKorXonXoff* pXonXoff);

    /// Edits the settings and applies them to the open device, once its output has been sent;
    /// input not read yet is lost.
    /// @return #SERIAL_OK, or #SERIAL_OPEN_ERROR when the device refuses
    int InitPort(E_BAUDRATE eBaudrate, E_PARITY eParity, E_NUM_STOPBITS eStopbits,
                 E_BYTESIZE eByteSize, CKorXonXoff* pXonXoff);

    /// Edits the speed of both directions; InitPort() applies it. An unknown speed, such as
    /// 12345, keeps the earlier one.
    /// @param nSpeed  one of #E_BAUDRATE
    /// @return 0, also for an unknown speed
    int SetBaudrate(int nSpeed);

    /// Edits the parity; InitPort() applies it. Any value but odd and none gives even parity.
    void UseParity(E_PARITY eParity);

    /// Edits the stop bits; InitPort() applies it. A value that is none of the two changes nothing.
    void SetNumStopbits(E_NUM_STOPBITS eStopbits);

    /// Edits the character size; InitPort() applies it. The value goes into the control flags as
    /// it is.
    void SetByteSize(E_BYTESIZE eByteSize);

    /// Edits the flow control; InitPort() applies it. A record switches it on in both directions
    /// with the record's two characters, whatever its use flag says; null changes nothing.
    void SetXonXoff(CKorXonXoff* pXonXoff);

    /// Does nothing. InitPort() switches line mode, echo and signals off whatever was asked here;
    /// the translations on input it leaves as the driver has them.
    void UseBinary(bool bBinary);

    /// Stops reception and closes the device. Takes up to one second; received characters stay
    /// in the buffer. Closing a closed port is fine.
    /// @return #SERIAL_OK, or #SERIAL_THREAD_RUNNING when the receive thread did not end within
    ///         that second: the device is then still open and close() may be called again
    int close();

    /// Discards all received characters.
    void ClearBuffer();

    /// Sends data. Blocks while the device's output buffer is full. May run in a thread of its
    /// own, but not while open() or close() runs.
    /// @param pData     the bytes; null only with length 0
    /// @param nLength   how many bytes
    /// @param nTimeout  without effect
    /// @return #SERIAL_OK, also when the device took a part of the data only; #SERIAL_WOULDBLOCK
    ///         when it took none and would have to wait; #SERIAL_IO_ERROR otherwise
    int DataReq(const char* pData, unsigned int nLength, unsigned int nTimeout);

    /// Modem lines are not available.
    /// @return #SERIAL_NOT_SUPPORTED, with both arguments untouched
    int GetLineState(E_RTS_STATE& eRts, E_DTR_STATE& eDtr);

    /// Modem lines are not available.
    /// @return #SERIAL_NOT_SUPPORTED
    int SetLineState(E_RTS_STATE eRts, E_DTR_STATE eDtr);

    /// Waits for one character and reads it. Meant for the receive thread; anyone else who calls
    /// it on an open port competes with that thread.
    /// @param[out] c    the character; keeps its value when none came, also when the read
    ///                  succeeded with nothing (a hang-up)
    /// @param nTimeout  the longest wait, in milliseconds
    /// @return #SERIAL_OK after a read. When none came, #SERIAL_WOULDBLOCK if `errno` is
    ///         `EAGAIN`, else #SERIAL_IO_ERROR: a time-out leaves `errno` alone and so gives
    ///         either
    int ReadOneByte(char& c, unsigned int nTimeout);

    /// A copy of everything received. Removes nothing.
    std::string GetReceivedData();

    /// Removes and returns the first @p nCount characters, or all when fewer are there.
    std::string GetReceivedData(unsigned int nCount);

    /// Removes and returns everything up to and including the first @p strDelimiter; empty, with
    /// nothing removed, when it is absent.
    std::string GetReceivedData(const std::string& strDelimiter);

    /// Waits until at least @p nCount characters are held, looking every 25 ms. Removes nothing.
    /// @param nCount    how many characters
    /// @param nTimeout  the longest wait in milliseconds, counted in whole 25 ms sleeps; 0 does
    ///                  not even look
    /// @return #SERIAL_OK, or #SERIAL_WOULDBLOCK when the time ran out
    int WaitForResponse(unsigned int nCount, unsigned int nTimeout);

    /// Waits until @p strText occurs in what is held, looking every 25 ms. Removes nothing.
    /// @param strText   the text
    /// @param nTimeout  as for the other form
    /// @return #SERIAL_OK, or #SERIAL_WOULDBLOCK when the time ran out
    int WaitForResponse(std::string strText, unsigned int nTimeout);

    /// Waits for @p nCount characters and takes exactly these.
    /// @param nCount        how many characters
    /// @param[out] strData  the characters; unchanged when the time ran out
    /// @param nTimeout      as for WaitForResponse(); a negative one is a very long wait
    /// @return #SERIAL_OK, or #SERIAL_WOULDBLOCK when the time ran out
    int WaitForData(unsigned int nCount, std::string& strData, int nTimeout);

    /// Waits for @p strDelimiter and takes everything up to and including its first occurrence.
    /// @param strDelimiter  the text that ends the data
    /// @param[out] strData  the data with the delimiter; unchanged when the time ran out
    /// @param nTimeout      as for WaitForResponse(); a negative one is a very long wait
    /// @return #SERIAL_OK, or #SERIAL_WOULDBLOCK when the time ran out
    int WaitForData(const std::string& strDelimiter, std::string& strData, int nTimeout);

private:
    TARVO_EXT_LOCAL void CloseDevice();

protected:
    CKorMutexBuffer m_oRcvBuffer;     ///< Received characters not taken yet.
    CKorSerialRcvThread m_oRcvThread; ///< The receive thread.
    int m_hPort;                      ///< Descriptor of the open device, -1 when closed.
    struct termios m_oTermios;        ///< Working copy of the line settings.
};

/// @}
