// Reads and edits INI files from the shell.
//
// Shows CKorCmdLine, and an INI document that is used line by line rather than through one
// exchange of all options.

#include "IniChecker.h"
#include "IniDocument.h"
#include "config/KorCmdLine.h"
#include "config/KorCmdLineExchange.h"
#include "config/KorIniFile.h"
#include "text/KorStringFunc.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr char USAGE[] =
    "usage: inictl.bin [-c] get FILE SECTION OPTION\n"
    "       inictl.bin [-c] set FILE SECTION OPTION VALUE\n"
    "       inictl.bin [-c] remove FILE SECTION OPTION\n"
    "       inictl.bin [-c] sections FILE\n"
    "       inictl.bin [-c] options FILE SECTION\n"
    "       inictl.bin [-c] check FILE\n"
    "       inictl.bin -h | --help | --version\n"
    "\n"
    "  get       prints the value of an option, without enclosing quotes\n"
    "  set       sets an option; creates file, section and option where they are missing\n"
    "  remove    removes an option\n"
    "  sections  lists the sections\n"
    "  options   lists the options of a section\n"
    "  check     tells, line by line, what becomes of odd lines when the file is read\n"
    "  -c        names that differ in case are different names\n"
    "  --        ends the options\n"
    "\n"
    "The SECTION \"\" holds the lines before the first header.\n"
    "Exit status: 0 done, 1 no such section or option, or odd lines, 2 wrong usage or file "
    "error.\n";

enum EExitStatus
{
    STATUS_DONE = 0,
    STATUS_NOT_FOUND = 1,
    STATUS_ODD_LINES = 1,
    STATUS_ERROR = 2
};

using Words = std::vector<std::string>;

/// The command line: options, then a command with its operands, which may begin with "-".
class CInictlCmdLine : public CKorCmdLine
{
public:
    using CKorCmdLine::CKorCmdLine;
    using CKorCmdLine::DoOptionExchange;

    void DoOptionExchange(CKorCmdLineExchange* pExchange) override
    {
        // No option is declared, so that all arguments come back in their order.
        if (!pExchange->IsInitialized())
            return;
        std::string strWord;
        pExchange->GetParameter(nullptr, false, strWord);
        while (pExchange->GetParameter(nullptr, false, strWord)) {
            if (m_bOptionsEnded || !m_vecWords.empty() || !TakeOption(strWord))
                m_vecWords.push_back(strWord);
        }
    }

    bool TakeOption(const std::string& strWord)
    {
        const bool bHelp = strWord == "-h" || strWord == "--help" || strWord == "-help";
        m_bCaseSensitive |= strWord == "-c";
        m_bHelp |= bHelp;
        m_bVersion |= strWord == "--version";
        m_bOptionsEnded = strWord == "--";
        return strWord == "-c" || bHelp || strWord == "--version" || m_bOptionsEnded;
    }

    bool m_bCaseSensitive = false;
    bool m_bHelp = false;
    bool m_bVersion = false;
    bool m_bOptionsEnded = false;
    Words m_vecWords;
};

int Fail(const std::string& strReason, EExitStatus nStatus)
{
    std::cout.flush();
    std::cerr << "inictl: " << strReason << '\n';
    return nStatus;
}

int WrongUsage(const std::string& strReason)
{
    return Fail(strReason + "; see inictl.bin --help", STATUS_ERROR);
}

/// Tries to open the file and tells why it cannot be opened, which the library itself does not.
bool CanOpen(const std::string& strFile, int nFlags)
{
    const int nFile = open(strFile.c_str(), nFlags | O_NONBLOCK | O_CLOEXEC, 0666);
    if (nFile == -1) {
        Fail(strFile + ": " + std::strerror(errno), STATUS_ERROR);
        return false;
    }
    struct stat oStatus = {};
    const bool bRegular = fstat(nFile, &oStatus) == 0 && S_ISREG(oStatus.st_mode);
    close(nFile);
    if (!bRegular)
        Fail(strFile + ": not a regular file", STATUS_ERROR);
    return bRegular;
}

int FailMissing(const Words& vecOperands)
{
    std::string strReason = vecOperands[0] + ": no section \"" + vecOperands[1] + "\"";
    if (vecOperands.size() > 2)
        strReason = vecOperands[0] + ": no option \"" + vecOperands[2] + "\" in section \"" +
                    vecOperands[1] + "\"";
    return Fail(strReason, STATUS_NOT_FOUND);
}

int Save(CIniDocument& oDocument, const std::string& strFile)
{
    return oDocument.Save() ? STATUS_DONE
                            : Fail(strFile + ": could not be written completely", STATUS_ERROR);
}

int Get(CKorIniFile& oFile, const Words& vecOperands)
{
    if (!CanOpen(vecOperands[0], O_RDONLY))
        return STATUS_ERROR;
    std::string strValue;
    if (!CIniDocument(oFile).GetOptionString(vecOperands[1].c_str(), vecOperands[2].c_str(),
                                             strValue))
        return FailMissing(vecOperands);
    KorDeQuoteString(strValue);
    std::cout << strValue << '\n';
    return STATUS_DONE;
}

