#include "app/KorDaemonApplication.h"

#include "tests/support/Arguments.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

void Print(const std::string& strText)
{
    if (write(STDOUT_FILENO, strText.data(), strText.size()) == -1)
        _exit(99);
}

/// Prints what is called.
class Daemon : public CKorDaemonApplication
{
public:
    Daemon() : CKorDaemonApplication(nullptr, nullptr, nullptr) {}

    void DoCmdLineExchange(CKorCmdLineApplExchange* pExchange) override
    {
        if (pExchange->IsInitialized())
            Print("exchange ");
    }
    bool Initialize() override
    {
        Print("initialize ");
        RequestEnd();
        return true;
    }
    int Finalize() override
    {
        Print("finalize ");
        return CKorDaemonApplication::Finalize();
    }
};

class DeclaringDaemon : public Daemon
{
public:
    void DeclareOptions(CKorOptionParser& rParser) override
    {
        rParser.AddOption("n,number", "N", m_nNumber, "a number");
    }
    bool Initialize() override
    {
        Print("number " + std::to_string(m_nNumber) + " ");
        return Daemon::Initialize();
    }

private:
    int m_nNumber = 7;
};

template <typename TDaemon>
ChildResult ResultOf(const char* pszFirst, const char* pszSecond = nullptr)
{
    ChildProcess oChild([=] {
        Arguments oArguments{"/usr/bin/gw.bin", pszFirst, pszSecond != nullptr ? pszSecond : "-n5"};
        return TDaemon().Start(pszSecond != nullptr ? 3 : 2, oArguments.Vector());
    });
    return oChild.Wait();
}

TEST(KorDaemonOptions, AreReadBeforeInitialize)
{
    const ChildResult oResult = ResultOf<DeclaringDaemon>("-n", "5");
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("exchange number 5 initialize finalize ", oResult.strOut);
}

TEST(KorDaemonOptions, HelpAndVersionEndWithZero)
{
    ChildResult oResult = ResultOf<DeclaringDaemon>("--help");
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("Usage: gw [OPTION...]\n\nOptions:\n", oResult.strOut.substr(0, 32));
    EXPECT_EQ("", oResult.strErr);
    oResult = ResultOf<DeclaringDaemon>("--version");
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strOut.find(", Version 0.0.0\n"));
    EXPECT_EQ(std::string::npos, oResult.strOut.find("initialize"));
}

TEST(KorDaemonOptions, WrongUsageEndsWithTwoAndAMessage)
{
    const ChildResult oResult = ResultOf<DeclaringDaemon>("-n", "many");
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut);
    EXPECT_EQ("gw: option '-n' cannot be 'many' (try --help)\n", oResult.strErr);
}

TEST(KorDaemonOptions, WithoutAnyTheCommandLineIsTheExchangesAlone)
{
    const ChildResult oResult = ResultOf<Daemon>("--help");
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("exchange initialize finalize ", oResult.strOut);
    EXPECT_EQ("", oResult.strErr);
}

} // namespace
