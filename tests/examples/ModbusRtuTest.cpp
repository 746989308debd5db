#include "examples/modbus/ModbusRtu.h"
#include "examples/modbus/ModbusRtuClient.h"
#include "serial/KorSerial.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Values = std::vector<std::uint16_t>;

std::string Bytes(const std::vector<int>& vecBytes)
{
    std::string strBytes;
    for (const int nByte : vecBytes)
        strBytes += static_cast<char>(nByte);
    return strBytes;
}

// The worked example of the protocol's description: station 17, holding registers 107 to 109.
const ModbusRequest REQUEST = {17, MODBUS_READ_HOLDING_REGISTERS, 107, 3};
const std::string RESPONSE =
    Bytes({0x11, 0x03, 0x06, 0xAE, 0x41, 0x56, 0x52, 0x43, 0x40, 0x49, 0xAD});
const Values VALUES = {0xAE41, 0x5652, 0x4340};

EModbusResult Parse(const std::string& strTelegram)
{
    Values vecValues;
    std::uint8_t nException = 0;
    return ModbusParseResponse(REQUEST, strTelegram, vecValues, nException);
}

TEST(ModbusRtu, RequestTelegramsAreThoseOfTheProtocol)
{
    EXPECT_EQ(Bytes({0x11, 0x03, 0x00, 0x6B, 0x00, 0x03, 0x76, 0x87}),
              ModbusRequestTelegram(REQUEST));
    EXPECT_EQ(Bytes({0x01, 0x04, 0x00, 0x00, 0x00, 0x0A, 0x70, 0x0D}),
              ModbusRequestTelegram({1, MODBUS_READ_INPUT_REGISTERS, 0, 10}));
}

TEST(ModbusRtu, RequestsAreReadAsTheyWereWritten)
{
    const ModbusRequest oRead = ModbusParseRequest(ModbusRequestTelegram({247, 4, 0xFFFE, 0x0102}));
    EXPECT_EQ(247, oRead.nStation);
    EXPECT_EQ(4, oRead.nFunction);
    EXPECT_EQ(0xFFFE, oRead.nRegister);
    EXPECT_EQ(0x0102, oRead.nCount);
}

TEST(ModbusRtu, ResponsesAreReadAsTheyWereWritten)
{
    EXPECT_EQ(RESPONSE, ModbusResponseTelegram(REQUEST, VALUES));
    EXPECT_EQ(RESPONSE.size(), ModbusResponseLength(REQUEST));
    Values vecValues;
    std::uint8_t nException = 77;
    EXPECT_EQ(MODBUS_OK, ModbusParseResponse(REQUEST, RESPONSE, vecValues, nException));
    EXPECT_EQ(VALUES, vecValues);
    EXPECT_EQ(77, nException);
}

TEST(ModbusRtu, EveryChangedBitIsABadCrc)
{
    for (std::size_t nBit = 0; nBit < RESPONSE.size() * 8; ++nBit) {
        std::string strDamaged = RESPONSE;
        strDamaged[nBit / 8] = static_cast<char>(strDamaged[nBit / 8] ^ (1 << nBit % 8));
        EXPECT_EQ(MODBUS_BAD_CRC, Parse(strDamaged)) << nBit;
    }
    for (std::size_t nLength = 0; nLength < RESPONSE.size(); ++nLength)
        EXPECT_EQ(MODBUS_BAD_CRC, Parse(RESPONSE.substr(0, nLength))) << nLength;
}

TEST(ModbusRtu, TellsTheWrongAnswersApart)
{
    EXPECT_EQ(MODBUS_WRONG_STATION, Parse(ModbusResponseTelegram({18, 3, 107, 3}, VALUES)));
    EXPECT_EQ(MODBUS_MALFORMED, Parse(ModbusResponseTelegram({17, 4, 107, 3}, VALUES)));
    EXPECT_EQ(MODBUS_MALFORMED, Parse(ModbusResponseTelegram({17, 3, 107, 2}, {1, 2})));
    EXPECT_EQ(MODBUS_MALFORMED, Parse(ModbusWithCrc("\x11\x03")));
    EXPECT_EQ(MODBUS_MALFORMED, Parse(ModbusWithCrc("\x11\x03\x05"
                                                    "abcdef")));
}

TEST(ModbusRtu, ReadsTheCodeOfAnException)
{
    const std::string strTelegram = ModbusExceptionTelegram(REQUEST, MODBUS_ILLEGAL_ADDRESS);
    EXPECT_EQ(MODBUS_EXCEPTION_LENGTH, strTelegram.size());
    EXPECT_TRUE(ModbusIsException(strTelegram));
    EXPECT_FALSE(ModbusIsException(RESPONSE));
    Values vecValues = {1};
    std::uint8_t nException = 0;
    EXPECT_EQ(MODBUS_EXCEPTION, ModbusParseResponse(REQUEST, strTelegram, vecValues, nException));
    EXPECT_EQ(MODBUS_ILLEGAL_ADDRESS, nException);
    EXPECT_EQ(Values{1}, vecValues);
}

