#include "tests/support/Confinement.h"

#include "tests/support/ChildProcess.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

void InChild(const std::function<void()>& fnMain)
{
    ChildProcess oChild([&fnMain] {
        fnMain();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    const ChildResult& oResult = oChild.Wait();
    EXPECT_EQ(0, oResult.nExitStatus) << "signal " << oResult.nSignal << "\n"
                                      << oResult.strOut << oResult.strErr;
}

void DropPrivileges()
{
    struct
    {
        uint32_t nVersion;
        int nPID;
    } oHeader = {0x20080522, 0};
    const uint32_t anNone[6] = {};
    EXPECT_EQ(0, syscall(SYS_capset, &oHeader, anNone));
}

bool MountSmallDisk(const std::string& strDirectory)
{
    return (unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", strDirectory.c_str(), "tmpfs", 0, "size=64k") == 0;
}
