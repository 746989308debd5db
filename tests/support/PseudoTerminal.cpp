#include "tests/support/PseudoTerminal.h"
#include "tests/support/Patience.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal() : m_nMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
{
    char szName[64] = "";
    EXPECT_NE(-1, m_nMaster);
    EXPECT_EQ(0, grantpt(m_nMaster));
    EXPECT_EQ(0, unlockpt(m_nMaster));
    EXPECT_EQ(0, ptsname_r(m_nMaster, szName, sizeof szName));
    m_strName = szName;
}

PseudoTerminal::~PseudoTerminal()
{
    HangUp();
}

void PseudoTerminal::MakeRaw() const
{
    termios oSettings = Settings();
    cfmakeraw(&oSettings);
    Apply(oSettings);
}

termios PseudoTerminal::Settings() const
{
    termios oSettings = {};
    EXPECT_EQ(0, tcgetattr(m_nMaster, &oSettings)); // Linux gives those of the device
    return oSettings;
}

void PseudoTerminal::Apply(const termios& oSettings) const
{
    EXPECT_EQ(0, tcsetattr(m_nMaster, TCSANOW, &oSettings));
}

void PseudoTerminal::Send(const std::string& strBytes) const
{
    std::size_t nSent = 0;
    while (nSent < strBytes.size()) {
        const ssize_t nCount = write(m_nMaster, strBytes.data() + nSent, strBytes.size() - nSent);
        ASSERT_GT(nCount, 0);
        nSent += static_cast<std::size_t>(nCount);
    }
}

std::string PseudoTerminal::Receive(std::size_t nCount) const
{
    std::string strBytes;
    while (strBytes.size() < nCount) {
        pollfd oFarEnd = {m_nMaster, POLLIN, 0};
        char acBytes[4096];
        const std::size_t nRoom = std::min(sizeof acBytes, nCount - strBytes.size());
        if (poll(&oFarEnd, 1, PATIENCE_MS) != 1 || (oFarEnd.revents & POLLIN) == 0) {
            ADD_FAILURE() << "received " << strBytes.size() << " of " << nCount << " bytes";
            break;
        }
        const ssize_t nRead = read(m_nMaster, acBytes, nRoom);
        if (nRead > 0)
            strBytes.append(acBytes, static_cast<std::size_t>(nRead));
    }
    return strBytes;
}

void PseudoTerminal::HangUp()
{
    if (m_nMaster != -1)
        close(m_nMaster);
    m_nMaster = -1;
}
