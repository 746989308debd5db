#include "serial/KorSerial.h"
#include "tests/serial/SerialTestPort.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <unistd.h>

namespace
{

using S = CKorSerial;

TEST(KorSerial, NumbersItsResultsAndSettingsAsDocumented)
{
    EXPECT_EQ(0, S::SERIAL_OK);
    EXPECT_EQ(1, S::SERIAL_WOULDBLOCK);
    EXPECT_EQ(2, S::SERIAL_OPEN_ERROR);
    EXPECT_EQ(4, S::SERIAL_IO_ERROR);
    EXPECT_EQ(5, S::SERIAL_NOT_SUPPORTED);
    EXPECT_EQ(8, S::SERIAL_THREAD_RUNNING);

    EXPECT_EQ(0, S::PARITY_EVEN);
    EXPECT_EQ(1, S::PARITY_ODD);
    EXPECT_EQ(2, S::PARITY_NONE);
    EXPECT_EQ(0, S::STOPBITS_1);
    EXPECT_EQ(1, S::STOPBITS_2);
    EXPECT_EQ(0x00, S::BYTESIZE_5);
    EXPECT_EQ(0x10, S::BYTESIZE_6);
    EXPECT_EQ(0x20, S::BYTESIZE_7);
    EXPECT_EQ(0x30, S::BYTESIZE_8);
    EXPECT_EQ(0, S::RTS_OFF);
    EXPECT_EQ(1, S::RTS_ON);
    EXPECT_EQ(0, S::DTR_OFF);
    EXPECT_EQ(1, S::DTR_ON);
}

/// Where a member begins in its object.
template <typename TObject, typename TMember>
std::ptrdiff_t Offset(const TObject& oObject, const TMember& oMember)
{
    return reinterpret_cast<const char*>(&oMember) - reinterpret_cast<const char*>(&oObject);
}

TEST(KorSerial, KeepsTheOrderOfItsMembersWithNothingBetween)
{
    const TestPort oPort;
    const std::ptrdiff_t nBuffer = Offset(oPort, oPort.m_oRcvBuffer);
    const std::ptrdiff_t nThread = Offset(oPort, oPort.m_oRcvThread);
    const std::ptrdiff_t nDescriptor = Offset(oPort, oPort.m_hPort);
    const std::ptrdiff_t nTermios = Offset(oPort, oPort.m_oTermios);
    constexpr std::ptrdiff_t PADDING = alignof(CKorMutexBuffer) - 1;
    EXPECT_LE(nBuffer, std::ptrdiff_t{sizeof(void*)} + PADDING);
    EXPECT_GE(nThread, nBuffer + std::ptrdiff_t{sizeof(CKorMutexBuffer)});
    EXPECT_LE(nThread, nBuffer + std::ptrdiff_t{sizeof(CKorMutexBuffer)} + PADDING);
    EXPECT_EQ(nThread + std::ptrdiff_t{sizeof(S::CKorSerialRcvThread)}, nDescriptor);
    EXPECT_EQ(nDescriptor + std::ptrdiff_t{sizeof(int)}, nTermios);
    EXPECT_TRUE(std::has_virtual_destructor<CKorSerial>::value);
}

TEST(KorSerial, ADerivedClassUsesItsDescriptorAsAnyInt)
{
    struct Derived : CKorSerial
    {
        std::string Print()
        {
            const int* const pPort = &m_hPort;
            char szText[32];
            std::snprintf(szText, sizeof szText, "%d %d %d", m_hPort, *pPort, std::max(m_hPort, 3));
            return szText;
        }
    };
    EXPECT_EQ("-1 -1 3", Derived().Print());
}

TEST(KorSerial, OpenOfAMissingDeviceFails)
{
    TestPort oPort;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open("/dev/no-such-device")));
    EXPECT_EQ(-1, oPort.m_hPort);
    EXPECT_EQ(3, oPort.m_oRcvThread.GetState());
    EXPECT_EQ(OK, SerialResult(oPort.close()));
}

TEST(KorSerial, ANullNameReadsAsTheEmptyName)
{
    TestPort oPort;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open(static_cast<const char*>(nullptr))));
    EXPECT_EQ(-1, oPort.m_hPort);
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open("")));
}

TEST(KorSerial, OpenOfAFileThatIsNoTerminalFailsAndCloseReleasesIt)
{
    TestPort oPort;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open("/dev/null")));
    const int hPort = oPort.m_hPort;
    ASSERT_NE(-1, hPort);
    EXPECT_NE(-1, fcntl(hPort, F_GETFD));
    EXPECT_EQ(3, oPort.m_oRcvThread.GetState());

    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(-1, oPort.m_hPort);
    EXPECT_EQ(-1, fcntl(hPort, F_GETFD));
}

TEST(KorSerial, OpenByNumberNamesTheBoardsDevice)
{
    const std::string strNumber = "4294967295"; // no board has it, and no digit may get lost
    ASSERT_EQ(-1, access(("/dev/ttyAM" + strNumber).c_str(), F_OK));
    TestPort oPort;
    errno = 0;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open(4294967295U, S::BAUD_9600, S::PARITY_NONE,
                                                  S::STOPBITS_1, S::BYTESIZE_8, nullptr)));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(-1, oPort.m_hPort);
}

