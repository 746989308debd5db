// Times in all formats, read and written as models do it character by character, and back.

#include "tests/fuzz/Fuzz.h"
#include "tests/time/InstantSupport.h"
#include "tests/time/TimeReadModel.h"
#include "tests/time/TimeWriteModel.h"

#include <sstream>

namespace
{

constexpr int FORMATS = 12;

void CheckReading(const std::string& strText, int nFormat)
{
    const auto eFormat = static_cast<CKorUTCTime::ETimeFormat>(nFormat);
    Reader oReader(strText);
    const CKorUTCTime oExpected = ModelGet(oReader, nFormat);
    const CKorUTCTime oRead(strText, eFormat);
    ExpectEqual(TicksOf(oExpected), TicksOf(oRead), "the instant read");
    ExpectEqual(oExpected.IsTimeValid() && !oReader.HasFailed(), oRead.IsTimeValid(), "validity");

    const std::string strWithZero = strText + '\0';
    Reader oZeroReader(strWithZero);
    const CKorUTCTime oWithZero = ModelGet(oZeroReader, nFormat);
    CKorUTCTime oFromString;
    Expect(KorFromString(oFromString, eFormat, strText), "any text can be read");
    ExpectEqual(TicksOf(oWithZero), TicksOf(oFromString), "the instant of a text that ends");
    ExpectEqual(oWithZero.IsTimeValid(), oFromString.IsTimeValid(), "its validity");
}

void CheckStream(const std::string& strText, int nFormat)
{
    Reader oReader(strText);
    const CKorUTCTime oExpected = ModelGet(oReader, nFormat);
    std::istringstream oStream(strText);
    CKorUTCTime::SetTimeFlag(oStream, static_cast<CKorUTCTime::ETimeFormat>(nFormat));
    CKorUTCTime oRead;
    oStream >> oRead;
    ExpectEqual(TicksOf(oExpected), TicksOf(oRead), "the instant from a stream");
    ExpectEqual(static_cast<int>(oReader.HasFailed() ? std::ios_base::failbit : oReader.State()),
                static_cast<int>(oStream.rdstate()), "the state of the stream");
    ExpectEqual(oReader.Rest(), std::string(std::istreambuf_iterator<char>(oStream.rdbuf()), {}),
                "what is left");
}

void CheckWriting(std::int64_t nTicks, int nFormat)
{
    const auto eFormat = static_cast<CKorUTCTime::ETimeFormat>(nFormat);
    const CKorUTCTime oTime = TimeOfTicks(nTicks);
    std::ostringstream oExpected;
    ModelPut(oExpected, oTime, nFormat);
    const std::string strText = oTime.Time2Str(eFormat);
    ExpectEqual(oExpected.str(), strText, "the text of a time");
    if (nFormat == CKorUTCTime::eMailFormat || nTicks < 0)
        return;
    const CKorUTCTime oRead(strText, eFormat);
    ExpectEqual(strText, oRead.Time2Str(eFormat), "what was written reads back");
    if (nFormat == CKorUTCTime::eDateTimeNs && oTime.GetYear() != 0)
        ExpectEqual(nTicks, TicksOf(oRead), "a text of all parts reads back to the tick");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const auto nTicks = oInput.ConsumeIntegral<std::int64_t>();
    const std::string strText = oInput.ConsumeRemainingBytesAsString();
    for (int nFormat = 0; nFormat < FORMATS; ++nFormat) {
        CheckReading(strText, nFormat);
        CheckStream(strText, nFormat);
        CheckWriting(nTicks, nFormat);
    }
    return 0;
}
