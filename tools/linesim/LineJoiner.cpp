#include "tools/linesim/LineJoiner.h"

namespace
{

/// What a line may owe before the other one is no longer read.
constexpr std::size_t MAX_PENDING = 65536;

} // namespace

LineJoiner::LineJoiner(LineEnd& oLineA, LineEnd& oLineB, const Settings& oSettings)
    : m_oSettings(oSettings), m_oRandom(oSettings.m_nSeed)
{
    Carry(oLineA, oLineB);
    Carry(oLineB, oLineA);
}

void LineJoiner::Carry(LineEnd& oFrom, LineEnd& oTo)
{
    oFrom.SetReceiver([this, &oFrom, &oTo](const std::string& strBytes) {
        oTo.Send(Disturbed(strBytes));
        if (oTo.PendingCount() > MAX_PENDING)
            oFrom.SetPaused(true);
    });
    oTo.SetDrained([&oFrom]() { oFrom.SetPaused(false); });
}

bool LineJoiner::OneOf(unsigned int nCount)
{
    return nCount != 0 && m_oRandom() % nCount == 0;
}

std::string LineJoiner::Disturbed(const std::string& strBytes)
{
    std::string strDisturbed;
    for (const char c : strBytes) {
        if (OneOf(m_oSettings.m_nDropOne))
            continue;
        const bool bSpoiled = OneOf(m_oSettings.m_nSpoilOne);
        strDisturbed += bSpoiled ? static_cast<char>(c ^ (1 << m_oRandom() % 8)) : c;
    }
    return strDisturbed;
}
