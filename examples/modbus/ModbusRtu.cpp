#include "examples/modbus/ModbusRtu.h"

namespace
{

constexpr std::uint8_t EXCEPTION_FLAG = 0x80;

std::uint8_t ByteAt(const std::string& strBytes, std::size_t nPos)
{
    return static_cast<std::uint8_t>(strBytes[nPos]);
}

std::uint16_t WordAt(const std::string& strBytes, std::size_t nPos)
{
    return static_cast<std::uint16_t>(ByteAt(strBytes, nPos) << 8 | ByteAt(strBytes, nPos + 1));
}

void AppendByte(std::string& strBytes, unsigned int nByte)
{
    strBytes += static_cast<char>(nByte);
}

void AppendWord(std::string& strBytes, unsigned int nWord)
{
    AppendByte(strBytes, nWord >> 8);
    AppendByte(strBytes, nWord & 0xFF);
}

} // namespace

void ModbusCounters::Count(EModbusResult eResult)
{
    if (eResult == MODBUS_TIMEOUT)
        ++nTimeouts;
    else if (eResult == MODBUS_BAD_CRC)
        ++nCrcErrors;
    else if (eResult == MODBUS_EXCEPTION)
        ++nExceptions;
    else if (eResult != MODBUS_OK)
        ++nOtherErrors;
}

const char* ModbusResultText(EModbusResult eResult)
{
    static constexpr const char* TEXTS[] = {"ok",          "time-out",        "bad CRC",
                                            "exception",   "wrong station",   "malformed answer",
                                            "cannot send", "the line hung up"};
    return TEXTS[eResult];
}

std::uint16_t ModbusCrc(const std::string& strBytes)
{
    std::uint16_t nCrc = 0xFFFF;
    for (const char c : strBytes) {
        nCrc ^= static_cast<std::uint8_t>(c);
        for (int nBit = 0; nBit < 8; ++nBit) {
            const bool bCarry = (nCrc & 1) != 0;
            nCrc = static_cast<std::uint16_t>(nCrc >> 1);
            if (bCarry)
                nCrc ^= 0xA001;
        }
    }
    return nCrc;
}

std::string ModbusWithCrc(const std::string& strBytes)
{
    std::string strTelegram = strBytes;
    const unsigned int nCrc = ModbusCrc(strBytes);
    AppendByte(strTelegram, nCrc & 0xFF);
    AppendByte(strTelegram, nCrc >> 8);
    return strTelegram;
}

bool ModbusCrcIsRight(const std::string& strTelegram)
{
    return strTelegram.size() > 2 &&
           ModbusWithCrc(strTelegram.substr(0, strTelegram.size() - 2)) == strTelegram;
}

std::string ModbusRequestTelegram(const ModbusRequest& oRequest)
{
    std::string strTelegram;
    AppendByte(strTelegram, oRequest.nStation);
    AppendByte(strTelegram, oRequest.nFunction);
    AppendWord(strTelegram, oRequest.nRegister);
    AppendWord(strTelegram, oRequest.nCount);
    return ModbusWithCrc(strTelegram);
}

ModbusRequest ModbusParseRequest(const std::string& strTelegram)
{
    return {ByteAt(strTelegram, 0), ByteAt(strTelegram, 1), WordAt(strTelegram, 2),
            WordAt(strTelegram, 4)};
}

std::string ModbusResponseTelegram(const ModbusRequest& oRequest,
                                   const std::vector<std::uint16_t>& vecValues)
{
    std::string strTelegram;
    AppendByte(strTelegram, oRequest.nStation);
    AppendByte(strTelegram, oRequest.nFunction);
    AppendByte(strTelegram, static_cast<unsigned int>(vecValues.size() * 2));
    for (const std::uint16_t nValue : vecValues)
        AppendWord(strTelegram, nValue);
    return ModbusWithCrc(strTelegram);
}

