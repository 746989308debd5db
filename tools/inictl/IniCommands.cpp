#include "IniCommands.h"

#include "IniListing.h"
#include "IniRewrite.h"
#include "app/KorOptionParser.h"
#include "config/KorSafeIniFile.h"
#include "config/KorTypedOptions.h"
#include "fs/KorWholeFile.h"
#include "text/KorStringFunc.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <iterator>

namespace
{

/// A file with the options that one write is to set.
class CSettings : public CKorSafeIniFile
{
public:
    using CKorSafeIniFile::DoOptionExchange;

    CSettings(const std::string& strFile, bool bCaseSensitive)
        : CKorSafeIniFile(strFile.c_str(), PATH_UNCHANGED)
    {
        SetCasesensitiv(bCaseSensitive);
    }

    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        for (size_t i = 0; i + 2 < m_vecTriples.size(); i += 3)
            IOX_Value(pExchange, m_vecTriples[i].c_str(), m_vecTriples[i + 1].c_str(),
                      m_vecTriples[i + 2], "");
    }

    Words m_vecTriples; ///< section, option and value of each
};

int FailFile(const std::string& strFile, int nError)
{
    return Fail(strFile + ": " + std::strerror(nError), STATUS_ERROR);
}

/// Tells why the last operation on the file failed.
int FailFile(const CKorSafeIniFile& oFile)
{
    for (const SKorIniFinding& oFinding : oFile.GetFindings())
        Fail(oFile.GetIniFileName() + ": " + oFinding.m_strText, STATUS_ERROR);
    return oFile.GetFindings().empty() ? FailFile(oFile.GetIniFileName(), oFile.GetLastError())
                                       : STATUS_ERROR;
}

int FailMissing(const Words& vecOperands)
{
    std::string strWhat = "section \"" + vecOperands[1] + "\"";
    if (vecOperands.size() > 2)
        strWhat = "option \"" + vecOperands[2] + "\" in " + strWhat;
    return Fail(vecOperands[0] + ": no " + strWhat, STATUS_NOT_FOUND);
}

int Get(bool bCaseSensitive, const Words& vecOperands)
{
    const char* const pszMissing = "\n"; // what no value can be
    CSettings oFile(vecOperands[0], bCaseSensitive);
    std::string strValue =
        oFile.ReadOption(vecOperands[1].c_str(), vecOperands[2].c_str(), pszMissing);
    if (oFile.GetLastError() != 0)
        return FailFile(oFile);
    if (strValue == pszMissing)
        return FailMissing(vecOperands);
    KorDeQuoteString(strValue);
    std::cout << strValue << '\n';
    return STATUS_DONE;
}

int Set(bool bCaseSensitive, const Words& vecOperands)
{
    CSettings oFile(vecOperands[0], bCaseSensitive);
    oFile.m_vecTriples.assign(vecOperands.begin() + 1, vecOperands.end());
    return oFile.UpdateOptions(true) ? STATUS_DONE : FailFile(oFile);
}

int Remove(bool bCaseSensitive, const Words& vecOperands)
{
    CSettings oFile(vecOperands[0], bCaseSensitive);
    const bool bFound = oFile.HasOption(vecOperands[1].c_str(), vecOperands[2].c_str());
    if (oFile.GetLastError() != 0)
        return FailFile(oFile);
    if (!bFound)
        return FailMissing(vecOperands);
    return oFile.RemoveOption(vecOperands[1].c_str(), vecOperands[2].c_str()) ? STATUS_DONE
                                                                              : FailFile(oFile);
}

void PrintLines(const Words& vecLines)
{
    for (const std::string& strLine : vecLines)
        std::cout << strLine << '\n';
}

int ListSections(bool bCaseSensitive, const Words& vecOperands)
{
    CSettings oFile(vecOperands[0], bCaseSensitive);
    Words vecSections;
    oFile.ReadAllSections(vecSections);
    if (oFile.GetLastError() != 0)
        return FailFile(oFile);
    PrintLines(vecSections);
    return STATUS_DONE;
}

int ListOptions(bool bCaseSensitive, const Words& vecOperands)
{
    CSettings oFile(vecOperands[0], bCaseSensitive);
    Words vecSections = {""};
    oFile.ReadAllSections(vecSections);
    if (oFile.GetLastError() != 0)
        return FailFile(oFile);
    const CKorIniNameRule oRule(bCaseSensitive);
    const auto IsSection = [&](const auto& str) { return oRule.Equal(str, vecOperands[1]); };
    if (!vecOperands[1].empty() && std::none_of(vecSections.begin(), vecSections.end(), IsSection))
        return FailMissing(vecOperands);
    Words vecOptions;
    oFile.ReadAllSectionEntries(vecOperands[1].c_str(), vecOptions);
    PrintLines(vecOptions);
    return STATUS_DONE;
}

