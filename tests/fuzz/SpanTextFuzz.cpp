// Spans in all formats, read and written as models do it, and back where the format holds them.

#include "tests/fuzz/Fuzz.h"
#include "tests/time/TimeReadModel.h"
#include "tests/time/TimeWriteModel.h"

#include <sstream>

namespace
{

std::int64_t TicksOf(const CKorTimeDiff& oSpan)
{
    std::string strTicks;
    oSpan.Time2Str(strTicks);
    return std::stoll(strTicks);
}

void CheckReading(const std::string& strText, int nFormat)
{
    Reader oReader(strText);
    const CKorTimeDiff oExpected = ModelGetSpan(oReader, nFormat);
    std::istringstream oStream(strText);
    CKorTimeDiff::SetDiffTimeFlag(oStream, static_cast<CKorTimeDiff::EDiffFormat>(nFormat));
    CKorTimeDiff oRead;
    oStream >> oRead;
    ExpectEqual(TicksOf(oExpected), TicksOf(oRead), "the span from a stream");
    ExpectEqual(static_cast<int>(oReader.State()), static_cast<int>(oStream.rdstate()),
                "the state of the stream");
    ExpectEqual(oReader.Rest(), std::string(std::istreambuf_iterator<char>(oStream.rdbuf()), {}),
                "what is left");

    CKorTimeDiff oFromString;
    const std::string strWithZero = strText + '\0';
    Reader oZeroReader(strWithZero);
    const CKorTimeDiff oWithZero = ModelGetSpan(oZeroReader, nFormat);
    const bool bRead =
        KorFromString(oFromString, static_cast<CKorTimeDiff::EDiffFormat>(nFormat), strText);
    ExpectEqual(!oZeroReader.HasFailed(), bRead, "a text is read or refused");
    ExpectEqual(TicksOf(oWithZero), TicksOf(oFromString), "the span of a text");
}

/// As an integer of a stream.
void CheckTotal(const std::string& strText, CKorTimeDiff::EDiffFormat eFormat, std::uint64_t nUnit)
{
    std::istringstream oStream(strText + '\0');
    long long nTotal = 0;
    oStream >> nTotal;
    CKorTimeDiff oRead;
    ExpectEqual(!oStream.fail(), KorFromString(oRead, eFormat, strText), "a total is one or not");
    ExpectEqual(static_cast<std::int64_t>(static_cast<std::uint64_t>(nTotal) * nUnit),
                TicksOf(oRead), "a total");
}

void CheckWriting(std::int64_t nTicks, int nFormat)
{
    const auto eFormat = static_cast<CKorTimeDiff::EDiffFormat>(nFormat);
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    std::ostringstream oExpected;
    ModelPut(oExpected, nTicks, nFormat);
    const std::string strText = KorToString(oSpan, eFormat);
    ExpectEqual(oExpected.str(), strText, "the text of a span");
    const bool bHolds = nFormat == CKorTimeDiff::eDiffMicroSeconds ||
                        (nFormat == CKorTimeDiff::eDiffHhMmSsMs && oSpan.GetTotalHours() < 100);
    if (nTicks < 0 || !bHolds)
        return;
    CKorTimeDiff oRead;
    Expect(KorFromString(oRead, eFormat, strText), "what was written reads", strText);
    const std::int64_t nUnit = nFormat == CKorTimeDiff::eDiffMicroSeconds ? 100 : 100000;
    ExpectEqual(nTicks / nUnit * nUnit, TicksOf(oRead), "what was written reads back");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const std::int64_t nTicks =
        oInput.ConsumeIntegral<std::int64_t>() >> oInput.ConsumeIntegralInRange(0, 63);
    const std::string strText = oInput.ConsumeRemainingBytesAsString();
    for (const int nFormat : {1, 2, 3, 6})
        CheckReading(strText, nFormat);
    CheckTotal(strText, CKorTimeDiff::eDiffMilliSeconds, 100000);
    CheckTotal(strText, CKorTimeDiff::eDiffMicroSeconds, 100);
    for (int nFormat = 0; nFormat < 9; ++nFormat)
        CheckWriting(nTicks, nFormat);
    return 0;
}
