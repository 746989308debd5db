#include "tests/layout/Layout.h"
#include "text/KorMutexBuffer.h"

#include <type_traits>

namespace
{

struct BufferMirror
{
    virtual ~BufferMirror() = default;
    std::string m_sBuffer;
    CKorMutex m_oMutex;
};

struct BufferProbe : CKorMutexBuffer
{
    virtual void Next() {}
    static void PinMembers()
    {
        PIN_MEMBER(BufferProbe, BufferMirror, m_sBuffer);
        PIN_MEMBER(BufferProbe, BufferMirror, m_oMutex);
    }
};
static_assert(sizeof(CKorMutexBuffer) == sizeof(BufferMirror));
static_assert(std::has_virtual_destructor_v<CKorMutexBuffer>);

} // namespace

TEST(TextLayout, SlotsOfTheMutexBuffer)
{
    ExpectInOrderBehindDestructor({SlotOf(&BufferProbe::Next)});
}