CKorOptionParser::EResult Parse(CKorOptionParser& roParser, const Words& vecWords)
{
    std::vector<const char*> vecArguments = {"inictl"};
    for (const std::string& strWord : vecWords)
        vecArguments.push_back(strWord.c_str());
    return roParser.Parse(static_cast<int>(vecArguments.size()), vecArguments.data());
}

int List(bool bCaseSensitive, const Words& vecOperands)
{
    bool bJson = false;
    std::string strFile;
    CKorOptionParser oParser(Identity("inictl list"));
    oParser.AddFlag("json", bJson, "print a JSON object");
    oParser.AddArgument("FILE", strFile, "the INI file");
    const auto eResult = Parse(oParser, vecOperands);
    (eResult == CKorOptionParser::PARSE_WRONG ? std::cerr : std::cout) << oParser.GetText();
    if (eResult != CKorOptionParser::PARSE_OK)
        return eResult == CKorOptionParser::PARSE_DONE ? STATUS_DONE : STATUS_ERROR;

    std::string strText;
    if (!KorReadFile(strFile.c_str(), strText))
        return FailFile(strFile, errno);
    const CIniListing oListing(strText, CKorIniNameRule(bCaseSensitive));
    std::cout << (bJson ? oListing.Json() : oListing.Lines());
    return STATUS_DONE;
}

void PrintFindings(const std::string& strFile, const std::vector<SKorIniFinding>& vecFindings)
{
    for (const SKorIniFinding& oFinding : vecFindings)
        std::cout << strFile << ':' << oFinding.m_nLine << ": " << oFinding.m_strText << '\n';
}

int Check(bool bCaseSensitive, const Words& vecOperands)
{
    const std::string& strFile = vecOperands[0];
    std::vector<SKorIniFinding> vecFindings;
    std::string strText;
    if (!KorCheckIniFile(strFile.c_str(), bCaseSensitive, vecFindings) ||
        !KorReadFile(strFile.c_str(), strText))
        return FailFile(strFile, errno);
    const std::vector<SKorIniFinding> vecMore = CheckForRewrite(strText, bCaseSensitive);
    vecFindings.insert(vecFindings.end(), vecMore.begin(), vecMore.end());
    std::stable_sort(vecFindings.begin(), vecFindings.end(),
                     [](const auto& a, const auto& b) { return a.m_nLine < b.m_nLine; });
    PrintFindings(strFile, vecFindings);
    return vecFindings.empty() ? STATUS_DONE : STATUS_FINDINGS;
}

int Diff(bool bCaseSensitive, const Words& vecOperands)
{
    std::string astrText[2];
    for (size_t i = 0; i < 2; ++i) {
        if (!KorReadFile(vecOperands[i].c_str(), astrText[i]))
            return FailFile(vecOperands[i], errno);
    }
    const CKorIniNameRule oRule(bCaseSensitive);
    const std::string strLines =
        CIniListing(astrText[0], oRule).Difference(CIniListing(astrText[1], oRule));
    std::cout << strLines;
    return strLines.empty() ? STATUS_DONE : STATUS_DIFFERENT;
}

constexpr SCommand COMMANDS[] = {
    {"get", "FILE SECTION OPTION", 3, 0, Get},
    {"set", "FILE SECTION OPTION VALUE [SECTION OPTION VALUE]...", 4, 3, Set},
    {"remove", "FILE SECTION OPTION", 3, 0, Remove},
    {"sections", "FILE", 1, 0, ListSections},
    {"options", "FILE SECTION", 2, 0, ListOptions},
    {"list", "[--json] FILE", 0, 1, List},
    {"check", "FILE", 1, 0, Check},
    {"diff", "FILE FILE", 2, 0, Diff}};

} // namespace

bool SCommand::Takes(size_t nOperands) const
{
    if (nStep == 0 || nOperands < nLeast)
        return nOperands == nLeast;
    return (nOperands - nLeast) % nStep == 0;
}

const SCommand* FindCommand(const std::string& strName)
{
    for (const SCommand& oCommand : COMMANDS) {
        if (strName == oCommand.pszName)
            return &oCommand;
    }
    return nullptr;
}

int Fail(const std::string& strReason, EExitStatus nStatus)
{
    std::cout.flush();
    std::cerr << "inictl: " << strReason << '\n';
    return nStatus;
}

CKorApplicationInfo Identity(const char* pszName)
{
    CKorApplicationInfo oInfo = CKorApplicationInfo::GetLibraryInfo();
    oInfo.SetApplName(pszName);
    oInfo.SetApplDescription(nullptr);
    oInfo.SetVersion(TARVO_VERSION);
    return oInfo;
}