/// A "/dev/ttyAM<n>" that leads to a pseudo-terminal, for as long as the scope lasts.
class BoardDevice
{
public:
    BoardDevice(unsigned int nPort, const char* pszTarget)
        : m_strName("/dev/ttyAM" + std::to_string(nPort)),
          m_bMade(symlink(pszTarget, m_strName.c_str()) == 0)
    {
    }
    ~BoardDevice()
    {
        if (m_bMade)
            unlink(m_strName.c_str());
    }
    BoardDevice(const BoardDevice&) = delete;
    BoardDevice& operator=(const BoardDevice&) = delete;
    bool IsMade() const { return m_bMade; }

private:
    std::string m_strName;
    bool m_bMade;
};

TEST(KorSerial, OpenByNumberReachesTheDeviceOfThatNumber)
{
    const PseudoTerminal oLine;
    const unsigned int nPort = static_cast<unsigned int>(getpid()) + 1000000U;
    const BoardDevice oDevice(nPort, oLine.Name());
    TestPort oPort;
    const int nResult =
        oPort.open(nPort, S::BAUD_9600, S::PARITY_NONE, S::STOPBITS_1, S::BYTESIZE_8, nullptr);
    // Without the right to make device names the device is missing instead.
    EXPECT_EQ(oDevice.IsMade() ? OK : OPEN_ERROR, SerialResult(nResult));
    EXPECT_EQ(oDevice.IsMade(), oPort.m_hPort != -1);
}

TEST(KorSerial, OpenSwitchesTheThreadOnAndCloseSwitchesItOff)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    EXPECT_EQ(OK, SerialResult(oPort.open(oLine)));
    EXPECT_NE(-1, oPort.m_hPort);
    EXPECT_NE(3, oPort.m_oRcvThread.GetState());
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(-1, oPort.m_hPort);
    EXPECT_EQ(3, oPort.m_oRcvThread.GetState());
}

TEST(KorSerial, CloseOfAPortNeverOpenedIsFine)
{
    TestPort oPort;
    EXPECT_EQ(3, oPort.m_oRcvThread.GetState());
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(-1, oPort.m_hPort);
}

TEST(KorSerial, OpensInBlockingMode)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    EXPECT_EQ(O_RDWR, fcntl(oPort.m_hPort, F_GETFL) & (O_ACCMODE | O_NONBLOCK));
}

TEST(KorSerial, OpenOnAnOpenPortLeavesTheFirstDescriptorOpen)
{
    const PseudoTerminal oFirstLine;
    const PseudoTerminal oSecondLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oFirstLine)));
    const int hFirst = oPort.m_hPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oSecondLine)));
    EXPECT_NE(hFirst, oPort.m_hPort);
    EXPECT_NE(-1, fcntl(hFirst, F_GETFD));
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(0, ::close(hFirst));
}

TEST(KorSerial, InitPortFailsOnAClosedPort)
{
    TestPort oPort;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.InitPort(S::BAUD_9600, S::PARITY_NONE, S::STOPBITS_1,
                                                      S::BYTESIZE_8, nullptr)));
}

TEST(KorSerial, SendsEveryByteValue)
{
    const PseudoTerminal oLine;
    oLine.MakeRaw();
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    std::string strAll;
    for (int nByte = 0; nByte < 256; ++nByte)
        strAll += static_cast<char>(nByte);
    EXPECT_EQ(OK, SerialResult(oPort.DataReq(strAll.data(), 256, 0)));
    EXPECT_EQ(strAll, oLine.Receive(256));
}

TEST(KorSerial, SendingNothingIsFine)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    EXPECT_EQ(OK, SerialResult(oPort.DataReq("abc", 0, 0)));
    EXPECT_EQ(OK, SerialResult(oPort.DataReq(nullptr, 0, 0)));
}

TEST(KorSerial, SendingNoDataIsAnIoError)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    EXPECT_EQ(IO_ERROR, SerialResult(oPort.DataReq(nullptr, 5, 0)));
}

TEST(KorSerial, SendingOnAClosedPortIsAnIoError)
{
    TestPort oPort;
    EXPECT_EQ(IO_ERROR, SerialResult(oPort.DataReq("abc", 3, 0)));
}

TEST(KorSerial, SendingWithoutRoomOnANonBlockingDescriptorWouldBlock)
{
    const PseudoTerminal oLine;
    oLine.MakeRaw();
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    ASSERT_EQ(0, fcntl(oPort.m_hPort, F_SETFL, O_RDWR | O_NONBLOCK));
    const std::string strChunk(4096, 'x');
    SerialResult oResult = OK;
    for (int nChunk = 0; nChunk < 1000 && oResult == OK; ++nChunk)
        oResult = SerialResult(oPort.DataReq(strChunk.data(), 4096, 0));
    EXPECT_EQ(WOULDBLOCK, oResult);
}

TEST(KorSerial, SendingOnAHungUpLineIsAnIoError)
{
    PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    oLine.HangUp();
    EXPECT_EQ(IO_ERROR, SerialResult(oPort.DataReq("abc", 3, 0)));
}

TEST(KorSerial, ModemLinesAreNotSupported)
{
    TestPort oPort;
    S::E_RTS_STATE eRts = S::RTS_ON;
    S::E_DTR_STATE eDtr = S::DTR_OFF;
    EXPECT_EQ(NOT_SUPPORTED, SerialResult(oPort.GetLineState(eRts, eDtr)));
    EXPECT_EQ(S::RTS_ON, eRts);
    EXPECT_EQ(S::DTR_OFF, eDtr);
    EXPECT_EQ(NOT_SUPPORTED, SerialResult(oPort.SetLineState(S::RTS_OFF, S::DTR_ON)));
    oPort.LineStateInd(S::RTS_ON, S::DTR_ON);
}

} // namespace
