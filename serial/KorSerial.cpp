#include "serial/KorSerial.h"

#include "KorAtomicDetail.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int NO_PORT = -1;
constexpr int STATE_ENDED = 3;
constexpr unsigned int POLL_INTERVAL = 25;
constexpr int CLOSE_POLLS = 40;

int ErrnoResult()
{
    return errno == EAGAIN ? CKorSerial::SERIAL_WOULDBLOCK : CKorSerial::SERIAL_IO_ERROR;
}

/// The pause after @p nPause: doubled, between 1 ms and the limit.
unsigned int LongerPause(unsigned int nPause, unsigned int nLimit)
{
    if (nPause >= nLimit / 2)
        return nLimit;
    return nPause == 0 ? 1 : nPause * 2;
}

/// Tests at once and after every sleep but the last. Only the sleeps count as elapsed.
template <typename TTest>
int PollUntil(TTest fnTest, unsigned int nTimeout)
{
    for (std::uint64_t nElapsed = 0; nElapsed < nTimeout; nElapsed += POLL_INTERVAL) {
        if (fnTest())
            return CKorSerial::SERIAL_OK;
        CKorThread::Sleep(0, POLL_INTERVAL);
    }
    return CKorSerial::SERIAL_WOULDBLOCK;
}

} // namespace

CKorSerial::CKorSerialRcvThread::CKorSerialRcvThread()
    : CKorThread(0), m_pSerial(nullptr), m_nTimeout(100)
{
}

CKorSerial::CKorSerialRcvThread::~CKorSerialRcvThread()
{
    Terminate();
    // The base class waits too, but then the members that Run() uses would be gone.
    while (GetState() != STATE_ENDED)
        Sleep(0, POLL_INTERVAL);
}

void CKorSerial::CKorSerialRcvThread::Initialize(CKorSerial* pSerial)
{
    m_pSerial = pSerial;
}

unsigned int CKorSerial::CKorSerialRcvThread::GetTimeout() const
{
    return KorAtomicLoad(m_nTimeout);
}

void CKorSerial::CKorSerialRcvThread::SetTimeout(unsigned int nTimeout)
{
    KorAtomicStore(m_nTimeout, nTimeout);
}

void CKorSerial::CKorSerialRcvThread::Run()
{
    if (m_pSerial == nullptr)
        return;

    char c = '\0';
    unsigned int nPause = 0;
    while (!IsTerminationRequested()) {
        const EReadEvent eEvent = m_pSerial->Read(c, GetTimeout());
        // Wanted: a read of 0 bytes indicates the previous character again.
        if (eEvent == READ_CHARACTER || eEvent == READ_NOTHING)
            m_pSerial->DataInd(c);

        if (eEvent == READ_CHARACTER)
            nPause = 0;
        if ((eEvent == READ_NOTHING || eEvent == READ_FAILED) && !IsTerminationRequested()) {
            nPause = LongerPause(nPause, m_nTimeout);
            Sleep(0, nPause);
        }
    }
}

CKorSerial::CKorSerial() : m_hPort(NO_PORT), m_oTermios()
{
    m_oRcvThread.Initialize(this);
}

CKorSerial::~CKorSerial()
{
    // A thread with a long time-out outlasts one attempt; the device must not stay open for it.
    while (close() == SERIAL_THREAD_RUNNING) {
    }
}

void CKorSerial::DataInd(char c)
{
    m_oRcvBuffer.AddChar(c);
}

void CKorSerial::LineStateInd(E_RTS_STATE, E_DTR_STATE) {}

