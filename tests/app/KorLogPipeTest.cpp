#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/app/LogEnds.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

TEST(KorLogPipe, LeavesWholeLinesWhenTheReaderComesAfterTheEnd)
{
    const Ends oEnds = Pipe();
    CKorLog oLog;
    RandomLines oLines;
    {
        const StandardErrorTo oStandardError(oEnds.nWriter);
        close(oEnds.nWriter);
        for (int i = 0; i < 2000; ++i)
            oLines.Write(oLog);
    }
    const Found oFound = Check(ReadToEnd(oEnds.nReader));
    EXPECT_EQ(oLines.Written(), oFound.nLines + oLog.GetLostCount());
    EXPECT_GT(oFound.nLines, 30u);
    close(oEnds.nReader);
}

TEST(KorLogPipe, ALineIsOneWrite)
{
    const Ends oEnds = PacketSocket();
    CKorLog oLog;
    const StandardErrorTo oStandardError(oEnds.nWriter);
    for (const std::size_t nLength : {0, 1, 5000, 8000, 20000}) {
        oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(nLength, 'x').c_str());
        char acPacket[20000];
        const ssize_t nRead = recv(oEnds.nReader, acPacket, sizeof acPacket, MSG_DONTWAIT);
        ASSERT_GT(nRead, 0);
        EXPECT_EQ('\n', acPacket[nRead - 1]);
    }
    EXPECT_EQ(-1, recv(oEnds.nReader, nullptr, 0, MSG_DONTWAIT));
    close(oEnds.nReader);
    close(oEnds.nWriter);
}

TEST(KorLogPipe, AReaderThatWentAwayCostsLines)
{
    for (const auto fnEnds : {&Pipe, &StreamSocket, &PacketSocket}) {
        ChildProcess oChild([fnEnds] {
            const Ends oEnds = fnEnds();
            dup2(oEnds.nWriter, STDERR_FILENO);
            close(oEnds.nReader);
            signal(SIGPIPE, SIG_DFL);
            CKorLog oLog;
            for (int i = 0; i < 3; ++i)
                oLog.Write(CKorLog::LEVEL_INFO, "text");
            sigset_t oPending;
            sigpending(&oPending);
            return oLog.GetLostCount() == 3 && sigismember(&oPending, SIGPIPE) == 0 ? 42 : 1;
        });
        EXPECT_EQ(42, oChild.Wait().nExitStatus);
    }
}

TEST(KorLogPipe, AClosedStandardErrorCostsLines)
{
    ChildProcess oChild([] {
        close(STDERR_FILENO);
        KorGetLog().Write(CKorLog::LEVEL_INFO, "text");
        return KorGetLog().GetLostCount() == 1 ? 42 : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorLogPipe, AFullDiskCostsLines)
{
    const int nFull = open("/dev/full", O_WRONLY);
    CKorLog oLog;
    {
        const StandardErrorTo oStandardError(nFull);
        oLog.Write(CKorLog::LEVEL_INFO, "text");
        EXPECT_EQ(1u, oLog.GetLostCount());
    }
    CapturedLog oCapture;
    oLog.Write(CKorLog::LEVEL_INFO, "text");
    EXPECT_EQ("warning: 1 log line was lost\ninfo: text\n", oCapture.TakeMessages());
    close(nFull);
}

TEST(KorLogPipe, ASizeLimitLeavesWholeLines)
{
    ChildProcess oChild([] {
        const rlimit oLimit = {1000, 1000};
        setrlimit(RLIMIT_FSIZE, &oLimit);
        signal(SIGXFSZ, SIG_DFL);
        CKorLog oLog;
        for (int i = 0; i < 30; ++i)
            oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(100, 'x').c_str());
        return static_cast<int>(oLog.GetLostCount());
    });
    EXPECT_EQ(23, oChild.Wait().nExitStatus); // a line has 137 bytes
    EXPECT_EQ(7u, Lines(oChild.Wait().strErr).size());
}

TEST(KorLogPipe, ABackgroundProgramIsNotStoppedAtItsTerminal)
{
    const PseudoTerminal oTerminal;
    oTerminal.MakeRaw();
    termios oSettings = oTerminal.Settings();
    oSettings.c_lflag |= TOSTOP;
    oTerminal.Apply(oSettings);
    ChildProcess oChild([&oTerminal] {
        setsid();
        const int nTerminal = open(oTerminal.Name(), O_RDWR); // becomes the controlling one
        dup2(nTerminal, STDERR_FILENO);
        const pid_t nBackground = fork();
        if (nBackground == 0) {
            setpgid(0, 0);
            KorGetLog().Write(CKorLog::LEVEL_INFO, "text");
            _exit(42);
        }
        int nStatus = 0;
        waitpid(nBackground, &nStatus, WUNTRACED);
        return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("info: text\n", WithoutTime(oTerminal.Receive(41)));
}

} // namespace
