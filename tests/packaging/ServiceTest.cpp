#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>

namespace
{

std::string Replaced(std::string strText, const std::string& strOld, const std::string& strNew)
{
    const std::size_t nPlace = strText.find(strOld);
    EXPECT_NE(std::string::npos, nPlace) << strOld;
    return nPlace == std::string::npos ? strText : strText.replace(nPlace, strOld.size(), strNew);
}

std::string ServiceFile(const std::string& strName)
{
    return std::string(SERVICE_FOLDER) + "/" + strName;
}

/// The unit with the program where it was built.
class Unit : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string strUnit = ReadFile(ServiceFile("tarvo-gateway.service"));
        WriteFile(m_strUnit, Replaced(strUnit, "/usr/sbin/gateway.bin", GATEWAY_PROGRAM));
    }

    const ScratchDir m_oDir;
    const std::string m_strUnit = m_oDir.File("tarvo-gateway.service");
};

TEST_F(Unit, SystemdFindsNothingWrongWithIt)
{
    const ChildResult oResult = RunProgram({"systemd-analyze", "verify", "--man=no", m_strUnit});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(std::string::npos, oResult.strErr.find("tarvo-gateway.service")) << oResult.strErr;
}

// In tenths: 10.0 may do anything. A serial line, a network and a socket leave 1.6.
TEST_F(Unit, LeavesTheDaemonLittleThatItMayDo)
{
    const ChildResult oResult =
        RunProgram({"systemd-analyze", "security", "--offline=true", "--threshold=20", m_strUnit});
    EXPECT_EQ(0, oResult.nExitStatus) << oResult.strOut << oResult.strErr;
}

TEST(UdevRule, IsReadWithoutAComplaint)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("run"), "mount -t tmpfs none /run && mkdir -p /run/udev/rules.d &&\n"
                                "cp \"$1\" /run/udev/rules.d && udevadm test /sys/class/tty/tty\n");
    const ChildResult oResult = RunProgram({"unshare", "--user", "--map-root-user", "--mount", "sh",
                                            oDir.File("run"), ServiceFile("60-tarvo-lines.rules")});
    const std::string strRead = "Reading rules file: /run/udev/rules.d/60-tarvo-lines.rules";
    EXPECT_NE(std::string::npos, oResult.strErr.find(strRead)) << oResult.strErr;
    EXPECT_EQ(std::string::npos, oResult.strErr.find("60-tarvo-lines.rules:")) << oResult.strErr;
}

std::string ToldToProcd(const std::string& strAction)
{
    return RunProgram({BUSYBOX_PROGRAM, "sh", RC_COMMON, ServiceFile("gateway.procd"), strAction})
        .strOut;
}

TEST(ProcdScript, StartsTheDaemonAgainHoweverOftenItEnds)
{
    EXPECT_EQ("instance\n"
              "command /usr/sbin/gateway.bin -c /etc/tarvo-gateway/gateway.ini\n"
              "respawn 3600 5 0\n"
              "term_timeout 15\n"
              "stderr 1\n"
              "end\n",
              ToldToProcd("start"));
}

TEST(ProcdScript, AReloadIsASignal)
{
    EXPECT_EQ("signal tarvo-gateway * HUP\n", ToldToProcd("reload"));
}

} // namespace
