#pragma once

#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/support/PseudoTerminal.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

/// The two ends of something that standard error can be.
struct Ends
{
    int nReader;
    int nWriter;
};

inline Ends Pipe()
{
    int anEnds[2];
    EXPECT_EQ(0, pipe(anEnds));
    return {anEnds[0], anEnds[1]};
}

inline Ends SmallPipe()
{
    const Ends oEnds = Pipe();
    EXPECT_GT(fcntl(oEnds.nWriter, F_SETPIPE_SZ, 8192), 0);
    return oEnds;
}

inline Ends Socket(int nType)
{
    int anEnds[2];
    EXPECT_EQ(0, socketpair(AF_UNIX, nType, 0, anEnds));
    return {anEnds[0], anEnds[1]};
}

inline Ends StreamSocket()
{
    return Socket(SOCK_STREAM);
}

/// Takes lines in parts.
inline Ends NarrowSocket()
{
    const Ends oEnds = Socket(SOCK_STREAM);
    const int nSize = 4608;
    setsockopt(oEnds.nWriter, SOL_SOCKET, SO_SNDBUF, &nSize, sizeof nSize);
    return oEnds;
}

inline Ends PacketSocket()
{
    return Socket(SOCK_SEQPACKET);
}

inline Ends Terminal()
{
    const PseudoTerminal oTerminal;
    oTerminal.MakeRaw();
    const int nReader = dup(oTerminal.FarEnd());
    return {nReader, open(oTerminal.Name(), O_RDWR | O_NOCTTY)};
}

inline std::string ReadToEnd(int nHandle)
{
    std::string strText;
    char acBytes[16384];
    ssize_t nRead = 0;
    while ((nRead = read(nHandle, acBytes, sizeof acBytes)) > 0)
        strText.append(acBytes, static_cast<std::size_t>(nRead));
    return strText;
}

/// Writes lines of all lengths, the shorter the likelier.
class RandomLines
{
public:
    void Write(CKorLog& oLog)
    {
        const unsigned int nLongest = 16u << (m_oRandom() % 10); // to 8192
        const std::string strFill(m_oRandom() % (nLongest - 15), 'x');
        oLog.Write(CKorLog::LEVEL_INFO, "%u:%s", static_cast<unsigned int>(strFill.size()),
                   strFill.c_str());
        ++m_nWritten;
    }
    unsigned int Written() const { return m_nWritten; }

private:
    std::mt19937 m_oRandom{7};
    unsigned int m_nWritten = 0;
};

/// What a reader found.
struct Found
{
    unsigned int nLines = 0;
    unsigned int nEnds = 0;
    unsigned long nToldLost = 0;
};

inline Found Check(const std::string& strText)
{
    Found oFound;
    for (const std::string& strLine : Lines(strText)) {
        const std::string strMessage = WithoutTime(strLine);
        unsigned int nLength = 0;
        int nBehind = 0;
        unsigned long nLost = 0;
        if (std::sscanf(strMessage.c_str(), "warning: %lu log line", &nLost) == 1) {
            oFound.nToldLost += nLost;
        } else if (strMessage == "info: end") {
            ++oFound.nEnds;
        } else {
            EXPECT_EQ(1, std::sscanf(strMessage.c_str(), "info: %u:%n", &nLength, &nBehind))
                << strMessage.substr(0, 100);
            EXPECT_EQ(std::string(nLength, 'x'),
                      strMessage.substr(static_cast<std::size_t>(nBehind)));
            ++oFound.nLines;
        }
    }
    return oFound;
}
