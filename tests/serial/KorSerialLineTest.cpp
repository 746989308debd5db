#include "serial/KorLineTermiosDetail.h"
#include "tests/serial/LineTestPeer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace
{

std::string AllBytes()
{
    std::string strBytes;
    for (int i = 0; i < 256; ++i)
        strBytes += static_cast<char>(i);
    return strBytes + strBytes;
}

SKorLineOptions Speed(unsigned int nSpeed)
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = nSpeed;
    return oOptions;
}

SKorLineOptions Shared()
{
    SKorLineOptions oOptions;
    oOptions.m_bExclusive = false;
    return oOptions;
}

/// What no pseudo-terminal has, so that it is refused late.
SKorLineOptions TwoWire()
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 4800;
    oOptions.m_oRS485.m_bEnabled = true;
    return oOptions;
}

Outcome NotOpened(int nErrno)
{
    return {CKorSerial::SERIAL_OPEN_ERROR, nErrno};
}

/// Settings that differ from those of a raw line in as many bits as a pseudo-terminal allows.
termios StrangeSettings(const PseudoTerminal& oPeer)
{
    termios oSettings = oPeer.Settings();
    oSettings.c_iflag = IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF |
                        IXANY | INPCK | IGNPAR | IMAXBEL;
    oSettings.c_oflag = OPOST | ONLCR | OCRNL | ONOCR | ONLRET;
    oSettings.c_lflag = ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL | NOFLSH | TOSTOP | IEXTEN;
    oSettings.c_cflag &= ~static_cast<tcflag_t>(CREAD | CLOCAL);
    oSettings.c_cflag |= CSTOPB | PARODD;
    oSettings.c_cc[VMIN] = 7;
    oSettings.c_cc[VTIME] = 5;
    return oSettings;
}

void ExpectSameSettings(const termios& oExpected, const termios& oActual)
{
    EXPECT_EQ(oExpected.c_iflag, oActual.c_iflag);
    EXPECT_EQ(oExpected.c_oflag, oActual.c_oflag);
    EXPECT_EQ(oExpected.c_cflag, oActual.c_cflag);
    EXPECT_EQ(oExpected.c_lflag, oActual.c_lflag);
    EXPECT_EQ(std::vector<cc_t>(oExpected.c_cc, oExpected.c_cc + NCCS),
              std::vector<cc_t>(oActual.c_cc, oActual.c_cc + NCCS));
}

/// Another user of the device.
struct Descriptor
{
    explicit Descriptor(const PseudoTerminal& oPeer)
        : m_strName(oPeer.Name()),
          m_nHandle(open(oPeer.Name(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        EXPECT_NE(-1, m_nHandle);
    }
    ~Descriptor() { close(m_nHandle); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsExclusive() const
    {
        int nExclusive = 0;
        if (ioctl(m_nHandle, TIOCGEXCL, &nExclusive) == 0)
            return nExclusive != 0;
        return !CanBeOpened(); // emulators do not know the question, and run without privileges
    }
    /// Whether a further user, with the privileges of this process, may open the device.
    bool CanBeOpened() const
    {
        const int nFurther = open(m_strName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (nFurther != -1)
            close(nFurther);
        return nFurther != -1;
    }
    std::string Read() const
    {
        char acBytes[64];
        const ssize_t nRead = read(m_nHandle, acBytes, sizeof acBytes);
        return std::string(acBytes, nRead > 0 ? static_cast<std::size_t>(nRead) : 0);
    }

    const std::string m_strName;
    const int m_nHandle;
};

} // namespace

TEST(KorSerialLine, PassesAllBytesBothWays)
{
    TestLine oTest;
    std::string strData;
    oTest.m_oPeer.Send(AllBytes());
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(512, strData, LONG)));
    EXPECT_EQ(AllBytes(), strData);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText(AllBytes(), LONG)));
    EXPECT_EQ(AllBytes(), oTest.m_oPeer.Receive(512));
}

TEST(KorSerialLine, IsRawInEveryBitWhateverTheLineWas)
{
    PseudoTerminal oPeer;
    oPeer.Apply(StrangeSettings(oPeer));
    CKorSerialLine oLine;
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name())));
    const termios oRaw = oPeer.Settings();
    EXPECT_EQ(0U, oRaw.c_iflag);
    EXPECT_EQ(0U, oRaw.c_oflag);
    EXPECT_EQ(0U, oRaw.c_lflag);
    EXPECT_EQ(tcflag_t(CREAD | CLOCAL), oRaw.c_cflag & (CREAD | CLOCAL | CSTOPB | PARODD));
    EXPECT_EQ(1, oRaw.c_cc[VMIN]);
    EXPECT_EQ(0, oRaw.c_cc[VTIME]);
}

