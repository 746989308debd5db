// What the library's classes do in a system of which each call fails once. See scenario.cpp.

#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <ostream>

namespace
{

/// A scenario and the kind of call that fails in it, with the errors that it fails with.
struct SFailure
{
    const char* pszScenario;
    const char* pszKind;
    std::vector<int> vecErrors;
    bool bForGood = false;
};

void PrintTo(const SFailure& oFailure, std::ostream* pStream)
{
    *pStream << oFailure.pszScenario << ' ' << oFailure.pszKind << (oFailure.bForGood ? " on" : "");
}

std::string NameOf(const testing::TestParamInfo<SFailure>& oInfo)
{
    std::string strName = std::string(oInfo.param.pszScenario) + "_" + oInfo.param.pszKind;
    for (char& c : strName)
        c = c == '-' ? '_' : c;
    return strName + (oInfo.param.bForGood ? "_for_good" : "");
}

class FailingSystems : public testing::TestWithParam<SFailure>
{
};

TEST_P(FailingSystems, EachCallMayFail)
{
    const SFailure& oFailure = GetParam();
    for (const int nError : oFailure.vecErrors) {
        const ScratchDir oDir;
        const ChildResult oResult = RunProgram(
            {"env", "LD_PRELOAD=" FAIL_CALLS, SCENARIO_PROGRAM, oFailure.pszScenario, oDir.Path(),
             oFailure.pszKind, std::to_string(nError), oFailure.bForGood ? "on" : "once"});
        EXPECT_EQ(0, oResult.nExitStatus) << oResult.strErr;
        EXPECT_LT(0, std::atoi(oResult.strOut.c_str())) << "no call of this kind came";
        std::cout << oFailure.pszScenario << ' ' << oFailure.pszKind << ' ' << std::strerror(nError)
                  << ": " << oResult.strOut;
    }
}

// An interrupted call is a failure too, and the most frequent one.
const std::vector<SFailure> FAILURES = {{"safe-settings", "open", {EMFILE}},
                                        {"safe-settings", "read", {EIO, EINTR}},
                                        {"safe-settings", "write", {ENOSPC, EINTR}},
                                        {"safe-settings", "fsync", {EIO}},
                                        {"safe-settings", "rename", {EIO}},
                                        {"safe-settings", "memory", {ENOMEM}},
                                        {"safe-settings", "memory", {ENOMEM}, true},
                                        {"plain-settings", "open", {EMFILE}},
                                        {"plain-settings", "read", {EIO, EINTR}},
                                        {"plain-settings", "write", {ENOSPC, EINTR}},
                                        {"plain-settings", "memory", {ENOMEM}},
                                        {"plain-settings", "memory", {ENOMEM}, true},
                                        {"line", "open", {EMFILE, EINTR}},
                                        {"line", "read", {EIO, EINTR}},
                                        {"line", "write", {EIO, EINTR}},
                                        {"line", "handle", {EMFILE}},
                                        {"line", "poll", {ENOMEM, EINTR}},
                                        {"line", "tcsetattr", {EIO}},
                                        {"line", "thread", {EAGAIN}},
                                        {"line", "memory", {ENOMEM}},
                                        {"line", "memory", {ENOMEM}, true},
                                        {"port", "open", {EMFILE}},
                                        {"port", "read", {EIO, EINTR}},
                                        {"port", "write", {EIO, EINTR}},
                                        {"port", "select", {ENOMEM, EINTR}},
                                        {"port", "tcsetattr", {EIO}},
                                        {"port", "thread", {EAGAIN}},
                                        {"port", "memory", {ENOMEM}},
                                        {"loop", "handle", {EMFILE}},
                                        {"loop", "poll", {ENOMEM, EINTR}},
                                        {"loop", "memory", {ENOMEM}},
                                        {"loop", "memory", {ENOMEM}, true},
                                        {"daemon", "open", {EMFILE}},
                                        {"daemon", "read", {EIO}},
                                        {"daemon", "write", {ENOSPC, ENOBUFS}},
                                        {"daemon", "handle", {EMFILE}},
                                        {"daemon", "poll", {ENOMEM, EINTR}},
                                        {"daemon", "memory", {ENOMEM}},
                                        {"daemon", "memory", {ENOMEM}, true},
                                        {"detach", "open", {EMFILE}},
                                        {"detach", "read", {EINTR}},
                                        {"detach", "write", {EIO}},
                                        {"detach", "handle", {EMFILE}},
                                        {"detach", "fork", {EAGAIN}},
                                        {"detach", "poll", {ENOMEM, EINTR}},
                                        {"detach", "memory", {ENOMEM}},
                                        {"detach", "memory", {ENOMEM}, true},
                                        {"child", "open", {EMFILE}},
                                        {"child", "read", {EIO, EINTR}},
                                        {"child", "write", {EIO, EINTR}},
                                        {"child", "handle", {EMFILE}},
                                        {"child", "fork", {EAGAIN}},
                                        {"child", "thread", {EAGAIN}},
                                        {"child", "poll", {ENOMEM, EINTR}},
                                        {"child", "memory", {ENOMEM}},
                                        {"child", "memory", {ENOMEM}, true},
                                        {"log", "open", {EMFILE}},
                                        {"log", "write", {ENOSPC, EINTR}},
                                        {"log", "rename", {EIO}},
                                        {"log", "memory", {ENOMEM}},
                                        {"log", "memory", {ENOMEM}, true},
                                        {"store", "open", {EMFILE}},
                                        {"store", "read", {EIO, EINTR}},
                                        {"store", "write", {ENOSPC, EINTR}},
                                        {"store", "fsync", {EIO}},
                                        {"store", "thread", {EAGAIN}},
                                        {"store", "memory", {ENOMEM}},
                                        {"store", "memory", {ENOMEM}, true},
                                        {"zone", "open", {EMFILE}},
                                        {"zone", "read", {EIO, EINTR}},
                                        {"zone", "memory", {ENOMEM}},
                                        {"zone", "memory", {ENOMEM}, true}};

INSTANTIATE_TEST_SUITE_P(Of, FailingSystems, testing::ValuesIn(FAILURES), NameOf);

} // namespace