/// A client on a port, and at the far end a device that answers as the test says.
class ModbusRtuClientOnALine : public testing::Test
{
protected:
    ModbusRtuClientOnALine()
    {
        m_oLine.MakeRaw();
        EXPECT_EQ(0, m_oPort.open(m_oLine.Name(), CKorSerial::BAUD_19200, CKorSerial::PARITY_NONE,
                                  CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr));
    }

    /// Answers one request after the other with these telegrams.
    std::thread Device(const std::vector<std::string>& vecAnswers)
    {
        return std::thread([this, vecAnswers]() {
            for (const std::string& strAnswer : vecAnswers) {
                EXPECT_EQ(ModbusRequestTelegram(REQUEST), m_oLine.Receive(MODBUS_REQUEST_LENGTH));
                m_oLine.Send(strAnswer);
            }
        });
    }

    EModbusResult Read(int nTimeout, unsigned int nRetries,
                       const std::vector<std::string>& vecAnswers)
    {
        std::thread oDevice = Device(vecAnswers);
        ModbusRtuClient oClient(m_oPort, nTimeout, nRetries);
        const EModbusResult eResult = oClient.Read(REQUEST, m_vecValues);
        m_oCounters = oClient.Counters();
        oDevice.join();
        return eResult;
    }

    PseudoTerminal m_oLine;
    CKorSerial m_oPort;
    Values m_vecValues;
    ModbusCounters m_oCounters;
};

TEST_F(ModbusRtuClientOnALine, ReadsRegisters)
{
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
    EXPECT_EQ(1U, m_oCounters.nRequests);
    EXPECT_EQ(0U, m_oCounters.nRetries);
}

TEST_F(ModbusRtuClientOnALine, KnowsAnExceptionWithoutWaitingForMore)
{
    const std::string strException = ModbusExceptionTelegram(REQUEST, MODBUS_ILLEGAL_VALUE);
    EXPECT_EQ(MODBUS_EXCEPTION, Read(PATIENCE_MS, 5, {strException}));
    EXPECT_EQ(1U, m_oCounters.nExceptions);
    EXPECT_EQ(0U, m_oCounters.nTimeouts);
    EXPECT_EQ(0U, m_oCounters.nRetries);
}

TEST_F(ModbusRtuClientOnALine, RepeatsAfterWrongAnswersAndCountsThem)
{
    std::string strBadCrc = RESPONSE;
    strBadCrc.back() = '\0';
    const std::string strOther = ModbusResponseTelegram({18, 3, 107, 3}, VALUES);
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 2, {strBadCrc, strOther, RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
    EXPECT_EQ(1U, m_oCounters.nRequests);
    EXPECT_EQ(2U, m_oCounters.nRetries);
    EXPECT_EQ(1U, m_oCounters.nCrcErrors);
    EXPECT_EQ(1U, m_oCounters.nOtherErrors);
    EXPECT_EQ(0U, m_oCounters.nTimeouts);
}

TEST_F(ModbusRtuClientOnALine, GivesUpAfterItsRetries)
{
    EXPECT_EQ(MODBUS_TIMEOUT, Read(50, 2, {"", "", ""}));
    EXPECT_EQ(1U, m_oCounters.nRequests);
    EXPECT_EQ(2U, m_oCounters.nRetries);
    EXPECT_EQ(3U, m_oCounters.nTimeouts);
}

TEST_F(ModbusRtuClientOnALine, APartOfAnAnswerIsATimeout)
{
    EXPECT_EQ(MODBUS_TIMEOUT, Read(500, 0, {RESPONSE.substr(0, 6)}));
}

TEST_F(ModbusRtuClientOnALine, AWholeButShorterAnswerIsMalformed)
{
    EXPECT_EQ(MODBUS_MALFORMED, Read(3000, 0, {ModbusResponseTelegram(REQUEST, {1, 2})}));
    EXPECT_EQ(1U, m_oCounters.nOtherErrors);
}

TEST_F(ModbusRtuClientOnALine, DropsWhatCameBeforeTheRequest)
{
    m_oLine.Send("stale");
    ASSERT_EQ(0, m_oPort.WaitForResponse(5, PATIENCE_MS));
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
}

TEST_F(ModbusRtuClientOnALine, ReportsWhatCannotBeSent)
{
    m_oPort.close();
    EXPECT_EQ(MODBUS_SEND_ERROR, Read(PATIENCE_MS, 1, {}));
    EXPECT_EQ(2U, m_oCounters.nOtherErrors);
}

TEST_F(ModbusRtuClientOnALine, ShowsEachTelegram)
{
    class Watching : public ModbusRtuClient
    {
    public:
        using ModbusRtuClient::ModbusRtuClient;
        void TelegramSent(const std::string& strTelegram) override { m_strSent += strTelegram; }
        void TelegramReceived(const std::string& strTelegram) override
        {
            m_strReceived += strTelegram;
        }
        std::string m_strSent;
        std::string m_strReceived;
    };
    std::thread oDevice = Device({RESPONSE});
    Watching oClient(m_oPort, PATIENCE_MS, 0);
    EXPECT_EQ(MODBUS_OK, oClient.Read(REQUEST, m_vecValues));
    EXPECT_EQ(ModbusRequestTelegram(REQUEST), oClient.m_strSent);
    EXPECT_EQ(RESPONSE, oClient.m_strReceived);
    oDevice.join();
}

} // namespace
