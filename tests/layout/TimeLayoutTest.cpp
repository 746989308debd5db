#include "tests/layout/Layout.h"
#include "time/KorLocalTime.h"
#include "time/KorTimeDiff.h"
#include "time/KorUTCTime.h"

#include <type_traits>

namespace
{

static_assert(sizeof(CKorTimeDiff) == sizeof(std::int64_t));
static_assert(!std::is_polymorphic_v<CKorTimeDiff>);

struct TimeDiffProbe : CKorTimeDiff
{
    static int* FormatSlot() { return &m_nTimeDiffFlagIdx; }
};

struct UTCTimeMirror
{
    virtual ~UTCTimeMirror() = default;
    CKorTimeDiff m_oTime;
    bool m_bValid = false;
};

struct UTCTimeProbe : CKorUTCTime
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {
            SlotOf(&UTCTimeProbe::GetStream),    SlotOf(&UTCTimeProbe::PutStream),
            SlotOf(&UTCTimeProbe::GetLocaltime), SlotOf(&UTCTimeProbe::GetHighResolutionLocaltime),
            SlotOf(&UTCTimeProbe::SetLocaltime), SlotOf(&UTCTimeProbe::SetHighResolutionLocaltime),
            SlotOf(&UTCTimeProbe::Next)};
    }
    static int* FormatSlot() { return &m_nFormatIdx; }
    static void PinMembers()
    {
        PIN_MEMBER(UTCTimeProbe, UTCTimeMirror, m_oTime);
        PIN_MEMBER(UTCTimeProbe, UTCTimeMirror, m_bValid);
    }
};
static_assert(sizeof(CKorUTCTime) == sizeof(UTCTimeMirror));
static_assert(std::has_virtual_destructor_v<CKorUTCTime>);

struct LocalTimeMirror : CKorUTCTime
{
    int m_nTimeZone = 0;
};

struct LocalTimeProbe : CKorLocalTime
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&LocalTimeProbe::GetStream),
                SlotOf(&LocalTimeProbe::PutStream),
                SlotOf(&LocalTimeProbe::GetLocaltime),
                SlotOf(&LocalTimeProbe::GetHighResolutionLocaltime),
                SlotOf(&LocalTimeProbe::SetLocaltime),
                SlotOf(&LocalTimeProbe::SetHighResolutionLocaltime),
                SlotOf(&LocalTimeProbe::Next)};
    }
    static void PinMembers() { PIN_MEMBER(LocalTimeProbe, LocalTimeMirror, m_nTimeZone); }
};
static_assert(sizeof(CKorLocalTime) == sizeof(LocalTimeMirror));

} // namespace

TEST(TimeLayout, SlotsOfTheUTCTime)
{
    ExpectInOrderBehindDestructor(UTCTimeProbe::Slots());
}

TEST(TimeLayout, SlotsOfTheLocalTime)
{
    ExpectInOrderBehindDestructor(LocalTimeProbe::Slots());
}

TEST(TimeLayout, TheFormatSlotsArePlainNumbers)
{
    EXPECT_NE(UTCTimeProbe::FormatSlot(), TimeDiffProbe::FormatSlot());
}
