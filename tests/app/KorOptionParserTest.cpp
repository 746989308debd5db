#include "app/KorOptionParser.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

using P = CKorOptionParser;
using Texts = std::vector<std::string>;

const CKorApplicationInfo INFO("gw", "2.5.7", "Example Ltd", "Meter gateway", "gw.example",
                               nullptr);

/// A parser with one of everything.
class KorOptionParser : public testing::Test
{
protected:
    KorOptionParser()
    {
        m_oParser.AddFlag("v,verbose", m_bVerbose, "tell more");
        m_oParser.AddFlag("q", m_bQuiet, "tell less");
        m_oParser.AddOption("c,config", "FILE", m_strConfig, "read settings from FILE");
        m_oParser.AddOption("n,number", "N", m_nNumber, "do it N times");
        m_oParser.AddOption("D,define", "NAME", m_vecDefines, "define NAME");
        m_oParser.AddArgument("DEVICE", m_strDevice, "the line to open", false);
        m_oParser.AddArgument("REST", m_vecRest, "more of it", false);
    }

    P::EResult Parse(const Texts& vecArguments, P& roParser)
    {
        std::vector<const char*> vecPointers{"/usr/bin/gw.bin"};
        for (const std::string& strArgument : vecArguments)
            vecPointers.push_back(strArgument.c_str());
        return roParser.Parse(static_cast<int>(vecPointers.size()), vecPointers.data());
    }
    P::EResult Parse(const Texts& vecArguments) { return Parse(vecArguments, m_oParser); }
    /// The message about wrong usage.
    std::string Refusal(const Texts& vecArguments)
    {
        EXPECT_EQ(P::PARSE_WRONG, Parse(vecArguments));
        return m_oParser.GetText();
    }

    P m_oParser{INFO};
    bool m_bVerbose = false;
    bool m_bQuiet = false;
    std::string m_strConfig = "default";
    int m_nNumber = 7;
    Texts m_vecDefines{"preset"};
    std::string m_strDevice;
    Texts m_vecRest;
};

TEST_F(KorOptionParser, NothingGivenLeavesEverything)
{
    EXPECT_EQ(P::PARSE_OK, Parse({}));
    EXPECT_EQ("", m_oParser.GetText());
    EXPECT_FALSE(m_bVerbose);
    EXPECT_EQ("default", m_strConfig);
    EXPECT_EQ(7, m_nNumber);
    EXPECT_EQ(Texts{"preset"}, m_vecDefines);
    EXPECT_EQ(P::PARSE_OK, m_oParser.Parse(0, nullptr));
}

TEST_F(KorOptionParser, ShortFlagsStandAloneTogetherAndSeveralTimes)
{
    EXPECT_EQ(P::PARSE_OK, Parse({"-v"}));
    EXPECT_TRUE(m_bVerbose);
    EXPECT_FALSE(m_bQuiet);
    m_bVerbose = false;
    EXPECT_EQ(P::PARSE_OK, Parse({"-vq"}));
    EXPECT_TRUE(m_bVerbose && m_bQuiet);
    EXPECT_EQ(P::PARSE_OK, Parse({"-vv", "-v", "--verbose", "--verbose"}));
}

TEST_F(KorOptionParser, AnOptionTakesItsValueInFourWays)
{
    for (const Texts& vecLine : {Texts{"-c", "a b"},
                                 {"-ca b"},
                                 {"--config", "a b"},
                                 {"--config=a b"},
                                 {"-vca b"},
                                 {"-qvc", "a b"}}) {
        m_strConfig = "default";
        EXPECT_EQ(P::PARSE_OK, Parse(vecLine)) << vecLine[0];
        EXPECT_EQ("a b", m_strConfig) << vecLine[0];
    }
    EXPECT_EQ(P::PARSE_OK, Parse({"--config="}));
    EXPECT_EQ("", m_strConfig);
    EXPECT_EQ(P::PARSE_OK, Parse({"--config", ""}));
    EXPECT_EQ(P::PARSE_OK, Parse({"--config=x=y"}));
    EXPECT_EQ("x=y", m_strConfig);
}

TEST_F(KorOptionParser, TheArgumentBehindAnOptionIsItsValueWhateverItBeginsWith)
{
    for (const char* pszValue : {"-v", "--verbose", "--", "-", "--help"}) {
        EXPECT_EQ(P::PARSE_OK, Parse({"-c", pszValue})) << pszValue;
        EXPECT_EQ(pszValue, m_strConfig);
    }
    EXPECT_FALSE(m_bVerbose);
    EXPECT_EQ(P::PARSE_OK, Parse({"-n", "-5"}));
    EXPECT_EQ(-5, m_nNumber);
}

