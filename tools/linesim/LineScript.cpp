#include "tools/linesim/LineScript.h"

#include "config/KorTextValue.h"

namespace
{

/// What follows the name of a step.
enum class EArgument
{
    NONE,
    PATTERN,        // bytes or open places, and "within MS"
    BYTES,          // bytes alone
    NUMBER,         // from 1 on
    OPTIONAL_NUMBER // from 1 on, or nothing
};

struct StepName
{
    const char* m_pszName;
    ScriptStep::EKind m_eKind;
    EArgument m_eArgument;
};

constexpr StepName STEP_NAMES[] = {
    {"expect", ScriptStep::STEP_EXPECT, EArgument::PATTERN},
    {"echo", ScriptStep::STEP_ECHO, EArgument::PATTERN},
    {"silence", ScriptStep::STEP_SILENCE, EArgument::NUMBER},
    {"send", ScriptStep::STEP_SEND, EArgument::BYTES},
    {"noise", ScriptStep::STEP_NOISE, EArgument::NUMBER},
    {"drop", ScriptStep::STEP_DROP, EArgument::OPTIONAL_NUMBER},
    {"delay", ScriptStep::STEP_DELAY, EArgument::NUMBER},
    {"hangup", ScriptStep::STEP_HANG_UP, EArgument::NONE},
    {"comeback", ScriptStep::STEP_COME_BACK, EArgument::NONE},
    {"repeat", ScriptStep::STEP_REPEAT, EArgument::OPTIONAL_NUMBER},
    {"end", ScriptStep::STEP_END, EArgument::NONE},
};

constexpr char BLANKS[] = " \t\r";

std::string Trimmed(const std::string& strText)
{
    const std::size_t nFirst = strText.find_first_not_of(BLANKS);
    if (nFirst == std::string::npos)
        return "";
    return strText.substr(nFirst, strText.find_last_not_of(BLANKS) + 1 - nFirst);
}

/// The place of a text outside quotes, or that of the end.
std::size_t FindUnquoted(const std::string& strLine, const std::string& strWanted)
{
    bool bQuoted = false;
    std::size_t nPos = 0;
    for (; nPos < strLine.size(); ++nPos) {
        if (!bQuoted && strLine.compare(nPos, strWanted.size(), strWanted) == 0)
            break;
        if (bQuoted && strLine[nPos] == '\\')
            ++nPos;
        else if (strLine[nPos] == '"')
            bQuoted = !bQuoted;
    }
    return std::min(nPos, strLine.size());
}

const StepName* FindStep(const std::string& strName)
{
    for (const StepName& oName : STEP_NAMES) {
        if (strName == oName.m_pszName)
            return &oName;
    }
    return nullptr;
}

bool ReadNumber(const std::string& strText, std::uint32_t nMinimum, std::uint32_t& nNumber)
{
    return KorReadText(strText, nNumber) && nNumber >= nMinimum;
}

/// The bytes of `expect 01 03 within 500`, and the time.
bool ReadPattern(const std::string& strText, ScriptStep& oStep, std::string& strError)
{
    const std::size_t nWithin = FindUnquoted(strText, " within ");
    if (nWithin != strText.size()) {
        if (!ReadNumber(Trimmed(strText.substr(nWithin + 8)), 0, oStep.m_nNumber))
            strError = "behind 'within' stands a number of milliseconds";
        else if (oStep.m_nNumber == 0)
            oStep.m_nNumber = ScriptStep::NO_LIMIT;
    }
    return strError.empty() && oStep.m_oPattern.Parse(strText.substr(0, nWithin), strError);
}

bool ReadArgument(const StepName& oName, const std::string& strText, ScriptStep& oStep,
                  std::string& strError)
{
    const std::string strName = std::string("'") + oName.m_pszName + "'";
    switch (oName.m_eArgument) {
    case EArgument::PATTERN:
        return ReadPattern(strText, oStep, strError);
    case EArgument::BYTES:
        if (oStep.m_oPattern.Parse(strText, strError) && !oStep.m_oPattern.IsExact())
            strError = strName + " needs bytes, not a pattern";
        break;
    case EArgument::NONE:
        if (!strText.empty())
            strError = "nothing follows " + strName;
        break;
    case EArgument::OPTIONAL_NUMBER:
        if (strText.empty())
            break;
        [[fallthrough]];
    case EArgument::NUMBER:
        if (!ReadNumber(strText, 1, oStep.m_nNumber))
            strError = "behind " + strName + " stands a number from 1 on";
        break;
    }
    return strError.empty();
}

} // namespace

bool LineScript::Parse(const std::string& strText, std::string& strError)
{
    m_vecSteps.clear();
    m_vecOpen.clear();
    strError.clear();
    unsigned int nLine = 0;
    for (std::size_t nPos = 0; nPos < strText.size() && strError.empty(); ++nPos) {
        const std::size_t nEnd = std::min(strText.find('\n', nPos), strText.size());
        const std::string strLine = strText.substr(nPos, nEnd - nPos);
        ++nLine;
        if (!ParseLine(Trimmed(strLine.substr(0, FindUnquoted(strLine, "#"))), strError))
            break;
        if (!m_vecSteps.empty() && m_vecSteps.back().m_nLine == 0)
            m_vecSteps.back().m_nLine = nLine;
        nPos = nEnd;
    }
    if (strError.empty() && !m_vecOpen.empty()) {
        nLine = m_vecSteps[m_vecOpen.back()].m_nLine;
        strError = "'repeat' has no 'end'";
    }
    if (!strError.empty())
        strError = "line " + std::to_string(nLine) + ": " + strError;
    return strError.empty();
}

bool LineScript::ParseLine(const std::string& strLine, std::string& strError)
{
    if (strLine.empty())
        return true;
    const std::size_t nName = std::min(strLine.find_first_of(BLANKS), strLine.size());
    const StepName* pName = FindStep(strLine.substr(0, nName));
    if (pName == nullptr) {
        strError = "unknown step '" + strLine.substr(0, nName) + "'";
        return false;
    }
    ScriptStep oStep = {pName->m_eKind, 0, {}, 0};
    if (!ReadArgument(*pName, Trimmed(strLine.substr(nName)), oStep, strError))
        return false;
    if (oStep.m_eKind == ScriptStep::STEP_REPEAT)
        m_vecOpen.push_back(m_vecSteps.size());
    if (oStep.m_eKind == ScriptStep::STEP_END && !CloseBlock(strError))
        return false;
    m_vecSteps.push_back(std::move(oStep));
    return true;
}

bool LineScript::CloseBlock(std::string& strError)
{
    if (m_vecOpen.empty()) {
        strError = "'end' without 'repeat'";
        return false;
    }
    if (m_vecOpen.back() + 1 == m_vecSteps.size())
        strError = "there is nothing to repeat";
    m_vecOpen.pop_back();
    return strError.empty();
}
