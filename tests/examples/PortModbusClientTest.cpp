#include "tests/examples/PortModbusClient.h"
#include "examples/modbus/ModbusRtu.h"
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

const ModbusRequest REQUEST = {17, MODBUS_READ_HOLDING_REGISTERS, 107, 3};
const Values VALUES = {0xAE41, 0x5652, 0x4340};
const std::string RESPONSE = ModbusResponseTelegram(REQUEST, VALUES);

/// A client on a port, and at the far end a device that answers as the test says.
class PortModbusClientOnALine : public testing::Test
{
protected:
    PortModbusClientOnALine()
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
        PortModbusClient oClient(m_oPort, nTimeout, nRetries);
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

TEST_F(PortModbusClientOnALine, ReadsRegisters)
{
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
    EXPECT_EQ(1U, m_oCounters.nRequests);
    EXPECT_EQ(0U, m_oCounters.nRetries);
}

TEST_F(PortModbusClientOnALine, KnowsAnExceptionWithoutWaitingForMore)
{
    const std::string strException = ModbusExceptionTelegram(REQUEST, MODBUS_ILLEGAL_VALUE);
    EXPECT_EQ(MODBUS_EXCEPTION, Read(PATIENCE_MS, 5, {strException}));
    EXPECT_EQ(1U, m_oCounters.nExceptions);
    EXPECT_EQ(0U, m_oCounters.nTimeouts);
    EXPECT_EQ(0U, m_oCounters.nRetries);
}

TEST_F(PortModbusClientOnALine, RepeatsAfterWrongAnswersAndCountsThem)
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

TEST_F(PortModbusClientOnALine, GivesUpAfterItsRetries)
{
    EXPECT_EQ(MODBUS_TIMEOUT, Read(50, 2, {"", "", ""}));
    EXPECT_EQ(1U, m_oCounters.nRequests);
    EXPECT_EQ(2U, m_oCounters.nRetries);
    EXPECT_EQ(3U, m_oCounters.nTimeouts);
}

TEST_F(PortModbusClientOnALine, APartOfAnAnswerIsATimeout)
{
    EXPECT_EQ(MODBUS_TIMEOUT, Read(500, 0, {RESPONSE.substr(0, 6)}));
}

TEST_F(PortModbusClientOnALine, AWholeButShorterAnswerIsMalformed)
{
    /// Has the answer already when it begins to wait for it.
    class Answered : public PortModbusClient
    {
    public:
        Answered(CKorSerial& oPort, PseudoTerminal& oLine)
            : PortModbusClient(oPort, 50, 0), m_oPort(oPort), m_oLine(oLine)
        {
        }
        void TelegramSent(const std::string&) override
        {
            const std::string strShort = ModbusResponseTelegram(REQUEST, {1, 2});
            m_oLine.Send(strShort);
            const auto nLength = static_cast<unsigned int>(strShort.size());
            EXPECT_EQ(CKorSerial::SERIAL_OK, m_oPort.WaitForResponse(nLength, PATIENCE_MS));
        }
        CKorSerial& m_oPort;
        PseudoTerminal& m_oLine;
    };
    Answered oClient(m_oPort, m_oLine);
    EXPECT_EQ(MODBUS_MALFORMED, oClient.Read(REQUEST, m_vecValues));
    EXPECT_EQ(1U, oClient.Counters().nOtherErrors);
}

TEST_F(PortModbusClientOnALine, DropsWhatCameBeforeTheRequest)
{
    m_oLine.Send("stale");
    ASSERT_EQ(0, m_oPort.WaitForResponse(5, PATIENCE_MS));
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
}

TEST_F(PortModbusClientOnALine, ReportsWhatCannotBeSent)
{
    m_oPort.close();
    EXPECT_EQ(MODBUS_SEND_ERROR, Read(PATIENCE_MS, 1, {}));
    EXPECT_EQ(2U, m_oCounters.nOtherErrors);
}

TEST_F(PortModbusClientOnALine, ShowsEachTelegram)
{
    class Watching : public PortModbusClient
    {
    public:
        using PortModbusClient::PortModbusClient;
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
