/// @file
/// Looks into a gateway that runs, and has it do something.

#include "app/KorApplicationInfo.h"
#include "app/KorOptionParser.h"
#include "examples/gatewayctl/ControlConnection.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

constexpr int EXIT_WRONG_USAGE = 2;
constexpr int EXIT_NO_GATEWAY = 3;
constexpr char ABOUT[] =
    "Looks into a gateway that runs. Commands: status (process, broker, lines), meters (statistics "
    "and readings), poll NAME (polls a meter now), reload (reads the settings again), check (says "
    "what is wrong with the settings file), watch (meters again and again). Exit status: 0 all is "
    "well; 1 no reading, or findings; 2 wrong usage; 3 no gateway answers.";

struct Options
{
    std::string strSocket = "gateway.sock";
    bool bJson = false;
    double dInterval = 1;
    unsigned int nCount = 0;
    std::string strCommand;
    std::string strMeter;
};

int Refuse(const std::string& strReason)
{
    std::fprintf(stderr, "gatewayctl: %s (try --help)\n", strReason.c_str());
    return EXIT_WRONG_USAGE;
}

/// What is wrong with the command; empty when nothing is.
std::string WhatIsWrong(const Options& oOptions)
{
    static const char* const COMMANDS[] = {"status", "meters", "poll", "reload", "check", "watch"};
    if (std::none_of(std::begin(COMMANDS), std::end(COMMANDS),
                     [&](const char* pszCommand) { return oOptions.strCommand == pszCommand; }))
        return "there is no command '" + oOptions.strCommand + "'";
    if (oOptions.strCommand == "poll" && oOptions.strMeter.empty())
        return "poll needs the name of a meter";
    if (oOptions.strCommand != "poll" && !oOptions.strMeter.empty())
        return oOptions.strCommand + " takes no further argument";
    if (!(oOptions.dInterval >= 0.1 && oOptions.dInterval <= 3600))
        return "--interval is not in 0.1 to 3600";
    return {};
}

int Complain(const Options& oOptions)
{
    std::fprintf(stderr, "gatewayctl: no gateway answers at %s: %s\n", oOptions.strSocket.c_str(),
                 std::strerror(errno));
    return EXIT_NO_GATEWAY;
}

/// Answers that are no good news in text go to standard error.
int Run(const Options& oOptions)
{
    const std::string strRequest = std::string(oOptions.bJson ? "json " : "text ") +
                                   oOptions.strCommand +
                                   (oOptions.strMeter.empty() ? "" : " " + oOptions.strMeter);
    ControlConnection oConnection;
    ControlAnswer oAnswer;
    if (!oConnection.Ask(oOptions.strSocket, strRequest, oAnswer))
        return Complain(oOptions);
    std::fputs(oAnswer.strText.c_str(), oAnswer.nStatus == 0 || oOptions.bJson ? stdout : stderr);
    return std::fflush(stdout) == 0 ? oAnswer.nStatus : EXIT_NO_GATEWAY;
}

/// The lines as a screen holds them: cut to its width, no more than fit.
std::string Fitting(const std::string& strText)
{
    winsize oSize = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &oSize) != 0 || oSize.ws_col == 0)
        return strText;
    std::string strFitting = "\033[H\033[2J";
    std::size_t nBegin = 0;
    for (int nRow = 1; nRow < oSize.ws_row && nBegin < strText.size(); ++nRow) {
        const std::size_t nEnd = std::min(strText.find('\n', nBegin), strText.size());
        std::size_t nWidth = 0;
        for (std::size_t i = nBegin; i < nEnd; ++i) {
            nWidth += (static_cast<unsigned char>(strText[i]) & 0xC0) != 0x80;
            if (nWidth <= oSize.ws_col)
                strFitting += strText[i];
        }
        strFitting += '\n';
        nBegin = nEnd + 1;
    }
    return strFitting;
}

/// Shows the meters until somebody ends it; a gateway that is away may come back.
int Watch(const Options& oOptions)
{
    ControlConnection oConnection;
    int nStatus = 0;
    for (unsigned int nTurn = 1;; ++nTurn) {
        ControlAnswer oAnswer;
        if (oConnection.Ask(oOptions.strSocket, oOptions.bJson ? "json meters" : "text meters",
                            oAnswer)) {
            std::fputs(oOptions.bJson ? oAnswer.strText.c_str() : Fitting(oAnswer.strText).c_str(),
                       stdout);
            nStatus = oAnswer.nStatus;
        } else {
            nStatus = Complain(oOptions);
        }
        if (std::fflush(stdout) != 0 || nTurn == oOptions.nCount)
            return nStatus;
        usleep(static_cast<useconds_t>(oOptions.dInterval * 1e6));
    }
}

} // namespace

int main(int argc, char** argv)
{
    const CKorApplicationInfo oInfo("gatewayctl", TARVO_VERSION, "Quentor GmbH", ABOUT,
                                    "www.quentor.example", nullptr);
    Options oOptions;
    CKorOptionParser oParser(oInfo);
    oParser.AddOption("s,socket", "PATH", oOptions.strSocket,
                      "the gateway's [Process] ControlSocket (gateway.sock)");
    oParser.AddFlag("json", oOptions.bJson, "answer for programs");
    oParser.AddOption("n,interval", "SECONDS", oOptions.dInterval, "of watch (1)");
    oParser.AddOption("count", "N", oOptions.nCount, "of watch: end after so many turns");
    oParser.AddArgument("COMMAND", oOptions.strCommand, "see above");
    oParser.AddArgument("NAME", oOptions.strMeter, "the meter to poll", false);
    const CKorOptionParser::EResult eResult = oParser.Parse(argc, argv);
    if (eResult != CKorOptionParser::PARSE_OK) {
        const bool bDone = eResult == CKorOptionParser::PARSE_DONE;
        std::fputs(oParser.GetText().c_str(), bDone ? stdout : stderr);
        return bDone ? 0 : EXIT_WRONG_USAGE;
    }
    const std::string strWrong = WhatIsWrong(oOptions);
    if (!strWrong.empty())
        return Refuse(strWrong);
    return oOptions.strCommand == "watch" ? Watch(oOptions) : Run(oOptions);
}
