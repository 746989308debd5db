#include "examples/gateway/SettingsExchange.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace
{

constexpr std::size_t MOST_LINES = 128;
constexpr std::size_t MOST_METERS = 1000;
constexpr std::size_t LONGEST_SOCKET = 100; // the system takes 107, and the gateway adds to it

/// The device behind links, as far as it is there.
std::string RealName(const std::string& strDevice)
{
    char szReal[PATH_MAX];
    return realpath(strDevice.c_str(), szReal) != nullptr ? szReal : strDevice;
}

/// Complains about each section whose name another one before it has.
template <typename T>
void CheckNames(CKorIniOptionExchange* pExchange, const std::vector<T>& vecSections)
{
    for (std::size_t i = 0; i < vecSections.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (IsSameName(vecSections[i].m_strName, vecSections[j].m_strName))
                Complain(pExchange, vecSections[i].m_strSection, "",
                         "has the name of [" + vecSections[j].m_strSection + "]");
        }
    }
}

void CheckDevices(CKorIniOptionExchange* pExchange, const std::vector<LineSettings>& vecLines)
{
    std::vector<std::string> vecDevices;
    for (const LineSettings& oLine : vecLines) {
        const std::string strDevice = RealName(oLine.m_strDevice);
        for (std::size_t i = 0; i < vecDevices.size() && !strDevice.empty(); ++i) {
            if (strDevice == vecDevices[i])
                Complain(pExchange, oLine.m_strSection, "Device",
                         "is the device of [" + vecLines[i].m_strSection + "] too");
        }
        vecDevices.push_back(strDevice);
    }
}

const LineSettings* FindLine(const std::vector<LineSettings>& vecLines, const std::string& strName)
{
    for (const LineSettings& oLine : vecLines) {
        if (IsSameName(oLine.m_strName, strName))
            return &oLine;
    }
    return nullptr;
}

void ResolveLine(CKorIniOptionExchange* pExchange, const std::vector<LineSettings>& vecLines,
                 MeterSettings& roMeter)
{
    const bool bNamed = !roMeter.m_strLine.empty();
    if (!bNamed && vecLines.size() == 1)
        roMeter.m_strLine = vecLines[0].m_strName;
    else if (!bNamed)
        Complain(pExchange, roMeter.m_strSection, "", "does not say on which Line it is");
    else if (const LineSettings* const pLine = FindLine(vecLines, roMeter.m_strLine))
        roMeter.m_strLine = pLine->m_strName;
    else
        Complain(pExchange, roMeter.m_strSection, "Line", "is no [Line NAME] of this file");
}

void CheckUnits(CKorIniOptionExchange* pExchange, const std::vector<MeterSettings>& vecMeters)
{
    for (std::size_t i = 0; i < vecMeters.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (vecMeters[i].m_nUnit == vecMeters[j].m_nUnit &&
                IsSameName(vecMeters[i].m_strLine, vecMeters[j].m_strLine))
                Complain(pExchange, vecMeters[i].m_strSection, "Unit",
                         "is the unit of [" + vecMeters[j].m_strSection + "] on the same line");
        }
    }
}

void CheckCounts(CKorIniOptionExchange* pExchange, const GatewaySettings& oSettings)
{
    if (oSettings.m_vecMeters.empty())
        Complain(pExchange, "", "", "there is no [Meter NAME]");
    if (oSettings.m_vecMeters.size() > MOST_METERS)
        Complain(pExchange, oSettings.m_vecMeters[MOST_METERS].m_strSection, "",
                 "is one meter more than 1000");
    if (oSettings.m_vecLines.size() > MOST_LINES)
        Complain(pExchange, oSettings.m_vecLines[MOST_LINES].m_strSection, "",
                 "is one line more than 128");
}

void CheckProcess(CKorIniOptionExchange* pExchange, const ProcessSettings& oProcess)
{
    if (oProcess.m_strPidFile.empty())
        Complain(pExchange, "Process", "PidFile", "is empty");
    if (oProcess.m_strControlSocket.size() > LONGEST_SOCKET)
        Complain(pExchange, "Process", "ControlSocket", "has more than 100 bytes");
    if (oProcess.m_strControlSocket == oProcess.m_strPidFile)
        Complain(pExchange, "Process", "ControlSocket", "is the PidFile");
}

} // namespace

void CheckSettings(CKorIniOptionExchange* pExchange, GatewaySettings& roSettings)
{
    CheckCounts(pExchange, roSettings);
    if (roSettings.m_vecMeters.size() > MOST_METERS || roSettings.m_vecLines.size() > MOST_LINES)
        return;
    CheckNames(pExchange, roSettings.m_vecLines);
    CheckNames(pExchange, roSettings.m_vecMeters);
    CheckDevices(pExchange, roSettings.m_vecLines);
    for (MeterSettings& roMeter : roSettings.m_vecMeters)
        ResolveLine(pExchange, roSettings.m_vecLines, roMeter);
    CheckUnits(pExchange, roSettings.m_vecMeters);
    CheckProcess(pExchange, roSettings.m_oProcess);
}
