#include "serial/KorSerial.h"

#include "KorAtomicDetail.h"
#include "serial/KorSerialDetail.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

/// Opens the mutex of buffers.
class BufferLock : public CKorMutexBuffer
{
public:
    /// Lets a thread that waits for the buffer go on, whoever holds it.
    static void Break(CKorMutexBuffer& roBuffer) KOR_NO_THREAD_SAFETY_ANALYSIS
    {
        CKorMutex& roMutex = roBuffer.*(&BufferLock::m_oMutex);
        roMutex.Lock(0); // so that somebody holds it
        roMutex.Unlock();
    }
};

} // namespace

CKorSerial::CKorSerial() : m_hPort(KOR_NO_PORT), m_oTermios()
{
    m_oRcvThread.Initialize(this);
}

CKorSerial::~CKorSerial()
{
    // A thread with a long time-out outlasts close(). It ends with its wait; one that does not is
    // stuck in DataInd(), reads no more and must not keep the device open.
    if (close() == SERIAL_THREAD_RUNNING) {
        KorEndsWithin(m_oRcvThread, m_oRcvThread.GetTimeout());
        CloseDevice();
        // In a handler that a signal started, what it interrupted may hold the buffer that the
        // thread waits for, and goes on no more.
        BufferLock::Break(m_oRcvBuffer);
    }
    m_oRcvThread.Initialize(nullptr);
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
    if (m_hPort == KOR_NO_PORT)
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
    if (!KorEndsWithin(m_oRcvThread, KOR_CLOSE_LIMIT))
        return SERIAL_THREAD_RUNNING;
    CloseDevice();
    return SERIAL_OK;
}

void CKorSerial::CloseDevice()
{
    const int hPort = m_hPort;
    KorAtomicStore(m_hPort, KOR_NO_PORT);
    if (hPort != KOR_NO_PORT)
        ::close(hPort);
}

void CKorSerial::ClearBuffer()
{
    m_oRcvBuffer.ClearBuffer();
}

int CKorSerial::DataReq(const char* pData, unsigned int nLength, unsigned int)
{
    return write(KorAtomicLoad(m_hPort), pData, nLength) >= 0 ? SERIAL_OK : KorErrnoResult();
}

int CKorSerial::GetLineState(E_RTS_STATE&, E_DTR_STATE&)
{
    return SERIAL_NOT_SUPPORTED;
}

int CKorSerial::SetLineState(E_RTS_STATE, E_DTR_STATE)
{
    return SERIAL_NOT_SUPPORTED;
}
