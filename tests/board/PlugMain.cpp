#include "config/KorOptionExchange.h"
#include "config/KorSafeIniFile.h"
#include "fs/KorWholeFile.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <termios.h>
#include <unistd.h>

namespace
{

/// The settings, of which a number changes, at both ends of a file of several blocks.
std::string Settings(const std::string& strCount)
{
    std::string strText =
        "# Settings of a board that loses its power.\n[First]\nCount=" + strCount +
        " # the number\nAlways=yes\n";
    for (int nSection = 1; nSection <= 40; ++nSection) {
        const std::string strNumber = std::to_string(nSection);
        strText += "\n[Section" + strNumber + "]\n# What the options of section " + strNumber +
                   " are for, and what else is to be known of them.\n";
        for (const char* pszOption : {"Device", "Speed", "Parity", "Name"})
            strText += std::string(pszOption) + "=" + pszOption + " number " + strNumber + "\n";
    }
    return strText + "\n[Last]\nCount=" + strCount + "\n# The end.\n";
}

template <typename TFile>
class PlugSettings : public TFile
{
public:
    explicit PlugSettings(const char* pszName) : TFile(pszName, CKorIniFile::PATH_UNCHANGED) {}

    using TFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        IOX_Std<std::string>(pExchange, "First", "Count", m_strCount, "");
        IOX_Std<std::string>(pExchange, "Last", "Count", m_strCount, "");
    }

    std::string m_strCount;
};

/// Says something, with a full stop that shows whether the line is whole, and waits until it has left
/// the board.
void Say(const std::string& strName, const std::string& strWhat)
{
    const std::string strLine = "board: " + strName + " " + strWhat + ".\n";
    if (write(STDOUT_FILENO, strLine.data(), strLine.size()) > 0)
        tcdrain(STDOUT_FILENO);
}

/// What became of the file: a number when it is whole.
std::string Find(const char* pszFile)
{
    std::string strText;
    if (!KorReadFile(pszFile, strText))
        return "missing";
    const std::string strBegin = "[First]\nCount=";
    const std::size_t nPlace = strText.find(strBegin);
    if (nPlace == std::string::npos)
        return "damaged, " + std::to_string(strText.size()) + " bytes";
    const std::size_t nCount = nPlace + strBegin.size();
    const std::string strCount = strText.substr(nCount, strText.find(' ', nCount) - nCount);
    return strText == Settings(strCount) ? strCount : "damaged, its lines differ";
}

/// Says what is in the file, makes it whole, and stores one number after the other.
template <typename TFile>
int Run(const std::string& strName, const char* pszFile)
{
    const std::string strFound = Find(pszFile);
    Say(strName, "found " + strFound);
    long nCount = std::strtol(strFound.c_str(), nullptr, 10);
    if (nCount == 0 && !KorReplaceFile(pszFile, Settings(std::to_string(++nCount))))
        return 1;
    Say(strName, "stored " + std::to_string(nCount));
    for (;;) {
        PlugSettings<TFile> oSettings(pszFile);
        oSettings.m_strCount = std::to_string(++nCount);
        if (!oSettings.UpdateOptions(true))
            return 1;
        Say(strName, "stored " + oSettings.m_strCount);
    }
}

} // namespace

/// usage: board-plug.bin safe|plain FILE
int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const std::string strName = argv[1];
    const int nResult = strName == "safe" ? Run<CKorSafeIniFile>(strName, argv[2])
                                          : Run<CKorIniFile>(strName, argv[2]);
    Say(strName, "cannot store");
    return nResult;
}
