#pragma once

/// @file
/// Telegrams of Modbus RTU for reading registers.
///
/// A telegram is a byte string: station, function, data, and a CRC whose low byte comes first.
/// Numbers of 16 bits have their high byte first.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Functions that read registers.
enum EModbusFunction : std::uint8_t
{
    MODBUS_READ_HOLDING_REGISTERS = 3,
    MODBUS_READ_INPUT_REGISTERS = 4
};

/// Reasons that a station gives for refusing a request.
enum EModbusException : std::uint8_t
{
    MODBUS_NO_EXCEPTION = 0,
    MODBUS_ILLEGAL_FUNCTION = 1,
    MODBUS_ILLEGAL_ADDRESS = 2,
    MODBUS_ILLEGAL_VALUE = 3
};

/// What became of a request.
enum EModbusResult
{
    MODBUS_OK,            ///< the values are there
    MODBUS_TIMEOUT,       ///< no answer, or only a part of it
    MODBUS_BAD_CRC,       ///< an answer with a wrong CRC
    MODBUS_EXCEPTION,     ///< the station refused, see the exception code
    MODBUS_WRONG_STATION, ///< another station answered
    MODBUS_MALFORMED,     ///< the answer of another function, or of another length
    MODBUS_SEND_ERROR,    ///< the request could not be sent
    MODBUS_HUNG_UP        ///< the line is gone
};

/// What a client has seen so far.
struct ModbusCounters
{
    /// Counts the result of an attempt.
    void Count(EModbusResult eResult);

    unsigned int nRequests = 0;    ///< requests asked for, repetitions not counted
    unsigned int nRetries = 0;     ///< repetitions
    unsigned int nTimeouts = 0;    ///< attempts without a whole answer
    unsigned int nCrcErrors = 0;   ///< answers with a wrong CRC
    unsigned int nExceptions = 0;  ///< refusals
    unsigned int nOtherErrors = 0; ///< every other failed attempt
};

/// The result as a text, e.g. "time-out".
const char* ModbusResultText(EModbusResult eResult);

/// Registers that one request may ask for.
constexpr std::uint16_t MODBUS_MAX_REGISTERS = 125;
/// Length of every request here, in bytes.
constexpr std::size_t MODBUS_REQUEST_LENGTH = 8;
/// Length of an exception response, the shortest of all, in bytes.
constexpr std::size_t MODBUS_EXCEPTION_LENGTH = 5;

/// A request for the values of consecutive registers.
struct ModbusRequest
{
    std::uint8_t nStation;   ///< address of the station, 1 to 247
    std::uint8_t nFunction;  ///< one of #EModbusFunction
    std::uint16_t nRegister; ///< number of the first register, from 0
    std::uint16_t nCount;    ///< how many, 1 to #MODBUS_MAX_REGISTERS
};

/// The CRC-16 of Modbus.
std::uint16_t ModbusCrc(const std::string& strBytes);

/// The telegram with its CRC behind it.
std::string ModbusWithCrc(const std::string& strBytes);

/// Whether the last two bytes are the CRC of the others.
bool ModbusCrcIsRight(const std::string& strTelegram);

/// The telegram of a request.
std::string ModbusRequestTelegram(const ModbusRequest& oRequest);

/// Reads a request of #MODBUS_REQUEST_LENGTH bytes, the CRC of which was found right.
ModbusRequest ModbusParseRequest(const std::string& strTelegram);

/// The telegram that answers a request with values.
std::string ModbusResponseTelegram(const ModbusRequest& oRequest,
                                   const std::vector<std::uint16_t>& vecValues);

/// The telegram that refuses a request.
std::string ModbusExceptionTelegram(const ModbusRequest& oRequest, EModbusException eException);

/// Whether a telegram begins as an exception response does; it needs two bytes to tell.
bool ModbusIsException(const std::string& strTelegram);

/// Length of the response to a request unless it is an exception, in bytes.
std::size_t ModbusResponseLength(const ModbusRequest& oRequest);

/// Checks a response against its request and reads it.
/// @param oRequest          the request
/// @param strTelegram       the response
/// @param[out] vecValues    the values; unchanged unless the result is #MODBUS_OK
/// @param[out] nException   the exception code; unchanged unless the result is #MODBUS_EXCEPTION
/// @return #MODBUS_OK, #MODBUS_BAD_CRC, #MODBUS_WRONG_STATION, #MODBUS_EXCEPTION or
///         #MODBUS_MALFORMED
EModbusResult ModbusParseResponse(const ModbusRequest& oRequest, const std::string& strTelegram,
                                  std::vector<std::uint16_t>& vecValues, std::uint8_t& nException);

/// Looks for the response to a request among the bytes that came: behind an echo of the request,
/// stray bytes, or responses of other stations and to other requests.
/// @param oRequest          the request
/// @param strReceived       what came since it was sent
/// @param[out] vecValues    the values; unchanged unless the result is #MODBUS_OK
/// @param[out] nException   the exception code; unchanged unless the result is #MODBUS_EXCEPTION
/// @return #MODBUS_OK or #MODBUS_EXCEPTION when it is there; else what can be said of the bytes so
///         far: #MODBUS_BAD_CRC, #MODBUS_WRONG_STATION or #MODBUS_MALFORMED for the last whole
///         response among them, #MODBUS_TIMEOUT when there is none
EModbusResult ModbusFindResponse(const ModbusRequest& oRequest, const std::string& strReceived,
                                 std::vector<std::uint16_t>& vecValues, std::uint8_t& nException);