int CKorSerial::open(const char* pszDevice, E_BAUDRATE eBaudrate, E_PARITY eParity,
                     E_NUM_STOPBITS eStopbits, E_BYTESIZE eByteSize, CKorXonXoff* pXonXoff)
{
    KorAtomicStore(m_hPort, ::open(pszDevice != nullptr ? pszDevice : "", O_RDWR));
    if (m_hPort == NO_PORT)
        return SERIAL_OPEN_ERROR;
    if (tcdrain(m_hPort) != 0)
        return SERIAL_OPEN_ERROR;
    if (tcgetattr(m_hPort, &m_oTermios) != 0)
        return SERIAL_OPEN_ERROR;

    const int nResult = InitPort(eBaudrate, eParity, eStopbits, eByteSize, pXonXoff);
    if (nResult != SERIAL_OK)
        return nResult;
    m_oRcvThread.Start();
    return SERIAL_OK;
}

int CKorSerial::open(unsigned int nPort, E_BAUDRATE eBaudrate, E_PARITY eParity,
                     E_NUM_STOPBITS eStopbits, E_BYTESIZE eByteSize, CKorXonXoff* pXonXoff)
{
    char szDevice[32];
    std::snprintf(szDevice, sizeof szDevice, "/dev/ttyAM%u", nPort);
    return open(szDevice, eBaudrate, eParity, eStopbits, eByteSize, pXonXoff);
}

int CKorSerial::InitPort(E_BAUDRATE eBaudrate, E_PARITY eParity, E_NUM_STOPBITS eStopbits,
                         E_BYTESIZE eByteSize, CKorXonXoff* pXonXoff)
{
    SetBaudrate(eBaudrate);
    UseBinary(true);
    UseParity(eParity);
    SetNumStopbits(eStopbits);
    SetByteSize(eByteSize);
    SetXonXoff(pXonXoff);
    m_oTermios.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
    m_oTermios.c_lflag &= ~static_cast<tcflag_t>(ISIG | ICANON | ECHO | ECHOE);
    return tcsetattr(m_hPort, TCSAFLUSH, &m_oTermios) == 0 ? SERIAL_OK : SERIAL_OPEN_ERROR;
}

int CKorSerial::SetBaudrate(int nSpeed)
{
    cfsetospeed(&m_oTermios, static_cast<speed_t>(nSpeed));
    return cfsetispeed(&m_oTermios, 0); // the input follows the output
}

void CKorSerial::UseParity(E_PARITY eParity)
{
    if (eParity == PARITY_NONE) {
        m_oTermios.c_iflag &= ~static_cast<tcflag_t>(INPCK);
        m_oTermios.c_cflag &= ~static_cast<tcflag_t>(PARENB);
        return;
    }
    m_oTermios.c_iflag |= INPCK;
    m_oTermios.c_cflag |= PARENB;
    m_oTermios.c_cflag &= ~static_cast<tcflag_t>(PARODD);
    if (eParity == PARITY_ODD)
        m_oTermios.c_cflag |= PARODD;
}

void CKorSerial::SetNumStopbits(E_NUM_STOPBITS eStopbits)
{
    if (eStopbits == STOPBITS_1)
        m_oTermios.c_cflag &= ~static_cast<tcflag_t>(CSTOPB);
    if (eStopbits == STOPBITS_2)
        m_oTermios.c_cflag |= CSTOPB;
}

void CKorSerial::SetByteSize(E_BYTESIZE eByteSize)
{
    m_oTermios.c_cflag &= ~static_cast<tcflag_t>(CSIZE);
    m_oTermios.c_cflag |= static_cast<tcflag_t>(eByteSize); // wanted: not masked
}

void CKorSerial::SetXonXoff(CKorXonXoff* pXonXoff)
{
    if (pXonXoff == nullptr)
        return;
    m_oTermios.c_cc[VSTART] = static_cast<cc_t>(pXonXoff->GetXonChar());
    m_oTermios.c_cc[VSTOP] = static_cast<cc_t>(pXonXoff->GetXoffChar());
    m_oTermios.c_iflag |= IXON | IXOFF; // wanted: whatever the use flag says
}

void CKorSerial::UseBinary(bool) {}