std::string ModbusExceptionTelegram(const ModbusRequest& oRequest, EModbusException eException)
{
    std::string strTelegram;
    AppendByte(strTelegram, oRequest.nStation);
    AppendByte(strTelegram, oRequest.nFunction | EXCEPTION_FLAG);
    AppendByte(strTelegram, eException);
    return ModbusWithCrc(strTelegram);
}

bool ModbusIsException(const std::string& strTelegram)
{
    return strTelegram.size() >= 2 && (ByteAt(strTelegram, 1) & EXCEPTION_FLAG) != 0;
}

std::size_t ModbusResponseLength(const ModbusRequest& oRequest)
{
    return 5 + std::size_t{oRequest.nCount} * 2;
}

EModbusResult ModbusParseResponse(const ModbusRequest& oRequest, const std::string& strTelegram,
                                  std::vector<std::uint16_t>& vecValues, std::uint8_t& nException)
{
    if (!ModbusCrcIsRight(strTelegram))
        return MODBUS_BAD_CRC;
    if (strTelegram.size() < MODBUS_EXCEPTION_LENGTH)
        return MODBUS_MALFORMED;
    if (ByteAt(strTelegram, 0) != oRequest.nStation)
        return MODBUS_WRONG_STATION;

    if (ByteAt(strTelegram, 1) == (oRequest.nFunction | EXCEPTION_FLAG)) {
        nException = ByteAt(strTelegram, 2);
        return MODBUS_EXCEPTION;
    }
    if (ByteAt(strTelegram, 1) != oRequest.nFunction ||
        strTelegram.size() != ModbusResponseLength(oRequest) ||
        ByteAt(strTelegram, 2) != oRequest.nCount * 2)
        return MODBUS_MALFORMED;

    vecValues.clear();
    for (std::size_t nPos = 3; nPos < strTelegram.size() - 2; nPos += 2)
        vecValues.push_back(WordAt(strTelegram, nPos));
    return MODBUS_OK;
}

namespace
{

/// No response is longer, in bytes.
constexpr std::size_t MAX_LENGTH = 5 + 255;

/// Length of the response that begins with these bytes, as its own bytes tell; 0 when they are too
/// few to tell.
std::size_t LengthByItsBytes(const std::string& strBytes)
{
    if (strBytes.size() < MODBUS_EXCEPTION_LENGTH)
        return 0;
    return ModbusIsException(strBytes) ? MODBUS_EXCEPTION_LENGTH : 5U + ByteAt(strBytes, 2);
}

/// Whether these bytes begin as a response to the request would.
bool BeginsAsResponse(const ModbusRequest& oRequest, const std::string& strBytes)
{
    return ByteAt(strBytes, 0) == oRequest.nStation &&
           (ByteAt(strBytes, 1) & ~EXCEPTION_FLAG) == oRequest.nFunction;
}

} // namespace

EModbusResult ModbusFindResponse(const ModbusRequest& oRequest, const std::string& strReceived,
                                 std::vector<std::uint16_t>& vecValues, std::uint8_t& nException)
{
    const std::string strEcho = ModbusRequestTelegram(oRequest);
    const bool bEcho = strReceived.compare(0, strEcho.size(), strEcho) == 0;
    EModbusResult eSoFar = MODBUS_TIMEOUT;
    for (std::size_t nPos = bEcho ? strEcho.size() : 0; nPos < strReceived.size(); ++nPos) {
        const std::string strRest = strReceived.substr(nPos, MAX_LENGTH);
        const std::size_t nLength = LengthByItsBytes(strRest);
        if (nLength == 0 || nLength > strRest.size())
            continue;
        const EModbusResult eResult =
            ModbusParseResponse(oRequest, strRest.substr(0, nLength), vecValues, nException);
        if (eResult == MODBUS_OK || eResult == MODBUS_EXCEPTION)
            return eResult;
        if (eResult != MODBUS_BAD_CRC)
            eSoFar = eResult;
        else if (eSoFar == MODBUS_TIMEOUT && BeginsAsResponse(oRequest, strRest))
            eSoFar = MODBUS_BAD_CRC;
    }
    return eSoFar;
}
