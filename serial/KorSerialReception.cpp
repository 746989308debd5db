#include "KorAtomicDetail.h"
#include "serial/KorSerialDetail.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>
#include <utility>

namespace
{

/// As much as the line discipline of a terminal holds.
constexpr std::size_t BLOCK_SIZE = 4096;

// Results of ReadBlock() beside the number of characters.
constexpr ssize_t READ_FAILED = -1;
constexpr ssize_t NONE_IN_TIME = -2; // the wait timed out, or a signal ended it

/// Waits until a read would not block.
/// @return as select()
int WaitForInput(int hPort, unsigned int nTimeout)
{
    if (hPort < 0 || hPort >= FD_SETSIZE) { // FD_SET would write outside of the set
        errno = EBADF;
        return -1;
    }
    fd_set oReadable;
    FD_ZERO(&oReadable);
    FD_SET(hPort, &oReadable);
    timeval oLimit;
    oLimit.tv_sec = static_cast<time_t>(nTimeout / 1000);
    oLimit.tv_usec = static_cast<suseconds_t>(nTimeout % 1000 * 1000);
    return select(FD_SETSIZE, &oReadable, nullptr, nullptr, &oLimit);
}

/// How many characters one read may ask for. More than the device holds it must not be: VMIN and
/// VTIME stay as the driver has them and may let such a read wait for the rest.
std::size_t ReadableCount(int hPort)
{
    int nHeld = 0;
    if (ioctl(hPort, FIONREAD, &nHeld) != 0 || nHeld < 1)
        return 1;
    return std::min(static_cast<std::size_t>(nHeld), BLOCK_SIZE);
}

/// @return the number of characters, 0 after a hang-up, #READ_FAILED or #NONE_IN_TIME
ssize_t ReadBlock(int hPort, char* pcBlock, unsigned int nTimeout)
{
    const int nReady = WaitForInput(hPort, nTimeout);
    if (nReady == 0)
        return NONE_IN_TIME;
    const ssize_t nCount = nReady == -1 ? -1 : read(hPort, pcBlock, ReadableCount(hPort));
    return nCount == -1 && errno == EINTR ? NONE_IN_TIME : nCount;
}

/// Hands characters on, at least one, until termination is asked for.
void HandOn(CKorSerial& oPort, const CKorThread& oThread, const char* pcBlock, ssize_t nCount)
{
    const char* const pcEnd = pcBlock + nCount;
    do
        oPort.DataInd(*pcBlock++);
    while (pcBlock < pcEnd && !oThread.IsTerminationRequested());
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
    for (std::uint64_t nElapsed = 0; nElapsed < nTimeout; nElapsed += KOR_POLL_INTERVAL) {
        if (fnTest())
            return CKorSerial::SERIAL_OK;
        CKorThread::Sleep(0, KOR_POLL_INTERVAL);
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
    // The base class may wait too, but then the members that Run() uses would be gone. A port
    // that waited itself has taken its address back.
    if (m_pSerial != nullptr)
        KorEndsWithin(*this, KOR_CLOSE_LIMIT + GetTimeout());
}

void CKorSerial::CKorSerialRcvThread::Initialize(CKorSerial* pSerial)
{
    KorAtomicStore(m_pSerial, pSerial);
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
    CKorSerial* const pSerial = KorAtomicLoad(m_pSerial);
    if (pSerial == nullptr)
        return;

    char acBlock[BLOCK_SIZE];
    acBlock[0] = '\0';
    unsigned int nPause = 0;
    while (!IsTerminationRequested()) {
        const ssize_t nCount = ReadBlock(KorAtomicLoad(pSerial->m_hPort), acBlock, GetTimeout());
        // Wanted: a read of 0 bytes indicates the previous character again.
        if (nCount >= 0)
            HandOn(*pSerial, *this, acBlock, std::max<ssize_t>(nCount, 1));
        if (nCount > 0) {
            acBlock[0] = acBlock[nCount - 1];
            nPause = 0;
        }
        if ((nCount == 0 || nCount == READ_FAILED) && !IsTerminationRequested()) {
            nPause = LongerPause(nPause, GetTimeout());
            Sleep(0, nPause);
        }
    }
}

int CKorSerial::ReadOneByte(char& c, unsigned int nTimeout)
{
    const int hPort = KorAtomicLoad(m_hPort);
    const int nReady = WaitForInput(hPort, nTimeout);
    return nReady > 0 && read(hPort, &c, 1) != -1 ? SERIAL_OK : KorErrnoResult();
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
