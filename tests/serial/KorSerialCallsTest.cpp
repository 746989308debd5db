#include "tests/serial/SerialTestPort.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <termios.h>

// A program of its own: it puts functions of its own in the place of the C library's, which note
// that they were called and pass the call on.

namespace
{

std::string strCalls;
int nDrainResult = 0;

template <typename TFunction>
TFunction* Next(const char* pszName)
{
    return reinterpret_cast<TFunction*>(dlsym(RTLD_NEXT, pszName));
}

} // namespace

extern "C" int tcdrain(int hFile)
{
    strCalls += "drain ";
    return nDrainResult != 0 ? nDrainResult : Next<int(int)>("tcdrain")(hFile);
}

extern "C" int tcgetattr(int hFile, termios* pSettings) noexcept
{
    strCalls += "get ";
    return Next<int(int, termios*)>("tcgetattr")(hFile, pSettings);
}

extern "C" int tcsetattr(int hFile, int nWhen, const termios* pSettings) noexcept
{
    strCalls += nWhen == TCSAFLUSH ? "set-and-flush " : "set ";
    return Next<int(int, int, const termios*)>("tcsetattr")(hFile, nWhen, pSettings);
}

extern "C" int cfsetospeed(termios* pSettings, speed_t nSpeed) noexcept
{
    strCalls += "output=" + std::to_string(nSpeed) + " ";
    return Next<int(termios*, speed_t)>("cfsetospeed")(pSettings, nSpeed);
}

extern "C" int cfsetispeed(termios* pSettings, speed_t nSpeed) noexcept
{
    strCalls += "input=" + std::to_string(nSpeed) + " ";
    Next<int(termios*, speed_t)>("cfsetispeed")(pSettings, nSpeed);
    return -77;
}

namespace
{

TEST(KorSerialCalls, OpenDrainsBeforeItReadsTheSettingsAndFlushesWithTheNewOnes)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    strCalls.clear();
    EXPECT_EQ(OK, SerialResult(oPort.open(oLine)));
    EXPECT_EQ("drain get output=" + std::to_string(B115200) + " input=0 set-and-flush ", strCalls);
}

TEST(KorSerialCalls, OpenFailsWhereTheOutputCannotBeDrained)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    strCalls.clear();
    nDrainResult = -1;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open(oLine)));
    nDrainResult = 0;
    EXPECT_EQ("drain ", strCalls);
    EXPECT_EQ(OK, SerialResult(oPort.close()));
}

TEST(KorSerialCalls, SetBaudrateReturnsTheResultForTheInput)
{
    TestPort oPort;
    strCalls.clear();
    EXPECT_EQ(-77, oPort.SetBaudrate(B300));
    EXPECT_EQ("output=" + std::to_string(B300) + " input=0 ", strCalls);
}

} // namespace
