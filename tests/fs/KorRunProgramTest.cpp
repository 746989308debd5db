#include "fs/KorChild.h"
#include "tests/support/CallWatch.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>

namespace
{

struct Result
{
    bool bDone = false;
    int nStatus = -2;
    int nError = 0;
    std::string strOutput = "old";
};

Result Complete(const std::vector<std::string>& vecArguments, unsigned int nTimeout = PATIENCE_MS)
{
    Result oResult;
    errno = 0;
    oResult.bDone = KorRunProgram(vecArguments, oResult.strOutput, oResult.nStatus, nTimeout);
    oResult.nError = errno;
    return oResult;
}

Result CompleteWith(const std::string& strInput, const std::vector<std::string>& vecArguments,
                    unsigned int nTimeout = PATIENCE_MS)
{
    Result oResult;
    errno = 0;
    oResult.bDone =
        KorRunProgram(vecArguments, strInput, oResult.strOutput, oResult.nStatus, nTimeout);
    oResult.nError = errno;
    return oResult;
}

TEST(KorRunProgram, KeepsTheOutputAndTheStatus)
{
    const Result oResult = Complete({"sh", "-c", "echo one; echo two; exit 3"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(3, oResult.nStatus);
    EXPECT_EQ("one\ntwo\n", oResult.strOutput);
}

TEST(KorRunProgram, PutsTheOutputInPlaceOfTheInput)
{
    std::string strText = "b\na\n";
    int nStatus = -2;
    EXPECT_TRUE(KorRunProgram({"sort"}, strText, strText, nStatus, PATIENCE_MS));
    EXPECT_EQ("a\nb\n", strText);
}

TEST(KorRunProgram, OutputThatCannotBeReadIsAFailure)
{
    const CallWatch oWatch([](const std::string& strCall) { return strCall == "read" ? EIO : 0; });
    const Result oResult = Complete({"echo", "text"});
    EXPECT_FALSE(oResult.bDone);
    EXPECT_EQ(EIO, oResult.nError);
    EXPECT_EQ(-1, oResult.nStatus);
}

TEST(KorRunProgram, InputThatCannotBeWrittenIsAFailure)
{
    const CallWatch oWatch([](const std::string& strCall) { return strCall == "write" ? EIO : 0; });
    const Result oResult = CompleteWith("text", {"cat"});
    EXPECT_FALSE(oResult.bDone);
    EXPECT_EQ(EIO, oResult.nError);
}

TEST(KorRunProgram, TellsASignalAsTheShellDoes)
{
    const Result oResult = Complete({"sh", "-c", "echo out; kill -9 $$"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(128 + SIGKILL, oResult.nStatus);
    EXPECT_EQ("out\n", oResult.strOutput);
}

TEST(KorRunProgram, TellsWhyAProgramCannotBeStarted)
{
    const Result oResult = Complete({"/no/such/program"});
    EXPECT_FALSE(oResult.bDone);
    EXPECT_EQ(ENOENT, oResult.nError);
    EXPECT_EQ(-1, oResult.nStatus);
    EXPECT_EQ("", oResult.strOutput);
    EXPECT_EQ(EINVAL, Complete({}).nError);
}

TEST(KorRunProgram, KillsAProgramThatTakesTooLongAndKeepsItsOutput)
{
    unsigned int nTimeout = 100;
    Result oResult;
    do {
        nTimeout *= 2; // until there is time for the program to begin
        oResult = Complete({"sh", "-c", "trap '' TERM; echo begun; exec sleep 1000"}, nTimeout);
    } while (oResult.strOutput.empty() && nTimeout < PATIENCE_MS);
    EXPECT_FALSE(oResult.bDone);
    EXPECT_EQ(ETIMEDOUT, oResult.nError);
    EXPECT_EQ(-1, oResult.nStatus);
    EXPECT_EQ("begun\n", oResult.strOutput);
    EXPECT_EQ(ETIMEDOUT, Complete({"sleep", "1000"}, 0).nError);
}

TEST(KorRunProgram, GivesNoInputWithoutAnInput)
{
    EXPECT_EQ("/dev/null\n", Complete({"sh", "-c", "cat; readlink /proc/$$/fd/0"}).strOutput);
    EXPECT_EQ("0\n", CompleteWith("", {"wc", "-c"}).strOutput);
}

TEST(KorRunProgram, LeavesStandardErrorToTheParent)
{
    ChildProcess oAlone([] {
        return Complete({"sh", "-c", "echo oops >&2"}).strOutput.empty() ? 0 : 1;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
    EXPECT_EQ("oops\n", oAlone.Wait().strErr);
}

TEST(KorRunProgram, PassesAMebibyteThroughInputAndOutputAtOnce)
{
    std::string strInput;
    for (unsigned int nByte = 0; strInput.size() < 1 << 20; ++nByte)
        strInput += static_cast<char>(nByte * nByte >> 3);
    const Result oResult = CompleteWith(strInput, {"cat"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(0, oResult.nStatus);
    EXPECT_TRUE(strInput == oResult.strOutput);
}

TEST(KorRunProgram, AProgramThatDoesNotReadItsInputIsNoFailure)
{
    const std::string strInput(1 << 20, 'x');
    const Result oResult =
        CompleteWith(strInput, {"sh", "-c", "exec 0<&-; echo done; sleep 0.1; exit 4"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(4, oResult.nStatus);
    EXPECT_EQ("done\n", oResult.strOutput);
    sigset_t oPending;
    EXPECT_EQ(0, sigpending(&oPending));
    EXPECT_EQ(0, sigismember(&oPending, SIGPIPE));
    EXPECT_EQ(5, CompleteWith(strInput, {"sh", "-c", "exit 5"}).nStatus);
}

TEST(KorRunProgram, DoesNotWaitForAGrandchildThatHoldsThePipe)
{
    const Result oResult = Complete({"sh", "-c", "(sleep 1000 & echo $!) ; echo end; exit 2"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(2, oResult.nStatus);
    EXPECT_NE(std::string::npos, oResult.strOutput.find("\nend\n"));
    kill(std::atoi(oResult.strOutput.c_str()), SIGKILL);
}

TEST(KorRunProgram, ReturnsThoughAGrandchildNeverStopsWriting)
{
    const Result oResult = Complete({"sh", "-c", "yes & exec 1>&-; kill -9 $$"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(128 + SIGKILL, oResult.nStatus);
}

TEST(KorRunProgram, WaitsForAProgramThatClosesItsOutput)
{
    const Result oResult = Complete({"sh", "-c", "echo out; exec 1>&-; sleep 0.1; exit 6"});
    EXPECT_TRUE(oResult.bDone);
    EXPECT_EQ(6, oResult.nStatus);
    EXPECT_EQ("out\n", oResult.strOutput);
}

TEST(KorRunProgram, LosesNothingOfALastLargeOutput)
{
    const Result oResult = Complete({"sh", "-c", "head -c 60000 /dev/zero"});
    EXPECT_EQ(60000u, oResult.strOutput.size());
}

} // namespace
