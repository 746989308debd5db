#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

/// A null modem: two devices, between which socat carries every byte.
class SocatLine
{
public:
    SocatLine()
        : m_oSocat({SOCAT_PROGRAM, "pty,raw,echo=0,link=" + DeviceA(),
                    "pty,raw,echo=0,link=" + DeviceB()})
    {
        EXPECT_TRUE(WaitUntil([this] {
            return access(DeviceA().c_str(), F_OK) == 0 && access(DeviceB().c_str(), F_OK) == 0;
        })) << "socat makes no devices: "
            << m_oSocat.OutputSoFar();
    }

    std::string DeviceA() const { return m_oFolder.File("A"); }
    std::string DeviceB() const { return m_oFolder.File("B"); }

private:
    ScratchDir m_oFolder;
    ChildProcess m_oSocat;
};