TEST_F(KorOptionParser, OptionsMayStandBehindArguments)
{
    EXPECT_EQ(P::PARSE_OK, Parse({"/dev/x", "-v", "one", "--config", "f", "two"}));
    EXPECT_EQ("/dev/x", m_strDevice);
    EXPECT_TRUE(m_bVerbose);
    EXPECT_EQ("f", m_strConfig);
    EXPECT_EQ((Texts{"one", "two"}), m_vecRest);
}

TEST_F(KorOptionParser, BehindTwoDashesAllAreArguments)
{
    EXPECT_EQ(P::PARSE_OK, Parse({"-v", "--", "-q", "--config", "--"}));
    EXPECT_EQ("-q", m_strDevice);
    EXPECT_EQ((Texts{"--config", "--"}), m_vecRest);
    EXPECT_FALSE(m_bQuiet);
    EXPECT_EQ(P::PARSE_OK, Parse({"-q"})); // not for ever
    EXPECT_TRUE(m_bQuiet);
}

TEST_F(KorOptionParser, ADashAndAnEmptyTextAreArguments)
{
    EXPECT_EQ(P::PARSE_OK, Parse({"-", ""}));
    EXPECT_EQ("-", m_strDevice);
    EXPECT_EQ(Texts{""}, m_vecRest);
}

TEST_F(KorOptionParser, ANegativeNumberIsAnArgumentWhereItIsNoOption)
{
    double nNumber = 0;
    P oParser(INFO);
    oParser.AddArgument("NUMBER", nNumber, "any");
    for (const char* pszNumber : {"-5", "-1.5", "-.5", "-1e3"}) {
        EXPECT_EQ(P::PARSE_OK, Parse({pszNumber}, oParser)) << pszNumber;
        EXPECT_EQ(std::stod(pszNumber), nNumber);
    }
    EXPECT_EQ(P::PARSE_WRONG, Parse({"-5x"}, oParser));
    EXPECT_EQ("gw: unknown option '-5' (try --help)\n", oParser.GetText());

    bool bFive = false;
    oParser.AddFlag("5", bFive, "five");
    EXPECT_EQ(P::PARSE_OK, Parse({"-5", "7"}, oParser));
    EXPECT_TRUE(bFive);
    EXPECT_EQ(7.0, nNumber);
}

TEST_F(KorOptionParser, AVectorTakesEachTimeAndItsPresetMakesRoom)
{
    EXPECT_EQ(P::PARSE_OK, Parse({"-D", "a", "-Db,c", "--define=d"}));
    EXPECT_EQ((Texts{"a", "b,c", "d"}), m_vecDefines);
    EXPECT_EQ(P::PARSE_OK, Parse({"-D", "e"}));
    EXPECT_EQ(Texts{"e"}, m_vecDefines);
}

TEST_F(KorOptionParser, WrongUsageIsNamedWithItsText)
{
    EXPECT_EQ("gw: unknown option '-x' (try --help)\n", Refusal({"-x"}));
    EXPECT_EQ("gw: unknown option '-x' (try --help)\n", Refusal({"-vx"}));
    EXPECT_EQ("gw: unknown option '--nothing' (try --help)\n", Refusal({"--nothing=1"}));
    EXPECT_EQ("gw: unknown option '--v' (try --help)\n", Refusal({"--v"}));
    EXPECT_EQ("gw: unknown option '--' (try --help)\n", Refusal({"--=x"}));
    EXPECT_EQ("gw: option '-c' needs a value (try --help)\n", Refusal({"-c"}));
    EXPECT_EQ("gw: option '--config' needs a value (try --help)\n", Refusal({"x", "--config"}));
    EXPECT_EQ("gw: option '--config' is given twice (try --help)\n",
              Refusal({"-c", "a", "--config", "b"}));
    EXPECT_EQ("gw: option '--verbose' takes no value (try --help)\n", Refusal({"--verbose=1"}));
    EXPECT_EQ("gw: option '-n' cannot be '5x' (try --help)\n", Refusal({"-n5x"}));
    EXPECT_EQ("gw: option '--help' takes no value (try --help)\n", Refusal({"--help=x"}));
}

