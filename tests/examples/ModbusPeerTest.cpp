#include "examples/modbus/ModbusRtuClient.h"
#include "serial/KorSerial.h"
#include "tests/examples/PortModbusClient.h"
#include "tests/examples/SocatLine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Emulation.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

constexpr std::uint8_t STATION = 17;
constexpr int REGISTERS = 300;

/// What modbus_server.cpp keeps in a register.
std::uint16_t Expected(std::uint8_t nFunction, int nRegister)
{
    return static_cast<std::uint16_t>(
        nFunction == MODBUS_READ_HOLDING_REGISTERS ? nRegister * 257 + 11 : 65535 - nRegister * 3);
}

/// A server made with libmodbus, and our client at the other end of the line.
class ModbusPeer : public testing::Test
{
protected:
    ModbusPeer()
        : m_oServer({MODBUS_SERVER_PROGRAM, m_oLine.DeviceA(), std::to_string(STATION),
                     std::to_string(REGISTERS)}),
          m_oClient(m_oPort, PATIENCE_MS, 0)
    {
        EXPECT_TRUE(m_oServer.WaitForOutput("ready"));
        EXPECT_EQ(0, m_oPort.open(m_oLine.DeviceB().c_str(), CKorSerial::BAUD_19200,
                                  CKorSerial::PARITY_NONE, CKorSerial::STOPBITS_1,
                                  CKorSerial::BYTESIZE_8, nullptr));
    }

    SocatLine m_oLine;
    ChildProcess m_oServer;
    CKorSerial m_oPort;
    PortModbusClient m_oClient;
};

TEST_F(ModbusPeer, AnswersTwoHundredExchangesAndLosesNone)
{
    const unsigned int nExchanges = UnderEmulation() ? 50 : 200;
    for (unsigned int nExchange = 0; nExchange < nExchanges; ++nExchange) {
        ModbusRequest oRequest = {STATION, MODBUS_READ_HOLDING_REGISTERS, 0, 0};
        if (nExchange % 2 == 1)
            oRequest.nFunction = MODBUS_READ_INPUT_REGISTERS;
        oRequest.nCount = static_cast<std::uint16_t>(1 + nExchange * 31 % MODBUS_MAX_REGISTERS);
        oRequest.nRegister =
            static_cast<std::uint16_t>(nExchange * 17 % (REGISTERS - oRequest.nCount + 1U));

        std::vector<std::uint16_t> vecValues;
        ASSERT_EQ(MODBUS_OK, m_oClient.Read(oRequest, vecValues)) << nExchange;
        ASSERT_EQ(oRequest.nCount, vecValues.size());
        for (int nRegister = 0; nRegister < oRequest.nCount; ++nRegister)
            EXPECT_EQ(Expected(oRequest.nFunction, oRequest.nRegister + nRegister),
                      vecValues[static_cast<std::size_t>(nRegister)]);
    }
    EXPECT_EQ(nExchanges, m_oClient.Counters().nRequests);
    EXPECT_EQ(0U, m_oClient.Counters().nRetries);
}

TEST_F(ModbusPeer, RefusesRegistersThatItDoesNotHave)
{
    std::vector<std::uint16_t> vecValues;
    EXPECT_EQ(
        MODBUS_EXCEPTION,
        m_oClient.Read({STATION, MODBUS_READ_HOLDING_REGISTERS, REGISTERS - 1, 2}, vecValues));
    EXPECT_EQ(MODBUS_ILLEGAL_ADDRESS, m_oClient.LastException());
    EXPECT_EQ(MODBUS_OK, m_oClient.Read({STATION, MODBUS_READ_HOLDING_REGISTERS, REGISTERS - 1, 1},
                                        vecValues));
    EXPECT_EQ(std::vector<std::uint16_t>{Expected(MODBUS_READ_HOLDING_REGISTERS, REGISTERS - 1)},
              vecValues);
}

/// The same server, and a client on an event loop. The server makes its end raw, nobody ours.
TEST(ModbusPeerOnALoop, AnswersTwoHundredExchangesAndLosesNone)
{
    const unsigned int nExchanges = UnderEmulation() ? 50 : 200;
    const ScratchDir oFolder;
    ChildProcess oCable(
        {LINESIM_PROGRAM, "--join", "-l", oFolder.File("A"), "-l", oFolder.File("B")});
    ASSERT_TRUE(oCable.WaitForOutput(oFolder.File("B") + "\n"));
    ChildProcess oServer({MODBUS_SERVER_PROGRAM, oFolder.File("A"), std::to_string(STATION),
                          std::to_string(REGISTERS)});
    ASSERT_TRUE(oServer.WaitForOutput("ready"));
    CKorEventLoop oLoop;
    CKorSerialLine oLine;
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLine.Open(oFolder.File("B").c_str()));
    ModbusRtuClient oClient(oLoop, oLine, PATIENCE_MS, 0);
    ASSERT_TRUE(oClient.Attach());
    for (unsigned int nExchange = 0; nExchange < nExchanges; ++nExchange) {
        const auto nCount = static_cast<std::uint16_t>(1 + nExchange * 31 % MODBUS_MAX_REGISTERS);
        const auto nRegister =
            static_cast<std::uint16_t>(nExchange * 17 % (REGISTERS - nCount + 1U));
        ASSERT_TRUE(
            oClient.Start({STATION, MODBUS_READ_HOLDING_REGISTERS, nRegister, nCount},
                          [&](EModbusResult eResult, const std::vector<std::uint16_t>& vecValues) {
                              EXPECT_EQ(MODBUS_OK, eResult);
                              ASSERT_EQ(nCount, vecValues.size());
                              for (int i = 0; i < nCount; ++i)
                                  EXPECT_EQ(Expected(MODBUS_READ_HOLDING_REGISTERS, nRegister + i),
                                            vecValues[static_cast<std::size_t>(i)]);
                              oLoop.Stop();
                          }));
        oLoop.Run();
    }
    EXPECT_EQ(0U, oClient.Counters().nRetries);
}

} // namespace
