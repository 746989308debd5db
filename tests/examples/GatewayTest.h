#pragma once

#include "config/KorSafeIniFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// A simulated meter and the settings of a gateway that polls it every few milliseconds: a file of
/// the former gateway, which knew one meter.
class GatewayAndMeter
{
public:
    explicit GatewayAndMeter(const std::vector<std::string>& vecMeterOptions,
                             const std::string& strTimeout = "5000")
        : m_oMeter(Command(METER_PROGRAM, vecMeterOptions)), m_strIniFile(m_oDir.File("gw.ini"))
    {
        EXPECT_TRUE(m_oMeter.WaitForOutput("\n"));
        const std::string strOutput = m_oMeter.OutputSoFar();
        m_strDevice = strOutput.substr(0, strOutput.find('\n'));
        WriteFile(m_strIniFile,
                  "# mine\n[Line]\nDevice=" + m_strDevice +
                      "\n[Meter]\nPollInterval=10\nTimeout=" + strTimeout +
                      "\nRetries=2 # enough\n[Process]\nPidFile=" + m_oDir.File("gw.pid") +
                      "\nControlSocket=" + m_oDir.File("gw.sock") + "\n");
    }

    /// A gateway with these settings.
    std::vector<std::string> Gateway(const std::vector<std::string>& vecOptions = {}) const
    {
        std::vector<std::string> vecCommand = {GATEWAY_PROGRAM, "--config", m_strIniFile};
        vecCommand.insert(vecCommand.end(), vecOptions.begin(), vecOptions.end());
        return vecCommand;
    }

    /// Changes a setting.
    void Set(const char* pszSection, const char* pszOption, const std::string& strValue)
    {
        EXPECT_TRUE(CKorSafeIniFile(m_strIniFile.c_str(), CKorIniFile::PATH_UNCHANGED)
                        .WriteOption(pszSection, pszOption, strValue.c_str()));
    }

    ScratchDir m_oDir;
    ChildProcess m_oMeter;
    std::string m_strIniFile;
    std::string m_strDevice;

private:
    static std::vector<std::string> Command(const char* pszProgram,
                                            const std::vector<std::string>& vecOptions)
    {
        std::vector<std::string> vecCommand = {pszProgram};
        vecCommand.insert(vecCommand.end(), vecOptions.begin(), vecOptions.end());
        return vecCommand;
    }
};

const std::string EXPECT_REQUEST = "expect * 01 03 ??{4} crc16\n";
const std::string SEND_ANSWER = "send 01 03 0A 00 0F 42 47 08 F3 02 01 04 97 crc16\n";
const std::string ANSWER_FOR_EVER = "repeat\n" + EXPECT_REQUEST + SEND_ANSWER + "end\n";

/// A meter that plays a script, and the settings of a gateway that polls it.
class GatewayAndScript
{
public:
    GatewayAndScript(const std::string& strScript, const std::string& strMeterSettings)
        : m_strLink(m_oDir.File("meter")),
          m_strIniFile(m_oDir.File("gw.ini")),
          m_oMeter({LINESIM_PROGRAM, "--timeout", "60000", "-l", m_strLink, "-"}, strScript)
    {
        EXPECT_TRUE(m_oMeter.WaitForOutput(m_strLink));
        WriteFile(m_strIniFile, "[Line]\nDevice=" + m_strLink + "\n[Meter]\n" + strMeterSettings +
                                    "\n[Process]\nPidFile=" + m_oDir.File("pid") +
                                    "\nControlSocket=" + m_oDir.File("gw.sock") + "\n");
    }

    ScratchDir m_oDir;
    std::string m_strLink;
    std::string m_strIniFile;
    ChildProcess m_oMeter;
};

inline bool Holds(const std::string& strText, const std::string& strPart)
{
    return strText.find(strPart) != std::string::npos;
}