TEST_F(KorOptionParser, ArgumentsMayBeMissingMalformedOrTooMany)
{
    int nCount = 0;
    std::vector<int> vecNumbers;
    P oParser(INFO);
    oParser.AddArgument("COUNT", nCount, "how many");
    EXPECT_EQ(P::PARSE_WRONG, Parse({}, oParser));
    EXPECT_EQ("gw: argument 'COUNT' is missing (try --help)\n", oParser.GetText());
    EXPECT_EQ(P::PARSE_WRONG, Parse({"many"}, oParser));
    EXPECT_EQ("gw: argument 'COUNT' cannot be 'many' (try --help)\n", oParser.GetText());
    EXPECT_EQ(P::PARSE_WRONG, Parse({"1", "2"}, oParser));
    EXPECT_EQ("gw: unexpected argument '2' (try --help)\n", oParser.GetText());
    oParser.AddArgument("NUMBER", vecNumbers, "numbers");
    EXPECT_EQ(P::PARSE_WRONG, Parse({"1"}, oParser));
    EXPECT_EQ("gw: argument 'NUMBER' is missing (try --help)\n", oParser.GetText());
    EXPECT_EQ(P::PARSE_OK, Parse({"1", "2", "3"}, oParser));
    EXPECT_EQ((std::vector<int>{2, 3}), vecNumbers);
}

TEST_F(KorOptionParser, HelpAndVersionAreAnsweredAtOnce)
{
    EXPECT_EQ(P::PARSE_DONE, Parse({"--version", "--nothing"}));
    EXPECT_EQ("Meter gateway, Version 2.5.7\nCopyright (C) Example Ltd (gw.example)\n",
              m_oParser.GetText());
    for (const char* pszHelp : {"-h", "--help", "-vh"}) {
        EXPECT_EQ(P::PARSE_DONE, Parse({pszHelp, "--nothing"}));
        EXPECT_EQ("Usage: gw ", m_oParser.GetText().substr(0, 10));
    }
    EXPECT_EQ(P::PARSE_WRONG, Parse({"--nothing", "--help"}));
}

TEST_F(KorOptionParser, AProgramsOwnNamesWin)
{
    std::string strHost;
    bool bVersion = false;
    P oParser(INFO);
    oParser.AddOption("h,host", "HOST", strHost, "the host");
    EXPECT_EQ(P::PARSE_OK, Parse({"-h", "server"}, oParser));
    EXPECT_EQ("server", strHost);
    EXPECT_EQ(P::PARSE_DONE, Parse({"--help"}, oParser));
    EXPECT_NE(std::string::npos, oParser.GetText().find("  -h, --host=HOST"));
    EXPECT_EQ(std::string::npos, oParser.GetText().find("-h, --help"));
    oParser.AddFlag("version", bVersion, "own");
    EXPECT_EQ(P::PARSE_OK, Parse({"--version"}, oParser));
    EXPECT_TRUE(bVersion);
}

TEST_F(KorOptionParser, TheHelpTellsEverything)
{
    EXPECT_EQ(P::PARSE_DONE, Parse({"--help"}));
    EXPECT_EQ("Usage: gw [OPTION...] [DEVICE] [REST...]\n"
              "Meter gateway\n"
              "\n"
              "Arguments:\n"
              "  DEVICE  the line to open\n"
              "  REST    more of it\n"
              "\n"
              "Options:\n"
              "  -v, --verbose      tell more\n"
              "  -q                 tell less\n"
              "  -c, --config=FILE  read settings from FILE\n"
              "  -n, --number=N     do it N times\n"
              "  -D, --define=NAME  define NAME\n"
              "  -h, --help         show this help\n"
              "      --version      show the version\n",
              m_oParser.GetText());
}

TEST_F(KorOptionParser, TheHelpTellsWhichArgumentsAreNeeded)
{
    int nCount = 0;
    std::vector<int> vecNumbers;
    P oParser(INFO);
    oParser.AddArgument("COUNT", nCount, "how many");
    oParser.AddArgument("NUMBER", vecNumbers, "numbers");
    EXPECT_EQ(P::PARSE_DONE, Parse({"--help"}, oParser));
    EXPECT_EQ(0U, oParser.GetText().find("Usage: gw [OPTION...] COUNT NUMBER...\n"))
        << oParser.GetText();
}

TEST_F(KorOptionParser, ALongNameHasALineOfItsOwn)
{
    P oParser(INFO);
    oParser.AddFlag("a-flag-whose-name-needs-a-whole-line", m_bVerbose, "and its text");
    oParser.AddFlag("another-flag-whose-name-needs-a-line", m_bQuiet, "");
    EXPECT_EQ(P::PARSE_DONE, Parse({"--help"}, oParser));
    EXPECT_EQ("Usage: gw [OPTION...]\n"
              "Meter gateway\n"
              "\n"
              "Options:\n"
              "  --a-flag-whose-name-needs-a-whole-line\n"
              "                                and its text\n"
              "  --another-flag-whose-name-needs-a-line\n"
              "  -h, --help                    show this help\n"
              "      --version                 show the version\n",
              oParser.GetText());
}