TEST(KorSerialLine, SetsTheOptionsThatAPseudoTerminalHas)
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 115200;
    oOptions.m_eParity = CKorSerial::PARITY_ODD;
    oOptions.m_eByteSize = CKorSerial::BYTESIZE_7;
    oOptions.m_eStopbits = CKorSerial::STOPBITS_2;
    oOptions.m_eFlow = SKorLineOptions::FLOW_XON_XOFF;
    oOptions.m_cXon = 'n';
    oOptions.m_cXoff = 'f';
    const TestLine oTest(oOptions);
    const termios oSettings = oTest.m_oPeer.Settings();
    EXPECT_EQ(speed_t(B115200), cfgetospeed(&oSettings));
    EXPECT_EQ(tcflag_t(CSTOPB), oSettings.c_cflag & CSTOPB);
    EXPECT_EQ(tcflag_t(PARODD), oSettings.c_cflag & PARODD);
    EXPECT_EQ(tcflag_t(IXON | IXOFF), oSettings.c_iflag);
    EXPECT_EQ('n', oSettings.c_cc[VSTART]);
    EXPECT_EQ('f', oSettings.c_cc[VSTOP]);
}

TEST(KorSerialLine, UsesRtsAndCtsWhenAsked)
{
    SKorLineOptions oOptions;
    oOptions.m_eFlow = SKorLineOptions::FLOW_RTS_CTS;
    TestLine oTest(oOptions);
    EXPECT_NE(0U, oTest.m_oPeer.Settings().c_cflag & CRTSCTS);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions({})));
    EXPECT_EQ(0U, oTest.m_oPeer.Settings().c_cflag & CRTSCTS);
}

TEST(KorSerialLine, TakesEverySpeedThatHasAName)
{
    TestLine oTest;
    const unsigned int nHighest = UnderEmulation() ? 460800 : 4000000; // that emulators know
    for (const unsigned int nSpeed :
         {50U,      75U,      110U,     134U,     150U,     200U,    300U,     600U,
          1200U,    1800U,    2400U,    4800U,    9600U,    19200U,  38400U,   57600U,
          115200U,  230400U,  460800U,  500000U,  576000U,  921600U, 1000000U, 1152000U,
          1500000U, 2000000U, 2500000U, 3000000U, 3500000U, 4000000U}) {
        if (nSpeed > nHighest)
            break;
        EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(nSpeed)))) << nSpeed;
        SKorLineSettings oSettings;
        EXPECT_TRUE(KorGetLineSettings(oTest.m_oPeer.FarEnd(), oSettings));
        EXPECT_EQ(nSpeed, oSettings.m_nOutputSpeed);
    }
}

TEST(KorSerialLine, TakesFreeSpeedsWhereTheKernelHasThem)
{
    const PseudoTerminal oPeer;
    CKorSerialLine oLine;
    for (const unsigned int nSpeed : {250000U, 31250U, 1U, 9601U, 12345678U}) {
        const Outcome oOutcome = Told(oLine, oLine.Open(oPeer.Name(), Speed(nSpeed)));
        EXPECT_EQ(UnderEmulation() ? NotOpened(EINVAL) : DONE, oOutcome) << nSpeed;
        SKorLineSettings oSettings;
        EXPECT_TRUE(KorGetLineSettings(oPeer.FarEnd(), oSettings));
        EXPECT_EQ(oOutcome == DONE ? nSpeed : 38400U, oSettings.m_nOutputSpeed);
    }
}

TEST(KorSerialLine, RefusesOptionsThatMakeNoSense)
{
    const PseudoTerminal oPeer;
    CKorSerialLine oLine;
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), Speed(0))));
    SKorLineOptions oOptions;
    oOptions.m_eParity = static_cast<CKorSerial::E_PARITY>(3);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    oOptions = {};
    oOptions.m_eByteSize = static_cast<CKorSerial::E_BYTESIZE>(8);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    oOptions = {};
    oOptions.m_eStopbits = static_cast<CKorSerial::E_NUM_STOPBITS>(2);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    oOptions = {};
    oOptions.m_eFlow = static_cast<SKorLineOptions::EFlow>(3);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    EXPECT_FALSE(oLine.IsOpen());
}

