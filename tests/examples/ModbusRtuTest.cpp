#include "examples/modbus/ModbusRtu.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
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

/// "OK", "time-out", ... for the bytes that came in answer to REQUEST.
std::string Found(const std::string& strReceived)
{
    Values vecValues;
    std::uint8_t nException = 0;
    const EModbusResult eResult = ModbusFindResponse(REQUEST, strReceived, vecValues, nException);
    EXPECT_EQ(eResult == MODBUS_OK, vecValues == VALUES);
    return ModbusResultText(eResult);
}

const std::string OTHERS = ModbusResponseTelegram({18, 3, 107, 3}, {1, 2, 3});

TEST(ModbusRtu, FindsTheResponseBehindWhatIsNone)
{
    EXPECT_EQ(Found(RESPONSE), ModbusResultText(MODBUS_OK));
    EXPECT_EQ(Found("\xFF" + RESPONSE), ModbusResultText(MODBUS_OK));
    EXPECT_EQ(Found("\x11\x03" + RESPONSE + "more"), ModbusResultText(MODBUS_OK));
    EXPECT_EQ(Found(ModbusRequestTelegram(REQUEST) + RESPONSE), ModbusResultText(MODBUS_OK));
    EXPECT_EQ(Found(OTHERS + RESPONSE), ModbusResultText(MODBUS_OK));
    EXPECT_EQ(Found(ModbusResponseTelegram({17, 3, 0, 2}, {1, 2}) + RESPONSE),
              ModbusResultText(MODBUS_OK));
    EXPECT_EQ(Found("?" + ModbusExceptionTelegram(REQUEST, MODBUS_ILLEGAL_ADDRESS)),
              ModbusResultText(MODBUS_EXCEPTION));
}

TEST(ModbusRtu, SaysWhatCameInsteadOfTheResponse)
{
    std::string strBadCrc = RESPONSE;
    strBadCrc.back() = '\0';
    EXPECT_EQ(Found(""), ModbusResultText(MODBUS_TIMEOUT));
    EXPECT_EQ(Found(RESPONSE.substr(0, 10)), ModbusResultText(MODBUS_TIMEOUT));
    EXPECT_EQ(Found(ModbusRequestTelegram(REQUEST)), ModbusResultText(MODBUS_TIMEOUT));
    EXPECT_EQ(Found(strBadCrc), ModbusResultText(MODBUS_BAD_CRC));
    EXPECT_EQ(Found(OTHERS), ModbusResultText(MODBUS_WRONG_STATION));
    EXPECT_EQ(Found(ModbusResponseTelegram(REQUEST, {1, 2})), ModbusResultText(MODBUS_MALFORMED));
}

} // namespace