/// The help of a parser with long names and texts, as a program prints it on a terminal.
std::string HelpOnATerminalOf(unsigned short nColumns)
{
    const PseudoTerminal oTerminal;
    const winsize oSize = {24, nColumns, 0, 0};
    EXPECT_EQ(0, ioctl(oTerminal.FarEnd(), TIOCSWINSZ, &oSize));
    ChildProcess oChild([&oTerminal] {
        const int hOutput = dup(STDOUT_FILENO);
        const int hTerminal = open(oTerminal.Name(), O_RDWR | O_NOCTTY);
        dup2(hTerminal, STDOUT_FILENO);
        bool bFlag = false;
        std::string strValue;
        CKorOptionParser oParser(INFO);
        oParser.AddFlag(
            "a-flag-with-a-name-that-needs-a-line-of-its-own", bFlag,
            "and a text that is so long that no terminal shows it in one line, nor "
            "awordwithoutanyblankinitthatislongerthananylineofanyterminalthatcountsxxxx");
        oParser.AddArgument("\xC3\x84RGUMENT", strValue, "na\xC3\xAFve");
        const char* const apszLine[] = {"gw", "--help"};
        oParser.Parse(2, apszLine);
        const std::string strHelp = oParser.GetText();
        return write(hOutput, strHelp.data(), strHelp.size()) == -1 ? 1 : 0;
    });
    return oChild.Wait().strOut;
}

size_t LongestLine(const std::string& strText)
{
    std::istringstream oText(strText);
    size_t nLongest = 0;
    for (std::string strLine; std::getline(oText, strLine);) {
        size_t nColumns = 0;
        for (const char c : strLine)
            nColumns += (c & 0xC0) != 0x80 ? 1 : 0;
        nLongest = std::max(nLongest, nColumns);
        EXPECT_TRUE(strLine.empty() || strLine.back() != ' ') << strLine;
    }
    return nLongest;
}

TEST(KorOptionHelp, FitsTheTerminalAndEightyColumns)
{
    EXPECT_EQ(40U, LongestLine(HelpOnATerminalOf(40)));
    EXPECT_LE(LongestLine(HelpOnATerminalOf(20)), 20U);
    EXPECT_EQ(80U, LongestLine(HelpOnATerminalOf(200)));
    EXPECT_EQ(80U, LongestLine(HelpOnATerminalOf(0)));
    EXPECT_EQ(HelpOnATerminalOf(200), HelpOnATerminalOf(80));
    EXPECT_LE(LongestLine(HelpOnATerminalOf(1)), 20U);
}

TEST(KorOptionHelp, LosesNoWord)
{
    std::string strWide = HelpOnATerminalOf(80);
    std::string strNarrow = HelpOnATerminalOf(25);
    for (std::string* pstrText : {&strWide, &strNarrow})
        pstrText->erase(std::remove_if(pstrText->begin(), pstrText->end(),
                                       [](char c) { return c == ' ' || c == '\n'; }),
                        pstrText->end());
    EXPECT_EQ(strWide, strNarrow);
}

TEST(KorOptionParserNames, AProgramWithoutANameIsCalledAsItsFile)
{
    P oParser(CKorApplicationInfo("", "1.0.0", "", nullptr, "", nullptr));
    const char* const apszLine[] = {"/usr/bin/some.tool", "-x"};
    EXPECT_EQ(P::PARSE_WRONG, oParser.Parse(2, apszLine));
    EXPECT_EQ("some.tool: unknown option '-x' (try --help)\n", oParser.GetText());
}

TEST(KorOptionParserNames, NullTextsAreEmptyOnes)
{
    bool bFlag = false;
    P oParser(INFO);
    EXPECT_TRUE(oParser.IsEmpty());
    oParser.AddFlag(nullptr, bFlag, nullptr);
    EXPECT_FALSE(oParser.IsEmpty());
    const char* const apszLine[] = {"gw", nullptr};
    EXPECT_EQ(P::PARSE_WRONG, oParser.Parse(2, apszLine));
    EXPECT_EQ("gw: unexpected argument '' (try --help)\n", oParser.GetText());
    EXPECT_FALSE(bFlag);
}

} // namespace
