#include "fs/KorChild.h"

#include "tests/config/TestScale.h"
#include "tests/fs/ChildTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Confinement.h"
#include "tests/support/Emulation.h"
#include "tests/support/EntriesOf.h"
#include "tests/support/Patience.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace
{

/// Whether an operation said that there is no such program.
bool IsRefused(bool bDone)
{
    const int nError = std::exchange(errno, 0);
    return !bDone && nError == ESRCH;
}

TEST(KorChildFork, TheProgramsChildIsNotTheForkedProcesss)
{
    auto pChild = std::make_unique<CKorChild>();
    ASSERT_TRUE(pChild->Start({"sleep", "1000"}));
    ChildProcess oForked([&] {
        const bool bLeft = !pChild->IsRunning() && IsRefused(pChild->Signal(SIGKILL)) &&
                           IsRefused(pChild->Stop(0)) && IsRefused(pChild->Wait(0xFFFFFFFF));
        pChild.reset();
        return bLeft ? 0 : 1;
    });
    EXPECT_EQ(0, oForked.Wait().nExitStatus);
    EXPECT_TRUE(pChild->IsRunning());
    EXPECT_TRUE(pChild->Stop(0));
}

TEST(KorChildLoad, TenThousandStartsLeaveNothingBehind)
{
    const std::ptrdiff_t nHandles = EntriesOf("/proc/self/fd");
    const std::ptrdiff_t nThreads = EntriesOf("/proc/self/task");
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
    for (int nStart = 0; nStart < 10000 / TEST_SCALE; ++nStart) {
        ASSERT_TRUE(oChild.Start({"/bin/true"}, oOptions)) << nStart;
        ASSERT_TRUE(oChild.Wait(PATIENCE_MS)) << nStart;
        ASSERT_EQ(0, oChild.GetExitStatus()) << nStart;
    }
    EXPECT_GE(nHandles + 4, EntriesOf("/proc/self/fd")) << "its own are open";
    EXPECT_TRUE(WaitUntil([=] { return EntriesOf("/proc/self/task") <= nThreads + 1; }));
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
}

TEST(KorChildLoad, StartsFromFourThreadsAtOnceDoNotMeet)
{
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < 4; ++nThread) {
        vecThreads.emplace_back([nThread] {
            for (int nStart = 0; nStart < 500 / TEST_SCALE; ++nStart) {
                const std::string strText = std::to_string(nThread * 1000 + nStart);
                EXPECT_EQ(
                    strText + "\n3\n",
                    OutputOf(Shell("echo " + strText + "; ls /proc/$$/fd | grep -c '^[0-2]$'")));
                EXPECT_EQ(ENOENT, ErrorOf({"/no/such/program"}));
            }
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
}

/// Has every system call fail that came after 2019, as on an old kernel.
bool ForgetNewSystemCalls()
{
    constexpr unsigned int FIRST_NEW = 424;
    constexpr unsigned int FIRST_OF_ARM = 0xF0000; // without them no program of 32-bit ARM starts
    sock_filter aoFilter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, FIRST_NEW, 0, 2),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, FIRST_OF_ARM, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog oProgram = {sizeof aoFilter / sizeof aoFilter[0], aoFilter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &oProgram) == 0;
}

/// The descriptors from 3 to 9 that a program finds open, told without /proc.
std::string LowDescriptorsOfAProgram()
{
    return OutputOf(Shell("for n in 3 4 5 6 7 8 9; do if eval \": >&$n\" 2>/dev/null; then "
                          "echo $n; fi; done"));
}

TEST(KorChildOldKernel, StartsEndsAndClosesAsOnANewOne)
{
    ChildProcess oOld([] {
        if (!ForgetNewSystemCalls() && !UnderEmulation())
            return 1;
        fcntl(1, F_DUPFD, 900);
        for (int nCopy = 0; nCopy < 300; ++nCopy)
            dup(1);
        if (DescriptorsOfAProgram() != "0\n1\n2\n" || ErrorOf({"/no/such/program"}) != ENOENT)
            return 2;
        CKorChild oChild;
        if (!oChild.Start({"sleep", "1000"}) || oChild.Wait(0) || !oChild.Stop(PATIENCE_MS))
            return 3;
        return oChild.GetEndSignal() == SIGTERM && waitpid(-1, nullptr, WNOHANG) == -1 ? 0 : 4;
    });
    EXPECT_EQ(0, oOld.Wait().nExitStatus);
}

TEST(KorChildOldKernel, ClosesDescriptorsAlsoWithoutTheListOfThem)
{
    ChildProcess oOld([]() -> int {
        const bool bHidden = MountSmallDisk("/proc");
        ForgetNewSystemCalls();
        for (int nCopy = 0; nCopy < 10; ++nCopy)
            dup(1);
        const bool bShown = bHidden && access("/proc/self", F_OK) == 0;
        const bool bClosed = LowDescriptorsOfAProgram().empty();
        _exit(bShown ? 1 : bClosed ? 0 : 2); // without the checks of a sanitizer, which need /proc
    });
    EXPECT_EQ(0, oOld.Wait().nExitStatus);
}

TEST(KorChildLoad, HandlesThatCannotBeHadAreToldAndNoneIsLost)
{
    ChildProcess oAlone([] {
        const std::ptrdiff_t nHandles = EntriesOf("/proc/self/fd");
        Options oOptions;
        oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
        for (rlim_t nLimit = 3; nLimit < 30; ++nLimit) {
            const rlimit oLimit = {nLimit, 1024};
            setrlimit(RLIMIT_NOFILE, &oLimit);
            CKorChild oChild;
            const bool bStarted = oChild.Start({"true"}, oOptions);
            const int nError = oChild.GetLastError();
            if (bStarted && nLimit < 8)
                return 1;
            if (!bStarted && (nError != EMFILE || nLimit > 25))
                return 2;
        }
        const rlimit oLimit = {1024, 1024};
        setrlimit(RLIMIT_NOFILE, &oLimit);
        return EntriesOf("/proc/self/fd") == nHandles ? 0 : 3;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

} // namespace
