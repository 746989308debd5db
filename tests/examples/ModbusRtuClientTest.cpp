#include "examples/modbus/ModbusRtuClient.h"
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
const Values OLD_VALUES = {1, 2, 3};
const std::string RESPONSE = ModbusResponseTelegram(REQUEST, VALUES);
const std::string LATE_RESPONSE = ModbusResponseTelegram(REQUEST, OLD_VALUES);

/// A client on an event loop, and at the far end of a line that nobody made raw a device that
/// answers as the test says.
class ModbusRtuClientOnALoop : public testing::Test
{
protected:
    ModbusRtuClientOnALoop() { EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(m_oTerminal.Name())); }

    /// Answers one request after the other with these telegrams.
    std::thread Device(const std::vector<std::string>& vecAnswers)
    {
        return std::thread([this, vecAnswers]() {
            for (const std::string& strAnswer : vecAnswers) {
                EXPECT_EQ(ModbusRequestTelegram(REQUEST),
                          m_oTerminal.Receive(MODBUS_REQUEST_LENGTH));
                m_oTerminal.Send(strAnswer);
            }
        });
    }

    EModbusResult Read(ModbusRtuClient& oClient)
    {
        EModbusResult eResult = MODBUS_MALFORMED;
        EXPECT_TRUE(oClient.Start(REQUEST, [&](EModbusResult eGot, const Values& vecGot) {
            eResult = eGot;
            m_vecValues = vecGot;
            m_oLoop.Stop();
        }));
        m_oLoop.Run();
        return eResult;
    }

    EModbusResult Read(unsigned int nTimeout, unsigned int nRetries,
                       const std::vector<std::string>& vecAnswers)
    {
        std::thread oDevice = Device(vecAnswers);
        ModbusRtuClient oClient(m_oLoop, m_oLine, nTimeout, nRetries);
        EXPECT_TRUE(oClient.Attach());
        const EModbusResult eResult = Read(oClient);
        m_oCounters = oClient.Counters();
        m_nException = oClient.LastException();
        oDevice.join();
        return eResult;
    }

    PseudoTerminal m_oTerminal;
    CKorEventLoop m_oLoop;
    CKorSerialLine m_oLine;
    Values m_vecValues;
    ModbusCounters m_oCounters;
    std::uint8_t m_nException = 0;
};

TEST_F(ModbusRtuClientOnALoop, ReadsRegisters)
{
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
    EXPECT_EQ(1U, m_oCounters.nRequests);
    EXPECT_EQ(0U, m_oCounters.nRetries);
}

TEST_F(ModbusRtuClientOnALoop, PassesOverAnEchoOfItsRequest)
{
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {ModbusRequestTelegram(REQUEST) + RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
}

TEST_F(ModbusRtuClientOnALoop, PassesOverAStrayByteBeforeTheAnswer)
{
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {std::string(1, '\0') + RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
}

TEST_F(ModbusRtuClientOnALoop, TakesTheRightAnswerBehindThatOfAnotherUnit)
{
    const std::string strOther = ModbusResponseTelegram({18, 3, 107, 3}, OLD_VALUES);
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 0, {strOther + RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
}

TEST_F(ModbusRtuClientOnALoop, DropsAnAnswerThatIsLateByOneRequest)
{
    constexpr unsigned int TIMEOUT = 500;
    std::thread oDevice = Device({"", RESPONSE});
    ModbusRtuClient oClient(m_oLoop, m_oLine, TIMEOUT, 0);
    EXPECT_TRUE(oClient.Attach());
    EXPECT_EQ(MODBUS_TIMEOUT, Read(oClient));
    oClient.SetLimits(PATIENCE_MS, 0);
    // After a request that was sent at once, before one that is held back.
    m_oLoop.CallAfter(1, [this] { m_oTerminal.Send(LATE_RESPONSE); });
    EXPECT_EQ(MODBUS_OK, Read(oClient));
    EXPECT_EQ(VALUES, m_vecValues);
    oDevice.join();
}

TEST_F(ModbusRtuClientOnALoop, TellsTheCodeOfAnExceptionAndDoesNotAskAgain)
{
    const std::string strException = ModbusExceptionTelegram(REQUEST, MODBUS_ILLEGAL_VALUE);
    EXPECT_EQ(MODBUS_EXCEPTION, Read(PATIENCE_MS, 5, {strException}));
    EXPECT_EQ(MODBUS_ILLEGAL_VALUE, m_nException);
    EXPECT_EQ(1U, m_oCounters.nExceptions);
    EXPECT_EQ(0U, m_oCounters.nRetries);
}

TEST_F(ModbusRtuClientOnALoop, TakesNoAnswerThatIsTooLong)
{
    EXPECT_EQ(MODBUS_MALFORMED,
              Read(PATIENCE_MS, 0, {ModbusResponseTelegram(REQUEST, {1, 2, 3, 4})}));
}

TEST_F(ModbusRtuClientOnALoop, TakesHalfAnAnswerAndNoneAsTimeouts)
{
    EXPECT_EQ(MODBUS_TIMEOUT, Read(50, 1, {RESPONSE.substr(0, 6), ""}));
    EXPECT_EQ(2U, m_oCounters.nTimeouts);
    EXPECT_EQ(1U, m_oCounters.nRetries);
}

TEST_F(ModbusRtuClientOnALoop, AsksAgainAfterAWrongCrcWithoutWaitingForTheTimeout)
{
    std::string strBadCrc = RESPONSE;
    strBadCrc.back() = '\0';
    EXPECT_EQ(MODBUS_OK, Read(PATIENCE_MS, 1, {strBadCrc, RESPONSE}));
    EXPECT_EQ(VALUES, m_vecValues);
    EXPECT_EQ(1U, m_oCounters.nCrcErrors);
    EXPECT_EQ(1U, m_oCounters.nRetries);
    EXPECT_EQ(0U, m_oCounters.nTimeouts);
}

TEST_F(ModbusRtuClientOnALoop, ServesOneRequestAtATime)
{
    ModbusRtuClient oClient(m_oLoop, m_oLine, PATIENCE_MS, 0);
    EXPECT_TRUE(oClient.Attach());
    EXPECT_TRUE(oClient.Start(REQUEST, [](EModbusResult, const Values&) {}));
    EXPECT_TRUE(oClient.IsBusy());
    EXPECT_FALSE(oClient.Start(REQUEST, [](EModbusResult, const Values&) {}));
    oClient.Detach();
    EXPECT_FALSE(oClient.IsBusy());
}

TEST_F(ModbusRtuClientOnALoop, TellsAHangUpAtOnceAndOnce)
{
    class Watching : public ModbusRtuClient
    {
    public:
        using ModbusRtuClient::ModbusRtuClient;
        void LineHungUp() override { ++m_nHangUps; }
        int m_nHangUps = 0;
    };
    Watching oClient(m_oLoop, m_oLine, PATIENCE_MS, 5);
    EXPECT_TRUE(oClient.Attach());
    m_oLoop.CallAfter(1, [this] { m_oTerminal.HangUp(); });
    EXPECT_EQ(MODBUS_HUNG_UP, Read(oClient));
    EXPECT_EQ(1, oClient.m_nHangUps);
    EXPECT_EQ(MODBUS_HUNG_UP, Read(oClient));
    EXPECT_EQ(1, oClient.m_nHangUps);
}

} // namespace