TEST(KorSerialLine, TellsWhyADeviceCannotBeOpened)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("plain"), "content");
    CKorSerialLine oLine;
    EXPECT_EQ(NotOpened(ENOENT), Told(oLine, oLine.Open("/dev/no-such-line")));
    EXPECT_EQ(NotOpened(ENOENT), Told(oLine, oLine.Open(nullptr)));
    EXPECT_EQ(NotOpened(ENOTTY), Told(oLine, oLine.Open("/dev/null")));
    EXPECT_EQ(NotOpened(ENOTTY), Told(oLine, oLine.Open(oDir.File("plain").c_str())));
    EXPECT_EQ(NotOpened(EISDIR), Told(oLine, oLine.Open(oDir.Path().c_str())));
    EXPECT_FALSE(oLine.IsOpen());
    EXPECT_EQ(-1, oLine.GetHandle());
    EXPECT_EQ("content", ReadFile(oDir.File("plain")));
}

TEST(KorSerialLine, IsNotInheritedAndDoesNotBlock)
{
    const TestLine oTest;
    EXPECT_NE(0, fcntl(oTest.m_oLine.GetHandle(), F_GETFD) & FD_CLOEXEC);
    EXPECT_NE(0, fcntl(oTest.m_oLine.GetHandle(), F_GETFL) & O_NONBLOCK);
}

TEST(KorSerialLine, DoesNotBecomeTheControllingTerminalOfADaemon)
{
    const PseudoTerminal oPeer;
    ChildProcess oDaemon([&oPeer]() {
        setsid();
        CKorSerialLine oLine;
        const int nResult = oLine.Open(oPeer.Name());
        return nResult == CKorSerial::SERIAL_OK && open("/dev/tty", O_RDWR) == -1 ? 0 : 1;
    });
    EXPECT_EQ(0, oDaemon.Wait().nExitStatus);
}

TEST(KorSerialLine, DiscardsInputFromBefore)
{
    PseudoTerminal oPeer;
    oPeer.MakeRaw();
    oPeer.Send("old");
    CKorSerialLine oLine;
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name())));
    std::string strData;
    oPeer.Send("new");
    EXPECT_EQ(DONE, Told(oLine, oLine.ReadBytes(3, strData, LONG)));
    EXPECT_EQ("new", strData);
}

TEST(KorSerialLine, ReleasesAnOutputThatSomebodyStopped)
{
    const PseudoTerminal oPeer;
    const Descriptor oOther(oPeer);
    ASSERT_EQ(0, tcflow(oOther.m_nHandle, TCOOFF));
    CKorSerialLine oLine;
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name())));
    EXPECT_EQ(DONE, Told(oLine, oLine.WriteText("out", LONG)));
    EXPECT_EQ("out", oPeer.Receive(3));
}

TEST(KorSerialLine, IsExclusiveUnlessAllOpenersShare)
{
    TestLine oTest;
    CKorSerialLine oSecond;
    EXPECT_EQ(NotOpened(EBUSY), Told(oSecond, oSecond.Open(oTest.m_oPeer.Name())));
    EXPECT_EQ(NotOpened(EBUSY), Told(oSecond, oSecond.Open(oTest.m_oPeer.Name(), Shared())));
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Open(oTest.m_oPeer.Name(), Shared())));
    EXPECT_EQ(NotOpened(EBUSY), Told(oSecond, oSecond.Open(oTest.m_oPeer.Name())));
    EXPECT_EQ(DONE, Told(oSecond, oSecond.Open(oTest.m_oPeer.Name(), Shared())));
    oTest.m_oLine.Close();
    EXPECT_EQ(NotOpened(EBUSY), Told(oTest.m_oLine, oTest.m_oLine.Open(oTest.m_oPeer.Name())));
    oSecond.Close();
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Open(oTest.m_oPeer.Name())));
}

TEST(KorSerialLine, ExclusiveModeLastsFromOpenToClose)
{
    PseudoTerminal oPeer;
    const Descriptor oOther(oPeer);
    CKorSerialLine oLine;
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name())));
    EXPECT_TRUE(oOther.IsExclusive());
    oLine.Close();
    EXPECT_FALSE(oOther.IsExclusive());
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name(), Shared())));
    EXPECT_FALSE(oOther.IsExclusive());
}

