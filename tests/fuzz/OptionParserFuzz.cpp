// Command lines as GNU programs take them, against a reader of one option after the other.

#include "app/KorOptionParser.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <map>

namespace
{

using Texts = std::vector<std::string>;

/// What the options of the program are set to.
struct Values
{
    bool bVerbose = false;
    bool bFour = false;
    std::string strConfig = "default";
    int nNumber = 7;
    Texts vecDefines{"preset"};
    std::string strDevice;
    Texts vecRest;
};

/// Demands equal values of every option.
void ExpectSame(const Values& oExpected, const Values& oActual)
{
    ExpectEqual(oExpected.bVerbose, oActual.bVerbose, "the flag v");
    ExpectEqual(oExpected.bFour, oActual.bFour, "the flag 4");
    ExpectEqual(oExpected.strConfig, oActual.strConfig, "the option c");
    ExpectEqual(oExpected.nNumber, oActual.nNumber, "the option n");
    ExpectEqual(oExpected.vecDefines, oActual.vecDefines, "the option D");
    ExpectEqual(oExpected.strDevice, oActual.strDevice, "the argument DEVICE");
    ExpectEqual(oExpected.vecRest, oActual.vecRest, "the argument REST");
}

class Model
{
public:
    CKorOptionParser::EResult Parse(const Texts& vecWords)
    {
        bool bEnded = false;
        for (m_nNext = 0; m_nNext < vecWords.size() && m_eResult == CKorOptionParser::PARSE_OK;) {
            const std::string& strWord = vecWords[m_nNext++];
            if (bEnded || !IsOption(strWord))
                Argument(strWord);
            else if (strWord == "--")
                bEnded = true;
            else if (strWord[1] == '-')
                Long(strWord.substr(2), vecWords);
            else
                Short(strWord, vecWords);
        }
        return m_eResult;
    }

    Values m_oValues;

private:
    static bool IsOption(const std::string& strWord)
    {
        double nNumber = 0;
        return strWord.size() > 1 && strWord[0] == '-' &&
               (!KorReadText(strWord, nNumber) || strWord[1] == '4');
    }

    void Argument(const std::string& strWord)
    {
        if (m_bDevice)
            m_oValues.vecRest.push_back(strWord);
        else
            m_oValues.strDevice = strWord;
        m_bDevice = true;
    }

    void Wrong() { m_eResult = CKorOptionParser::PARSE_WRONG; }

    /// Takes a flag. @return whether it is one
    bool Flag(char c)
    {
        if (c == 'h' || c == 'V')
            m_eResult = CKorOptionParser::PARSE_DONE;
        m_oValues.bVerbose = m_oValues.bVerbose || c == 'v';
        m_oValues.bFour = m_oValues.bFour || c == '4';
        return c == 'h' || c == 'V' || c == 'v' || c == '4';
    }

    void Long(const std::string& strText, const Texts& vecWords)
    {
        static const std::map<std::string, char> NAMES = {{"verbose", 'v'}, {"config", 'c'},
                                                          {"number", 'n'},  {"define", 'D'},
                                                          {"help", 'h'},    {"version", 'V'}};
        const std::size_t nEquals = strText.find('=');
        const auto it = NAMES.find(strText.substr(0, nEquals));
        if (it == NAMES.end())
            return Wrong();
        const bool bValued = it->second == 'c' || it->second == 'n' || it->second == 'D';
        if (nEquals != std::string::npos)
            return bValued ? Value(it->second, strText.substr(nEquals + 1)) : Wrong();
        if (!Flag(it->second))
            Next(it->second, vecWords);
    }

    void Short(const std::string& strWord, const Texts& vecWords)
    {
        for (std::size_t i = 1; i < strWord.size() && m_eResult == CKorOptionParser::PARSE_OK;
             ++i) {
            const char c = strWord[i];
            if (c != 'c' && c != 'n' && c != 'D') {
                if (c == 'V' || !Flag(c))
                    Wrong();
                continue;
            }
            if (i + 1 < strWord.size())
                return Value(c, strWord.substr(i + 1));
            return Next(c, vecWords);
        }
    }

    void Next(char c, const Texts& vecWords)
    {
        if (m_nNext == vecWords.size())
            return Wrong();
        Value(c, vecWords[m_nNext++]);
    }

    void Value(char c, const std::string& strValue)
    {
        const bool bAgain = m_strGiven.find(c) != std::string::npos;
        m_strGiven += c;
        if (c == 'D') {
            if (!bAgain)
                m_oValues.vecDefines.clear();
            m_oValues.vecDefines.push_back(strValue);
        } else if (bAgain || (c == 'n' && !KorReadText(strValue, m_oValues.nNumber))) {
            Wrong();
        } else if (c == 'c') {
            m_oValues.strConfig = strValue;
        }
    }

    CKorOptionParser::EResult m_eResult = CKorOptionParser::PARSE_OK;
    std::size_t m_nNext = 0;
    bool m_bDevice = false;
    std::string m_strGiven;
};

void Declare(CKorOptionParser& oParser, Values& rValues)
{
    oParser.AddFlag("v,verbose", rValues.bVerbose, "tell more");
    oParser.AddFlag("4", rValues.bFour, "only version 4");
    oParser.AddOption("c,config", "FILE", rValues.strConfig, "read settings from FILE");
    oParser.AddOption("n,number", "N", rValues.nNumber, "do it N times");
    oParser.AddOption("D,define", "NAME", rValues.vecDefines, "define NAME");
    oParser.AddArgument("DEVICE", rValues.strDevice, "the line to open", false);
    oParser.AddArgument("REST", rValues.vecRest, "more of it", false);
}

void CheckText(CKorOptionParser::EResult eResult, const std::string& strText)
{
    ExpectEqual(eResult == CKorOptionParser::PARSE_OK, strText.empty(), "all well has no text");
    Expect(strText.empty() || strText.back() == '\n', "a text ends with a line feed");
    if (eResult == CKorOptionParser::PARSE_WRONG)
        Expect(strText.compare(0, 4, "gw: ") == 0, "wrong usage names the program", strText);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    Texts vecWords;
    for (auto n = oInput.ConsumeIntegralInRange(0, 20); n > 0; --n)
        vecWords.push_back(oInput.ConsumeRandomLengthString(30).c_str());
    std::vector<const char*> vecPointers{"/usr/bin/gw.bin"};
    for (const std::string& strWord : vecWords)
        vecPointers.push_back(strWord.c_str());

    Values oValues;
    CKorOptionParser oParser(
        CKorApplicationInfo("gw", "2.5.7", "Example Ltd", "Meter gateway", "gw.example", nullptr));
    Declare(oParser, oValues);
    Model oModel;
    const auto eResult = oParser.Parse(static_cast<int>(vecPointers.size()), vecPointers.data());
    ExpectEqual<int>(oModel.Parse(vecWords), eResult, "a command line is read or refused");
    if (eResult == CKorOptionParser::PARSE_OK)
        ExpectSame(oModel.m_oValues, oValues);
    CheckText(eResult, oParser.GetText());
    return 0;
}
