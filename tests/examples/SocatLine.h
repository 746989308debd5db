#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

/// A null modem: two devices, between which socat carries every byte.
class SocatLine
{
public:
    SocatLine()
        : m_oSocat({SOCAT_PROGRAM, "pty,raw,echo=0,link=" + DeviceA(),
                    "pty,raw,echo=0,link=" + DeviceB()})
    {
        const auto oDeadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (access(DeviceA().c_str(), F_OK) != 0 || access(DeviceB().c_str(), F_OK) != 0) {
            if (std::chrono::steady_clock::now() > oDeadline) {
                ADD_FAILURE() << "socat makes no devices: " << m_oSocat.OutputSoFar();
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    std::string DeviceA() const { return m_oFolder.File("A"); }
    std::string DeviceB() const { return m_oFolder.File("B"); }

private:
    ScratchDir m_oFolder;
    ChildProcess m_oSocat;
};