TEST(KorSerialLine, AFailedOpenLeavesTheLineAsItWas)
{
    PseudoTerminal oPeer;
    oPeer.MakeRaw();
    const Descriptor oOther(oPeer);
    for (const bool bExclusive : {false, true}) {
        const termios oBefore = oPeer.Settings();
        ASSERT_EQ(0, ioctl(oOther.m_nHandle, bExclusive ? TIOCEXCL : TIOCNXCL));
        oPeer.Send("kept");
        pollfd oInput = {oOther.m_nHandle, POLLIN, 0};
        ASSERT_EQ(1, poll(&oInput, 1, PATIENCE_MS));

        CKorSerialLine oLine;
        const Outcome oLate = oOther.CanBeOpened() ? UNSUPPORTED : NotOpened(EBUSY);
        EXPECT_EQ(oLate, Told(oLine, oLine.Open(oPeer.Name(), TwoWire())));
        ASSERT_EQ(0, flock(oOther.m_nHandle, LOCK_EX));
        EXPECT_EQ(NotOpened(EBUSY), Told(oLine, oLine.Open(oPeer.Name())));
        ASSERT_EQ(0, flock(oOther.m_nHandle, LOCK_UN));
        EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), Speed(0))));

        EXPECT_FALSE(oLine.IsOpen());
        ExpectSameSettings(oBefore, oPeer.Settings());
        EXPECT_EQ(bExclusive, oOther.IsExclusive());
        EXPECT_EQ("kept", oOther.Read());
        EXPECT_EQ(0, flock(oOther.m_nHandle, LOCK_EX | LOCK_NB));
        EXPECT_EQ(0, flock(oOther.m_nHandle, LOCK_UN));
    }
}

TEST(KorSerialLine, AFailedOpenKeepsNoDescriptor)
{
    const PseudoTerminal oPeer;
    const int nFree = dup(0);
    close(nFree);
    CKorSerialLine oLine;
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.Open(oPeer.Name(), TwoWire())));
    EXPECT_EQ(NotOpened(ENOTTY), Told(oLine, oLine.Open("/dev/null")));
    const int nNext = dup(0);
    close(nNext);
    EXPECT_EQ(nFree, nNext);
}

TEST(KorSerialLine, CloseGivesTheSettingsBack)
{
    PseudoTerminal oPeer;
    oPeer.Apply(StrangeSettings(oPeer));
    const termios oBefore = oPeer.Settings();
    CKorSerialLine oLine;
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name(), Speed(115200))));
    EXPECT_EQ(DONE, Told(oLine, oLine.SetOptions(Speed(1200))));
    oLine.Close();
    ExpectSameSettings(oBefore, oPeer.Settings());
    EXPECT_FALSE(oLine.IsOpen());
    EXPECT_FALSE(oLine.IsHungUp());
}

TEST(KorSerialLine, TheDestructorCloses)
{
    PseudoTerminal oPeer;
    const termios oBefore = oPeer.Settings();
    {
        CKorSerialLine oLine;
        ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name())));
    }
    ExpectSameSettings(oBefore, oPeer.Settings());
    CKorSerialLine oNext;
    EXPECT_EQ(DONE, Told(oNext, oNext.Open(oPeer.Name())));
}

TEST(KorSerialLine, AForkedChildDoesNotKeepTheLineBusy)
{
    TestLine oTest;
    ChildProcess oChild([]() {
        pause();
        return 0;
    });
    oTest.m_oLine.Close();
    const Descriptor oOther(oTest.m_oPeer);
    CKorSerialLine oNext;
    EXPECT_EQ(DONE, Told(oNext, oNext.Open(oTest.m_oPeer.Name())));
    oNext.Close();
    EXPECT_FALSE(oOther.IsExclusive());
    oChild.Signal(SIGKILL);
    oChild.Wait();
}

TEST(KorSerialLine, CloseLeavesTheFarEndWhatItHasReceived)
{
    TestLine oTest(Shared());
    const Descriptor oOther(oTest.m_oPeer); // else the far end would see a hang-up
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("last words", LONG)));
    oTest.m_oLine.Close();
    EXPECT_EQ("last words", oTest.m_oPeer.Receive(10));
}

TEST(KorSerialLine, OpenOfAnOpenLineClosesItFirst)
{
    TestLine oTest;
    oTest.Hold("held");
    PseudoTerminal oOther;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Open(oOther.Name())));
    EXPECT_EQ(0U, oTest.m_oLine.GetHeldCount());
    CKorSerialLine oNext;
    EXPECT_EQ(DONE, Told(oNext, oNext.Open(oTest.m_oPeer.Name())));
    EXPECT_EQ(NotOpened(ENOENT), Told(oTest.m_oLine, oTest.m_oLine.Open("/dev/no-such-line")));
    EXPECT_FALSE(oTest.m_oLine.IsOpen());
}

