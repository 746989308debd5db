#pragma once

#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/support/ScratchDir.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

/// The length of a line with a message of ten bytes.
constexpr unsigned long LINE = 47;

inline void WriteTen(CKorLog& oLog, int nNumber)
{
    oLog.Write(CKorLog::LEVEL_INFO, "line %05d", nNumber);
}

inline bool Exists(const std::string& strName)
{
    return access(strName.c_str(), F_OK) == 0;
}

inline std::string Messages(const std::string& strName)
{
    std::string strMessages;
    for (const std::string& strLine : Lines(ReadFile(strName)))
        strMessages += WithoutTime(strLine) + "\n";
    return strMessages;
}

class KorLogFile : public testing::Test
{
protected:
    std::string Name(int nFormer = 0) const
    {
        return m_oDir.File("log") + (nFormer == 0 ? "" : "." + std::to_string(nFormer));
    }
    std::string WholeLog(int nKeep) const
    {
        std::string strText;
        for (int nFormer = nKeep; nFormer >= 0; --nFormer)
            strText += Exists(Name(nFormer)) ? Messages(Name(nFormer)) : "";
        return strText;
    }
    static std::string Numbers(int nFirst, int nLast)
    {
        std::string strText;
        char szLine[32];
        for (int i = nFirst; i <= nLast; ++i) {
            std::snprintf(szLine, sizeof szLine, "info: line %05d\n", i);
            strText += szLine;
        }
        return strText;
    }

    const ScratchDir m_oDir;
    CKorLog m_oLog;
};