int CKorSerial::close()
{
    m_oRcvThread.Terminate();
    for (int nPoll = 0; nPoll < CLOSE_POLLS && m_oRcvThread.GetState() != STATE_ENDED; ++nPoll)
        CKorThread::Sleep(0, POLL_INTERVAL);
    if (m_oRcvThread.GetState() != STATE_ENDED)
        return SERIAL_THREAD_RUNNING;

    if (m_hPort != NO_PORT)
        ::close(m_hPort);
    KorAtomicStore(m_hPort, NO_PORT);
    return SERIAL_OK;
}

void CKorSerial::ClearBuffer()
{
    m_oRcvBuffer.ClearBuffer();
}

int CKorSerial::DataReq(const char* pData, unsigned int nLength, unsigned int)
{
    return write(m_hPort, pData, nLength) >= 0 ? SERIAL_OK : ErrnoResult();
}

int CKorSerial::GetLineState(E_RTS_STATE&, E_DTR_STATE&)
{
    return SERIAL_NOT_SUPPORTED;
}

int CKorSerial::SetLineState(E_RTS_STATE, E_DTR_STATE)
{
    return SERIAL_NOT_SUPPORTED;
}

CKorSerial::EReadEvent CKorSerial::Read(char& c, unsigned int nTimeout)
{
    const int hPort = KorAtomicLoad(m_hPort);
    if (hPort < 0 || hPort >= FD_SETSIZE) { // FD_SET would write outside of the set
        errno = EBADF;
        return READ_FAILED;
    }

    fd_set oReadable;
    FD_ZERO(&oReadable);
    FD_SET(hPort, &oReadable);
    timeval oLimit;
    oLimit.tv_sec = static_cast<time_t>(nTimeout / 1000);
    oLimit.tv_usec = static_cast<suseconds_t>(nTimeout % 1000 * 1000);
    const int nReady = select(FD_SETSIZE, &oReadable, nullptr, nullptr, &oLimit);
    if (nReady == 0)
        return READ_NONE_IN_TIME;

    const ssize_t nCount = nReady == -1 ? -1 : read(hPort, &c, 1);
    if (nCount == -1)
        return errno == EINTR ? READ_NONE_IN_TIME : READ_FAILED;
    return nCount == 0 ? READ_NOTHING : READ_CHARACTER;
}

int CKorSerial::ReadOneByte(char& c, unsigned int nTimeout)
{
    const EReadEvent eEvent = Read(c, nTimeout);
    return eEvent == READ_CHARACTER || eEvent == READ_NOTHING ? SERIAL_OK : ErrnoResult();
}

std::string CKorSerial::GetReceivedData()
{
    return m_oRcvBuffer.GetBuffer();
}

std::string CKorSerial::GetReceivedData(unsigned int nCount)
{
    return m_oRcvBuffer.RemoveString(nCount);
}

std::string CKorSerial::GetReceivedData(const std::string& strDelimiter)
{
    return m_oRcvBuffer.RemoveString(strDelimiter);
}

int CKorSerial::WaitForResponse(unsigned int nCount, unsigned int nTimeout)
{
    return PollUntil([this, nCount]() { return m_oRcvBuffer.GetLength() >= nCount; }, nTimeout);
}

int CKorSerial::WaitForResponse(std::string strText, unsigned int nTimeout)
{
    return PollUntil(
        [this, strText = std::move(strText)]() { return m_oRcvBuffer.ContainsString(strText); },
        nTimeout);
}

int CKorSerial::WaitForData(unsigned int nCount, std::string& strData, int nTimeout)
{
    const int nResult = WaitForResponse(nCount, static_cast<unsigned int>(nTimeout));
    if (nResult == SERIAL_OK)
        strData = GetReceivedData(nCount);
    return nResult;
}

int CKorSerial::WaitForData(const std::string& strDelimiter, std::string& strData, int nTimeout)
{
    const int nResult = WaitForResponse(strDelimiter, static_cast<unsigned int>(nTimeout));
    if (nResult == SERIAL_OK)
        strData = GetReceivedData(strDelimiter);
    return nResult;
}