TEST(KorSerialLine, EveryCallOnAClosedObjectTellsEbadf)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    oTest.Hold("held");
    oLine.Close();
    std::string strData = "kept";
    SKorModemLines oModem;
    SKorLineCounts oCounts;
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.SetOptions({})));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.Read(9, strData, LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.Read(0, strData, 0)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.ReadBytes(1, strData, LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.ReadUntil("d", strData, LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.ReadUntil("", strData, LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.ReadFrame(1, strData, LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.Write("", 0, LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.WriteText("x", LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.Drain(LONG)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.DiscardInput()));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.DiscardOutput()));
    EXPECT_EQ(Refused(EBADF),
              Told(oLine, oLine.StartReception([](const char*, unsigned int) {}, nullptr)));
    EXPECT_EQ(Refused(EBADF),
              Told(oLine, oLine.SetModemLines(CKorSerial::RTS_ON, CKorSerial::DTR_ON)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.GetModemLines(oModem)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.SendBreak(1)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.SetRS485({})));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.SetLowLatency(true)));
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.GetErrorCounts(oCounts)));
    EXPECT_EQ("kept", strData);
    EXPECT_EQ(0U, oLine.GetHeldCount());
    EXPECT_EQ(-1, oLine.GetHandle());
    EXPECT_FALSE(oLine.IsOpen());
    oLine.Cancel();
    oLine.StopReception();
    oLine.Close();
}

TEST(KorSerialLine, SettingsTakeEffectAtOnceAndLoseNothing)
{
    TestLine oTest;
    oTest.Hold("held ");
    oTest.Arrive("and not read");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(115200))));
    const termios oSettings = oTest.m_oPeer.Settings();
    EXPECT_EQ(speed_t(B115200), cfgetospeed(&oSettings));
    std::string strData;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(17, strData, LONG)));
    EXPECT_EQ("held and not read", strData);
}

TEST(KorSerialLine, RefusedSettingsLeaveTheOldOnes)
{
    TestLine oTest;
    const termios oBefore = oTest.m_oPeer.Settings();
    EXPECT_EQ(Refused(EINVAL), Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(0))));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(TwoWire())));
    ExpectSameSettings(oBefore, oTest.m_oPeer.Settings());
    EXPECT_TRUE(oTest.m_oLine.IsOpen());
}

TEST(KorSerialLine, AnOpenLineCanBeSharedAndTakenBack)
{
    TestLine oTest;
    CKorSerialLine oSecond;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Shared())));
    ASSERT_EQ(DONE, Told(oSecond, oSecond.Open(oTest.m_oPeer.Name(), Shared())));
    EXPECT_EQ(Refused(EBUSY), Told(oTest.m_oLine, oTest.m_oLine.SetOptions({})));
    CKorSerialLine oThird;
    EXPECT_EQ(NotOpened(EBUSY), Told(oThird, oThird.Open(oTest.m_oPeer.Name())));
    oSecond.Close();
    EXPECT_EQ(NotOpened(EBUSY), Told(oThird, oThird.Open(oTest.m_oPeer.Name())));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions({})));
    EXPECT_EQ(NotOpened(EBUSY), Told(oThird, oThird.Open(oTest.m_oPeer.Name(), Shared())));
}

TEST(KorSerialLine, TellsWhatAPseudoTerminalDoesNotHave)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    SKorModemLines oModem;
    oModem.m_bRing = true;
    SKorLineCounts oCounts;
    oCounts.m_nBreak = 77;
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.GetModemLines(oModem)));
    EXPECT_EQ(UNSUPPORTED,
              Told(oLine, oLine.SetModemLines(CKorSerial::RTS_OFF, CKorSerial::DTR_ON)));
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.SetRS485({})));
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.SetLowLatency(true)));
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.GetErrorCounts(oCounts)));
    EXPECT_TRUE(oModem.m_bRing);
    EXPECT_EQ(77U, oCounts.m_nBreak);
}

TEST(KorSerialLine, EachThreadLearnsItsOwnReason)
{
    TestLine oTest;
    EXPECT_EQ(0, oTest.m_oLine.GetLastError());
    EXPECT_EQ(Refused(EINVAL), Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(0))));
    Caller([&oTest]() {
        EXPECT_EQ(0, oTest.m_oLine.GetLastError());
        std::string strData;
        EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)));
    }).Join();
    EXPECT_EQ(EINVAL, oTest.m_oLine.GetLastError());
}

TEST(KorSerialLine, ALineWithoutReceptionHasNoThread)
{
    const auto fnThreads = []() {
        std::ifstream oStatus("/proc/self/status");
        std::string strWord;
        int nThreads = 0;
        while (oStatus >> strWord && strWord != "Threads:") {
        }
        oStatus >> nThreads;
        return nThreads;
    };
    const int nBefore = fnThreads();
    TestLine oTest;
    std::string strData;
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 1)));
    EXPECT_GE(nBefore, fnThreads()); // a thread of another test may have ended meanwhile
}