int Set(CKorIniFile& oFile, const Words& vecOperands)
{
    std::string strValue = vecOperands[3];
    if (!CanStandInIniFile(vecOperands[1], vecOperands[2], strValue))
        return Fail("section, option or value would not read back the same: line feeds and \"#\" "
                    "cannot be stored, nor \"]\" in a section, nor \"=\", a leading \"[\" or white "
                    "space around it in an option, nor double quotes around a value",
                    STATUS_ERROR);
    if (!CanOpen(vecOperands[0], O_RDWR | O_CREAT))
        return STATUS_ERROR;
    CIniDocument oDocument(oFile);
    IOX_Std<std::string>(&oDocument, vecOperands[1].c_str(), vecOperands[2].c_str(), strValue, "");
    return Save(oDocument, vecOperands[0]);
}

int Remove(CKorIniFile& oFile, const Words& vecOperands)
{
    if (!CanOpen(vecOperands[0], O_RDWR))
        return STATUS_ERROR;
    CIniDocument oDocument(oFile);
    if (!oDocument.HasOption(vecOperands[1], vecOperands[2]))
        return FailMissing(vecOperands);
    oDocument.RemoveOption(vecOperands[1].c_str(), vecOperands[2].c_str());
    return Save(oDocument, vecOperands[0]);
}

void PrintLines(const std::vector<std::string>& vecLines)
{
    for (const std::string& strLine : vecLines)
        std::cout << strLine << '\n';
}

int ListSections(CKorIniFile& oFile, const Words& vecOperands)
{
    if (!CanOpen(vecOperands[0], O_RDONLY))
        return STATUS_ERROR;
    std::vector<std::string> vecSections;
    oFile.ReadAllSections(vecSections);
    PrintLines(vecSections);
    return STATUS_DONE;
}

int ListOptions(CKorIniFile& oFile, const Words& vecOperands)
{
    if (!CanOpen(vecOperands[0], O_RDONLY))
        return STATUS_ERROR;
    CIniDocument oDocument(oFile);
    if (!oDocument.HasSection(vecOperands[1]))
        return FailMissing(vecOperands);
    std::vector<std::string> vecOptions;
    oDocument.GetOptions(vecOperands[1].c_str(), vecOptions);
    PrintLines(vecOptions);
    return STATUS_DONE;
}

int Check(CKorIniFile& oFile, const Words& vecOperands)
{
    if (!CanOpen(vecOperands[0], O_RDONLY))
        return STATUS_ERROR;
    CIniChecker oChecker(oFile.IsCaseSensitiv());
    std::istringstream oContent(FileContent(vecOperands[0]));
    std::string strLine;
    int nStatus = STATUS_DONE;
    for (size_t nLine = 1; std::getline(oContent, strLine); ++nLine) {
        for (const std::string& strRemark : oChecker.CheckLine(strLine)) {
            std::cout << vecOperands[0] << ':' << nLine << ": " << strRemark << '\n';
            nStatus = STATUS_ODD_LINES;
        }
    }
    return nStatus;
}

struct SCommand
{
    const char* pszName;
    size_t nOperands; ///< the file, the section, the option, the value: as many of them
    int (*pfnRun)(CKorIniFile& oFile, const Words& vecOperands);
};

constexpr SCommand COMMANDS[] = {{"get", 3, Get},
                                 {"set", 4, Set},
                                 {"remove", 3, Remove},
                                 {"sections", 1, ListSections},
                                 {"options", 2, ListOptions},
                                 {"check", 1, Check}};

int Run(const CInictlCmdLine& oCmdLine)
{
    if (oCmdLine.m_vecWords.empty())
        return WrongUsage("no command");
    const std::string& strName = oCmdLine.m_vecWords[0];
    const Words vecOperands(oCmdLine.m_vecWords.begin() + 1, oCmdLine.m_vecWords.end());
    const SCommand* const pCommand =
        std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                     [&](const SCommand& oCommand) { return strName == oCommand.pszName; });
    if (pCommand == std::end(COMMANDS)) {
        const bool bOption = !oCmdLine.m_bOptionsEnded && strName.compare(0, 1, "-") == 0;
        return WrongUsage((bOption ? "unknown option " : "unknown command ") + strName);
    }
    if (vecOperands.size() != pCommand->nOperands)
        return WrongUsage(strName + " takes " + std::to_string(pCommand->nOperands) +
                          " arguments, not " + std::to_string(vecOperands.size()));
    if (vecOperands[0].empty() || (vecOperands.size() > 2 && vecOperands[2].empty()))
        return WrongUsage("FILE and OPTION must not be empty");

    CKorIniFile oFile(vecOperands[0].c_str(), CKorIniFile::PATH_UNCHANGED);
    oFile.SetCasesensitiv(oCmdLine.m_bCaseSensitive);
    return pCommand->pfnRun(oFile, vecOperands);
}

} // namespace

int main(int argc, char** argv)
{
    CInictlCmdLine oCmdLine(argc, argv);
    oCmdLine.UpdateOptions(false);
    int nStatus = STATUS_DONE;
    if (oCmdLine.m_bHelp)
        std::cout << USAGE;
    else if (oCmdLine.m_bVersion)
        std::cout << "inictl " INICTL_VERSION "\n";
    else
        nStatus = Run(oCmdLine);
    if (!std::cout.flush())
        return Fail(std::string("standard output: ") + std::strerror(errno), STATUS_ERROR);
    return nStatus;
}
