#include "tests/app/LogCapture.h"

#include <gtest/gtest.h>
#include <regex>
#include <stdlib.h>
#include <unistd.h>

StandardErrorTo::StandardErrorTo(int nHandle) : m_nFormer(dup(STDERR_FILENO))
{
    dup2(nHandle, STDERR_FILENO);
}

StandardErrorTo::~StandardErrorTo()
{
    dup2(m_nFormer, STDERR_FILENO);
    close(m_nFormer);
}

namespace
{

int UnnamedFile()
{
    char szName[] = "/tmp/tarvo-log-XXXXXX";
    const int nFile = mkstemp(szName);
    unlink(szName);
    return nFile;
}

} // namespace

CapturedLog::CapturedLog() : m_nFile(UnnamedFile()), m_oStandardError(m_nFile) {}

CapturedLog::~CapturedLog()
{
    close(m_nFile);
}

std::string CapturedLog::Take()
{
    std::string strText(static_cast<std::size_t>(lseek(m_nFile, 0, SEEK_END)), '\0');
    const ssize_t nRead = pread(m_nFile, strText.data(), strText.size(), 0);
    EXPECT_EQ(static_cast<ssize_t>(strText.size()), nRead);
    EXPECT_EQ(0, ftruncate(m_nFile, 0));
    lseek(m_nFile, 0, SEEK_SET);
    return strText;
}

std::string CapturedLog::TakeMessages()
{
    std::string strMessages;
    for (const std::string& strLine : Lines(Take()))
        strMessages += WithoutTime(strLine) + "\n";
    return strMessages;
}

std::vector<std::string> Lines(const std::string& strText)
{
    std::vector<std::string> vecLines;
    std::size_t nStart = 0;
    while (nStart < strText.size()) {
        const std::size_t nEnd = strText.find('\n', nStart);
        if (nEnd == std::string::npos) {
            ADD_FAILURE() << "half a line: " << strText.substr(nStart, 200);
            break;
        }
        vecLines.push_back(strText.substr(nStart, nEnd - nStart));
        nStart = nEnd + 1;
    }
    return vecLines;
}

std::string WithoutTime(const std::string& strLine)
{
    static const std::regex TIME(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} [+-]\d{4} )");
    constexpr std::size_t TIME_LENGTH = 30;
    const std::string strTime = strLine.substr(0, TIME_LENGTH);
    EXPECT_TRUE(std::regex_match(strTime, TIME)) << strLine.substr(0, 200);
    return strLine.size() < TIME_LENGTH ? strLine : strLine.substr(TIME_LENGTH);
}
