// Telegrams of Modbus RTU: a response is found behind anything, and nothing else is taken for one.

#include "examples/modbus/ModbusRtu.h"
#include "tests/fuzz/Fuzz.h"
#include "tools/linesim/Crc16.h"

namespace
{

using Values = std::vector<std::uint16_t>;

struct Answer
{
    EModbusResult eResult = MODBUS_TIMEOUT;
    Values vecValues{4711};
    std::uint8_t nException = 99;
};

Answer FindIn(const ModbusRequest& oRequest, const std::string& strReceived)
{
    Answer oAnswer;
    oAnswer.eResult =
        ModbusFindResponse(oRequest, strReceived, oAnswer.vecValues, oAnswer.nException);
    return oAnswer;
}

void CheckTelegrams(const ModbusRequest& oRequest, const std::string& strBytes)
{
    ExpectEqual(strBytes + Crc16Text(strBytes), ModbusWithCrc(strBytes), "the CRC");
    Expect(ModbusCrcIsRight(ModbusWithCrc(strBytes)) || strBytes.empty(), "a CRC is right");
    const ModbusRequest oRead = ModbusParseRequest(ModbusRequestTelegram(oRequest));
    Expect(oRead.nStation == oRequest.nStation && oRead.nFunction == oRequest.nFunction &&
               oRead.nRegister == oRequest.nRegister && oRead.nCount == oRequest.nCount,
           "a request reads back");
}

/// The first place where the bytes are a response.
std::size_t PlaceOf(const ModbusRequest& oRequest, const std::string& strReceived)
{
    for (std::size_t nPos = 0; nPos < strReceived.size(); ++nPos) {
        for (const std::size_t nLength :
             {MODBUS_EXCEPTION_LENGTH, ModbusResponseLength(oRequest)}) {
            const std::string strPart = strReceived.substr(nPos, nLength);
            Values vecValues;
            std::uint8_t nException = 0;
            const auto eResult = ModbusParseResponse(oRequest, strPart, vecValues, nException);
            const bool bException =
                eResult == MODBUS_EXCEPTION && nLength == MODBUS_EXCEPTION_LENGTH;
            if (strPart.size() == nLength && (eResult == MODBUS_OK || bException))
                return nPos;
        }
    }
    return std::string::npos;
}

void CheckAny(const ModbusRequest& oRequest, const std::string& strReceived)
{
    const Answer oAnswer = FindIn(oRequest, strReceived);
    const bool bFound = oAnswer.eResult == MODBUS_OK || oAnswer.eResult == MODBUS_EXCEPTION;
    const std::string strEcho = ModbusRequestTelegram(oRequest);
    const bool bEcho = strReceived.compare(0, strEcho.size(), strEcho) == 0;
    const std::size_t nSkipped = bEcho ? strEcho.size() : 0;
    ExpectEqual(PlaceOf(oRequest, strReceived.substr(nSkipped)) != std::string::npos, bFound,
                "a response is found where one is");
    if (oAnswer.eResult != MODBUS_OK)
        Expect(oAnswer.vecValues == Values{4711}, "no values of what is no response");
    else
        ExpectEqual<std::size_t>(oRequest.nCount, oAnswer.vecValues.size(), "as many as asked for");
    if (oAnswer.eResult != MODBUS_EXCEPTION)
        Expect(oAnswer.nException == 99, "no exception of what is none");
}

/// Behind an echo and noise, if the noise itself is no response.
void CheckRight(const ModbusRequest& oRequest, const Values& vecValues, const std::string& strNoise)
{
    const std::string strResponse = ModbusResponseTelegram(oRequest, vecValues);
    for (const std::string& strHead : {std::string(), ModbusRequestTelegram(oRequest)}) {
        const std::string strReceived = std::string(strHead).append(strNoise).append(strResponse);
        if (PlaceOf(oRequest, strReceived) != strReceived.size() - strResponse.size())
            continue;
        const Answer oAnswer = FindIn(oRequest, strReceived);
        ExpectEqual<int>(MODBUS_OK, oAnswer.eResult, "a response behind noise");
        Expect(oAnswer.vecValues == vecValues, "the values of a response");
        CheckAny(oRequest, strReceived.substr(0, strReceived.size() - 1));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    ModbusRequest oRequest = {};
    oRequest.nStation = oInput.ConsumeIntegralInRange<std::uint8_t>(1, 247);
    oRequest.nFunction = oInput.ConsumeIntegralInRange<std::uint8_t>(3, 4);
    oRequest.nRegister = oInput.ConsumeIntegral<std::uint16_t>();
    oRequest.nCount = oInput.ConsumeIntegralInRange<std::uint16_t>(1, MODBUS_MAX_REGISTERS);
    Values vecValues;
    for (int i = 0; i < oRequest.nCount; ++i)
        vecValues.push_back(oInput.ConsumeIntegral<std::uint16_t>());
    const std::string strBytes = oInput.ConsumeRandomLengthString(300);
    CheckTelegrams(oRequest, strBytes);
    CheckAny(oRequest, strBytes);
    CheckAny(oRequest, ModbusWithCrc(strBytes));
    CheckRight(oRequest, vecValues, strBytes);
    return 0;
}
