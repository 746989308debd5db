// Scripts of simulated devices: each is read to its end, or refused with the line that is wrong.

#include "tests/fuzz/Fuzz.h"
#include "text/KorHexText.h"
#include "tools/linesim/LineScript.h"

#include <algorithm>

namespace
{

constexpr std::size_t MAX_BYTES = 65536;

/// "line 3: ..." with a line that the script has.
void CheckError(const std::string& strError, const std::string& strScript)
{
    Expect(strError.compare(0, 5, "line ") == 0, "an error names its line", strError);
    std::size_t nDigits = 0;
    const unsigned long nLine = std::stoul(strError.substr(5), &nDigits);
    const auto nLines =
        static_cast<unsigned long>(std::count(strScript.begin(), strScript.end(), '\n')) + 1;
    Expect(nLine >= 1 && nLine <= nLines, "the line is one of the script", strError);
    Expect(strError.compare(5 + nDigits, 2, ": ") == 0 && strError.size() > nDigits + 7,
           "an error says what is wrong", strError);
}

/// Bytes that are given fit their own pattern, each part of them fits so far, and as hexadecimal
/// text they are the same bytes.
void CheckExact(const LinePattern& oPattern)
{
    const std::string strBytes = oPattern.Bytes();
    Expect(!strBytes.empty() && strBytes.size() <= MAX_BYTES, "a pattern has bytes");
    std::size_t nLength = 0;
    if (strBytes.size() > 500) // a CRC at every place would take long
        return;
    Expect(oPattern.Match(strBytes, nLength) == EMatch::YES, "bytes fit their own pattern");
    ExpectEqual(strBytes.size(), nLength, "all of them");
    Expect(oPattern.Match(strBytes + "more", nLength) == EMatch::YES, "more may follow");
    Expect(oPattern.Match(strBytes.substr(1), nLength) != EMatch::YES ||
               strBytes.substr(1) + strBytes.back() == strBytes,
           "a byte too few does not fit", strBytes);
    const std::string strPart = strBytes.substr(0, strBytes.size() / 2);
    Expect(oPattern.Match(strPart, nLength) == EMatch::PARTIAL, "a part fits so far");
    LinePattern oAgain;
    std::string strError;
    const auto nSize = static_cast<unsigned int>(strBytes.size());
    Expect(oAgain.Parse(KorToHexText(strBytes.data(), nSize), strError), "hexadecimal text");
    ExpectEqual(strBytes, oAgain.Bytes(), "hexadecimal text gives the same bytes");
}

void CheckSteps(const std::vector<ScriptStep>& vecSteps, const std::string& strReceived)
{
    int nOpen = 0;
    unsigned int nLine = 0;
    for (const ScriptStep& oStep : vecSteps) {
        Expect(oStep.m_nLine > nLine, "steps stand in the order of their lines");
        nLine = oStep.m_nLine;
        nOpen += oStep.m_eKind == ScriptStep::STEP_REPEAT ? 1 : 0;
        nOpen -= oStep.m_eKind == ScriptStep::STEP_END ? 1 : 0;
        Expect(nOpen >= 0, "every end has its repeat");
        std::size_t nLength = 0;
        const bool bPattern = oStep.m_eKind == ScriptStep::STEP_EXPECT ||
                              oStep.m_eKind == ScriptStep::STEP_ECHO ||
                              oStep.m_eKind == ScriptStep::STEP_SEND;
        if (!bPattern)
            continue;
        oStep.m_oPattern.Match(strReceived, nLength);
        Expect(nLength <= strReceived.size(), "no more fits than came");
        if (oStep.m_oPattern.IsExact())
            CheckExact(oStep.m_oPattern);
    }
    ExpectEqual(0, nOpen, "every repeat has its end");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const std::string strReceived =
        oInput.ConsumeBytesAsString(oInput.ConsumeIntegral<std::uint8_t>() % 16);
    const std::string strScript = oInput.ConsumeRemainingBytesAsString();
    LineScript oScript;
    std::string strError;
    if (oScript.Parse(strScript, strError)) {
        Expect(strError.empty(), "all well has no text");
        CheckSteps(oScript.Steps(), strReceived);
    } else {
        CheckError(strError, strScript);
    }
    return 0;
}
