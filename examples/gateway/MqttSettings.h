#pragma once

#include <string>

/// Where readings are published, and as whom.
struct MqttSettings
{
    std::string m_strHost;         ///< name or address of the broker; empty: readings go to the log
    unsigned int m_nPort = 1883;   ///< its port; 8883 is the usual one with TLS
    std::string m_strUser;         ///< empty: nobody in particular
    std::string m_strPasswordFile; ///< its first line is the password; empty: none
    std::string m_strCaFile;       ///< certificates to trust, in PEM; empty: no TLS
    std::string m_strCertFile;     ///< certificate to show, in PEM; empty: none
    std::string m_strKeyFile;      ///< the key of #m_strCertFile
    std::string m_strPrefix = "gateway"; ///< begins every topic; of each gateway another one
    unsigned int m_nQos = 1;             ///< 0, 1 or 2
    std::string m_strClientId;      ///< of each gateway another one; empty: made from the prefix
    unsigned int m_nKeepAlive = 30; ///< s until a broker that says nothing is given up, 5 or more
    unsigned int m_nLongestPause = 60; ///< s between two attempts to reach the broker, at most
};

/// Where readings wait that were not published yet.
struct StoreSettings
{
    std::string m_strFile;              ///< empty: they wait in memory and end with the process
    unsigned int m_nMaxSize = 4 << 20;  ///< of the file, in bytes
    unsigned int m_nWriteInterval = 60; ///< s from one write to the disk to the next; 0: no pause
    std::string m_strMemoryDir =
        "/dev/shm"; ///< where what is younger than a write outlives SIGKILL
};

inline bool operator==(const MqttSettings& oLeft, const MqttSettings& oRight)
{
    return oLeft.m_strHost == oRight.m_strHost && oLeft.m_nPort == oRight.m_nPort &&
           oLeft.m_strUser == oRight.m_strUser &&
           oLeft.m_strPasswordFile == oRight.m_strPasswordFile &&
           oLeft.m_strCaFile == oRight.m_strCaFile && oLeft.m_strCertFile == oRight.m_strCertFile &&
           oLeft.m_strKeyFile == oRight.m_strKeyFile && oLeft.m_strPrefix == oRight.m_strPrefix &&
           oLeft.m_nQos == oRight.m_nQos && oLeft.m_strClientId == oRight.m_strClientId &&
           oLeft.m_nKeepAlive == oRight.m_nKeepAlive &&
           oLeft.m_nLongestPause == oRight.m_nLongestPause;
}
