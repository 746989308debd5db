// Reads, edits, checks and compares INI files from the shell.
//
// Shows CKorOptionParser with commands that have operands.

#include "IniCommands.h"
#include "app/KorOptionParser.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>

namespace
{

constexpr char USAGE[] =
    "Usage: inictl.bin [-c] get FILE SECTION OPTION\n"
    "       inictl.bin [-c] set FILE SECTION OPTION VALUE [SECTION OPTION VALUE]...\n"
    "       inictl.bin [-c] remove FILE SECTION OPTION\n"
    "       inictl.bin [-c] sections FILE\n"
    "       inictl.bin [-c] options FILE SECTION\n"
    "       inictl.bin [-c] list [--json] FILE\n"
    "       inictl.bin [-c] check FILE\n"
    "       inictl.bin [-c] diff FILE FILE\n"
    "       inictl.bin -h | --help | --version\n"
    "\n"
    "  get       prints the value of an option, without enclosing quotes\n"
    "  set       sets options, all in one write or none; creates what is missing\n"
    "  remove    removes every line of an option\n"
    "  sections  lists the sections, sorted\n"
    "  options   lists the options of a section, sorted\n"
    "  list      prints all that the file means, in its order; --json as a JSON object\n"
    "  check     names the lines that may not do what they seem to\n"
    "  diff      prints in what the files differ for a program that reads them\n"
    "  -c, --case-sensitive  names that differ in case are different names\n"
    "  --        ends the options; they end at the command, too\n"
    "\n"
    "The SECTION \"\" holds the lines before the first header.\n"
    "Exit status: 0 done, 1 no such section or option, findings, or a difference,\n"
    "2 wrong usage or file error.\n";

int WrongUsage(const std::string& strReason)
{
    return Fail(strReason + " (try --help)", STATUS_ERROR);
}

int Run(bool bCaseSensitive, const Words& vecWords)
{
    if (vecWords.empty())
        return WrongUsage("no command");
    const std::string& strName = vecWords[0];
    const Words vecOperands(vecWords.begin() + 1, vecWords.end());
    const SCommand* const pCommand = FindCommand(strName);
    if (pCommand == nullptr)
        return WrongUsage("unknown command '" + strName + "'");
    if (!pCommand->Takes(vecOperands.size()))
        return WrongUsage(strName + " takes " + pCommand->pszOperands);
    const bool bNamesOption = vecOperands.size() > 2;
    if (pCommand->nLeast > 0 &&
        (vecOperands[0].empty() || (bNamesOption && vecOperands[2].empty())))
        return WrongUsage("FILE and OPTION must not be empty");
    return pCommand->pfnRun(bCaseSensitive, vecOperands);
}

/// The place of the command, before which all words are options; what stands behind it may begin
/// with "-" and be none.
int CommandPlace(int argc, char** argv)
{
    int nCommand = 1;
    while (nCommand < argc && argv[nCommand][0] == '-' && argv[nCommand][1] != '\0') {
        if (std::strcmp(argv[nCommand++], "--") == 0)
            break;
    }
    return nCommand;
}

int Main(int argc, char** argv)
{
    bool bCaseSensitive = false;
    CKorOptionParser oParser(Identity("inictl"));
    oParser.AddFlag("c,case-sensitive", bCaseSensitive, "");
    const int nCommand = std::min(CommandPlace(argc, argv), argc);
    const CKorOptionParser::EResult eResult = oParser.Parse(nCommand, argv);
    if (eResult == CKorOptionParser::PARSE_OK)
        return Run(bCaseSensitive, Words(argv + nCommand, argv + argc));
    const std::string strText = oParser.GetText();
    // The parser's own help knows no commands.
    const bool bHelp = strText.compare(0, 6, "Usage:") == 0;
    (eResult == CKorOptionParser::PARSE_DONE ? std::cout : std::cerr) << (bHelp ? USAGE : strText);
    return eResult == CKorOptionParser::PARSE_DONE ? STATUS_DONE : STATUS_ERROR;
}

} // namespace

int main(int argc, char** argv)
{
    const int nStatus = Main(argc, argv);
    if (!std::cout.flush())
        return Fail(std::string("standard output: ") + std::strerror(errno), STATUS_ERROR);
    return nStatus;
}
