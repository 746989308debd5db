#include "examples/gateway/SettingsExchange.h"

#include "config/KorIniFinding.h"
#include "config/KorTypedOptions.h"

#include <algorithm>
#include <strings.h>

namespace
{

constexpr char REGISTER_PREFIX[] = "Register.";
constexpr std::size_t REGISTER_PREFIX_LENGTH = sizeof REGISTER_PREFIX - 1;
constexpr std::size_t LONGEST_NAME = 32;
constexpr std::size_t MOST_REGISTERS = 250;
constexpr char NAME_CHARACTERS[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.";
constexpr char NAME_RULE[] = "needs a name of 1 to 32 letters, digits, '_', '-' and '.'";

/// Names become parts of topics and file names.
bool IsGoodName(const std::string& strName)
{
    return !strName.empty() && strName.size() <= LONGEST_NAME &&
           strName.find_first_not_of(NAME_CHARACTERS) == std::string::npos;
}

void CheckName(CKorIniOptionExchange* pExchange, const std::string& strSection,
               const std::string& strName)
{
    if (!IsGoodName(strName))
        Complain(pExchange, strSection, "", NAME_RULE);
}

void ExchangeRS485(CKorIniOptionExchange* pExchange, const char* pszSection, SKorRS485& roRS485)
{
    IOX_Value(pExchange, pszSection, "RS485", roRS485.m_bEnabled, false);
    IOX_Value(pExchange, pszSection, "RtsOnSend", roRS485.m_bRtsOnSend, true);
    IOX_Range(pExchange, pszSection, "DelayBefore", roRS485.m_nDelayBefore, 0, 0, 100);
    IOX_Range(pExchange, pszSection, "DelayAfter", roRS485.m_nDelayAfter, 0, 0, 100);
    roRS485.m_bRtsAfterSend = !roRS485.m_bRtsOnSend;
    std::string strValue;
    for (const char* pszOption : {"RtsOnSend", "DelayBefore", "DelayAfter"}) {
        if (!roRS485.m_bEnabled && pExchange->GetOptionString(pszSection, pszOption, strValue))
            Complain(pExchange, pszSection, pszOption, "means something with RS485=yes only");
    }
}

/// The options that describe a register.
std::vector<std::string> RegisterOptions(CKorIniOptionExchange* pExchange,
                                         const std::string& strSection)
{
    std::vector<std::string> vecOptions;
    pExchange->GetOptions(strSection.c_str(), vecOptions);
    const auto fnOther = [](const std::string& strOption) {
        return strncasecmp(strOption.c_str(), REGISTER_PREFIX, REGISTER_PREFIX_LENGTH) != 0;
    };
    vecOptions.erase(std::remove_if(vecOptions.begin(), vecOptions.end(), fnOther),
                     vecOptions.end());
    return vecOptions;
}

/// Reads one register. @return what is wrong; empty when nothing is
std::string ExchangeRegister(CKorIniOptionExchange* pExchange, const std::string& strSection,
                             const std::string& strOption, Register& roRegister)
{
    std::string strText;
    IOX_Value(pExchange, strSection.c_str(), strOption.c_str(), strText, "");
    roRegister.m_strName = strOption.substr(REGISTER_PREFIX_LENGTH);
    return IsGoodName(roRegister.m_strName) ? ReadRegister(strText, roRegister) : NAME_RULE;
}

/// The registers that have lines of their own, by address.
RegisterMap OwnRegisters(CKorIniOptionExchange* pExchange, const std::string& strSection)
{
    RegisterMap vecRegisters;
    for (const std::string& strOption : RegisterOptions(pExchange, strSection)) {
        Register oRegister;
        const std::string strWrong = ExchangeRegister(pExchange, strSection, strOption, oRegister);
        if (strWrong.empty())
            vecRegisters.push_back(oRegister);
        else
            Complain(pExchange, strSection, strOption, strWrong);
    }
    std::stable_sort(vecRegisters.begin(), vecRegisters.end(),
                     [](const Register& oLeft, const Register& oRight) {
                         return oLeft.m_nAddress < oRight.m_nAddress;
                     });
    return vecRegisters;
}

void ExchangeReadyMap(CKorIniOptionExchange* pExchange, MeterSettings& roMeter, bool bOneMeter)
{
    const char* const pszSection = roMeter.m_strSection.c_str();
    std::string strMap;
    IOX_Value(pExchange, pszSection, "Map", strMap, bOneMeter ? "simulated" : "");
    if (strMap.empty() && RegisterOptions(pExchange, roMeter.m_strSection).empty())
        Complain(pExchange, roMeter.m_strSection, "", "has neither a Map nor a Register.NAME");
    if (strMap.empty())
        return;
    if (const RegisterMap* const pMap = FindReadyMap(strMap))
        roMeter.m_vecRegisters = *pMap;
    else
        Complain(pExchange, pszSection, "Map", "is none of " + ReadyMapNames());
}

/// A register of the same name takes the place of the one that is there.
void Put(RegisterMap& rvecRegisters, const Register& oRegister)
{
    const auto itFormer =
        std::find_if(rvecRegisters.begin(), rvecRegisters.end(), [&](const Register& oFormer) {
            return IsSameName(oFormer.m_strName, oRegister.m_strName);
        });
    if (itFormer != rvecRegisters.end())
        *itFormer = oRegister;
    else
        rvecRegisters.push_back(oRegister);
}

void ExchangeRegisters(CKorIniOptionExchange* pExchange, MeterSettings& roMeter, bool bOneMeter)
{
    ExchangeReadyMap(pExchange, roMeter, bOneMeter);
    for (const Register& oRegister : OwnRegisters(pExchange, roMeter.m_strSection))
        Put(roMeter.m_vecRegisters, oRegister);
    if (roMeter.m_vecRegisters.size() > MOST_REGISTERS)
        Complain(pExchange, roMeter.m_strSection, "", "has more than 250 registers");
}

/// What the former gateway called otherwise, or no longer needs.
void ExchangeFormerMeter(CKorIniOptionExchange* pExchange, MeterSettings& roMeter)
{
    const char* const pszSection = roMeter.m_strSection.c_str();
    unsigned int nRetries = 0;
    IOX_Range(pExchange, pszSection, "Station", roMeter.m_nUnit, roMeter.m_nUnit, 1, 247);
    IOX_Range(pExchange, pszSection, "Retries", nRetries, roMeter.m_nTries - 1, 0, 10);
    roMeter.m_nTries = nRetries + 1;
}

} // namespace

bool IsSectionOf(const char* pszKind, const std::string& strSection, std::string& rstrName)
{
    const std::size_t nEnd = std::min(strSection.find_first_of(" \t"), strSection.size());
    if (!IsSameName(strSection.substr(0, nEnd), pszKind))
        return false;
    const std::size_t nBegin = strSection.find_first_not_of(" \t", nEnd);
    rstrName = nBegin == std::string::npos ? "" : strSection.substr(nBegin);
    rstrName.erase(rstrName.find_last_not_of(" \t") + 1);
    return true;
}

bool IsSameName(const std::string& strLeft, const std::string& strRight)
{
    return strcasecmp(strLeft.c_str(), strRight.c_str()) == 0;
}

void Complain(CKorIniOptionExchange* pExchange, const std::string& strSection,
              const std::string& strOption, const std::string& strText)
{
    std::string strLabel = strSection.empty() ? "" : "[" + strSection + "] ";
    if (!strOption.empty()) {
        std::string strValue;
        pExchange->GetOptionString(strSection.c_str(), strOption.c_str(), strValue);
        strLabel.append(strOption).append("=").append(strValue).append(" ");
    }
    KorReportIniFinding(pExchange, {SKorIniFinding::FINDING_BAD_VALUE, 0, strSection, strOption,
                                    strLabel + strText});
}

void ExchangeLine(CKorIniOptionExchange* pExchange, LineSettings& roLine)
{
    const char* const pszSection = roLine.m_strSection.c_str();
    SKorLineOptions& roOptions = roLine.m_oOptions;
    int nStopBits = 1;
    IOX_Value(pExchange, pszSection, "Device", roLine.m_strDevice, std::string(roLine.m_strDevice));
    IOX_Range(pExchange, pszSection, "Speed", roOptions.m_nSpeed, 9600, 1, 4000000);
    IOX_Enum(pExchange, pszSection, "Parity", roOptions.m_eParity, CKorSerial::PARITY_NONE,
             {{"none", CKorSerial::PARITY_NONE},
              {"even", CKorSerial::PARITY_EVEN},
              {"odd", CKorSerial::PARITY_ODD}});
    IOX_Range(pExchange, pszSection, "StopBits", nStopBits, 1, 1, 2);
    roOptions.m_eStopbits = nStopBits == 2 ? CKorSerial::STOPBITS_2 : CKorSerial::STOPBITS_1;
    IOX_Range(pExchange, pszSection, "TurnAround", roLine.m_nTurnAround, 0, 0, 1000);
    ExchangeRS485(pExchange, pszSection, roOptions.m_oRS485);
    CheckName(pExchange, roLine.m_strSection, roLine.m_strName);
    if (roLine.m_strDevice.empty())
        Complain(pExchange, roLine.m_strSection, "", "has no Device");
}

void ExchangeMeter(CKorIniOptionExchange* pExchange, MeterSettings& roMeter, bool bOneMeter)
{
    const char* const pszSection = roMeter.m_strSection.c_str();
    IOX_Value(pExchange, pszSection, "Line", roMeter.m_strLine, "");
    IOX_Range(pExchange, pszSection, "Unit", roMeter.m_nUnit, 1, 1, 247);
    IOX_Range(pExchange, pszSection, "PollInterval", roMeter.m_nPollInterval, 1000, 1, 86400000);
    IOX_Range(pExchange, pszSection, "Timeout", roMeter.m_nTimeout, 300, 1, 10000);
    IOX_Range(pExchange, pszSection, "Tries", roMeter.m_nTries, 3, 1, 11);
    if (bOneMeter)
        ExchangeFormerMeter(pExchange, roMeter);
    ExchangeRegisters(pExchange, roMeter, bOneMeter);
    CheckName(pExchange, roMeter.m_strSection, roMeter.m_strName);
}
