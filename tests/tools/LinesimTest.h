#pragma once

#include "serial/KorSerialLine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"
#include "text/KorHexText.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

const std::string REQUEST("\x01\x03\0\0\0\x02\xC4\x0B", 8);

inline std::vector<std::string> CommandLine(const std::vector<std::string>& vecOptions)
{
    std::vector<std::string> vecArgs = {LINESIM_PROGRAM};
    vecArgs.insert(vecArgs.end(), vecOptions.begin(), vecOptions.end());
    return vecArgs;
}

/// linesim under a name of its own, and a program's end of the line.
class Simulation
{
public:
    explicit Simulation(std::vector<std::string> vecSteps,
                        const std::vector<std::string>& vecOptions = {})
    {
        std::vector<std::string> vecArgs = vecOptions;
        vecArgs.insert(vecArgs.end(), {"--link", Link()});
        // Opening the line forgets what came before: the script begins when it is open.
        vecSteps.insert(vecSteps.begin(), "expect \"open\" within 60000");
        for (const std::string& strStep : vecSteps)
            vecArgs.insert(vecArgs.end(), {"-e", strStep});
        m_pProcess = std::make_unique<ChildProcess>(CommandLine(vecArgs));
        EXPECT_TRUE(m_pProcess->WaitForOutput(Link() + "\n"));
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Link().c_str()));
        Send("open");
    }

    std::string Link() const { return m_oFolder.File("line"); }
    ChildProcess& Process() { return *m_pProcess; }
    CKorSerialLine& Line() { return m_oLine; }

    void Send(const std::string& strBytes)
    {
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.WriteText(strBytes, PATIENCE_MS));
    }
    std::string Receive(unsigned int nCount)
    {
        std::string strBytes;
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.ReadBytes(nCount, strBytes, PATIENCE_MS));
        return strBytes;
    }
    void WaitForHangUp()
    {
        std::string strBytes;
        while (m_oLine.Read(4096, strBytes, PATIENCE_MS) == CKorSerial::SERIAL_OK) {
        }
        EXPECT_TRUE(m_oLine.IsHungUp());
    }

private:
    ScratchDir m_oFolder;
    std::unique_ptr<ChildProcess> m_pProcess;
    CKorSerialLine m_oLine;
};

inline std::string ErrorOf(const ChildResult& oResult)
{
    EXPECT_EQ(1, oResult.nExitStatus);
    return oResult.strErr;
}
