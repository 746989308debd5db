#include "serial/KorSerial.h"
#include "serial/KorSerialLine.h"
#include "tests/examples/SocatLine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/ScratchDir.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace
{

// As receivers send them; the checksums are theirs.
const char* const RECORDED[] = {
    "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47",
    "$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1*39",
    "$GPGSV,2,1,08,01,40,083,46,02,17,308,41,12,07,344,39,14,22,228,45*75",
    "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A",
    "$GPGLL,4916.45,N,12311.12,W,225444,A,*1D",
};

/// The exclusive or of everything between "$" and "*".
unsigned int Checksum(const std::string& strSentence)
{
    unsigned int nSum = 0;
    for (std::size_t nPos = 1; nPos < strSentence.find('*'); ++nPos)
        nSum ^= static_cast<unsigned char>(strSentence[nPos]);
    return nSum;
}

bool ChecksumIsRight(const std::string& strSentence)
{
    const std::size_t nStar = strSentence.find('*');
    char szSum[8];
    std::snprintf(szSum, sizeof szSum, "*%02X\r\n", Checksum(strSentence));
    return nStar != std::string::npos && strSentence.substr(nStar) == szSum;
}

/// A recorded sentence, or one with a number of its own.
std::string Sentence(int nNumber)
{
    if (nNumber % 10 < 5)
        return RECORDED[nNumber % 10] + std::string("\r\n");
    char szSentence[96];
    std::snprintf(szSentence, sizeof szSentence, "$GPXTE,A,A,%d.%d,L,N", nNumber, nNumber % 7);
    const unsigned int nSum = Checksum(szSentence + std::string("*"));
    char szSum[8];
    std::snprintf(szSum, sizeof szSum, "*%02X\r\n", nSum);
    return std::string(szSentence) + szSum;
}

TEST(Nmea, SentencesAreTakenByTheirDelimiterWithRightChecksums)
{
    constexpr int SENTENCES = 300;
    std::string strAll;
    for (int nNumber = 0; nNumber < SENTENCES; ++nNumber)
        strAll += Sentence(nNumber);
    const ScratchDir oFolder;
    WriteFile(oFolder.File("sentences"), strAll);

    const SocatLine oLine;
    CKorSerial oPort;
    ASSERT_EQ(0, oPort.open(oLine.DeviceB().c_str(), CKorSerial::BAUD_4800, CKorSerial::PARITY_NONE,
                            CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr));
    ChildProcess oReceiver({SOCAT_PROGRAM, "-u", "-b", "50", "OPEN:" + oFolder.File("sentences"),
                            "OPEN:" + oLine.DeviceA() + ",noctty"});
    for (int nNumber = 0; nNumber < SENTENCES; ++nNumber) {
        std::string strSentence;
        ASSERT_EQ(0, oPort.WaitForData("\r\n", strSentence, PATIENCE_MS)) << nNumber;
        EXPECT_TRUE(ChecksumIsRight(strSentence)) << strSentence;
        EXPECT_EQ(Sentence(nNumber), strSentence);
    }
    EXPECT_EQ("", oPort.GetReceivedData());
    EXPECT_EQ(0, oReceiver.Wait().nExitStatus);
}

TEST(Nmea, SentencesAreReadFromALineThatNobodyMadeRaw)
{
    constexpr int SENTENCES = 300;
    const PseudoTerminal oTerminal;
    CKorSerialLine oLine;
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLine.Open(oTerminal.Name()));
    std::thread oReceiver([&oTerminal] {
        for (int nNumber = 0; nNumber < SENTENCES; ++nNumber)
            oTerminal.Send(Sentence(nNumber));
    });
    for (int nNumber = 0; nNumber < SENTENCES; ++nNumber) {
        std::string strSentence;
        EXPECT_EQ(CKorSerial::SERIAL_OK, oLine.ReadUntil("\r\n", strSentence, PATIENCE_MS));
        EXPECT_TRUE(ChecksumIsRight(strSentence)) << strSentence;
        EXPECT_EQ(Sentence(nNumber), strSentence);
    }
    oReceiver.join();
    EXPECT_EQ(0U, oLine.GetHeldCount());
}

TEST(Nmea, ADamagedSentenceHasAWrongChecksum)
{
    EXPECT_TRUE(ChecksumIsRight(Sentence(0)));
    std::string strDamaged = Sentence(0);
    strDamaged[10] = 'x';
    EXPECT_FALSE(ChecksumIsRight(strDamaged));
}

} // namespace
