#include "serial/KorSerial.h"
#include "serial/KorXonXoff.h"
#include "tests/layout/Layout.h"

#include <type_traits>

namespace
{

struct RcvThreadMirror : CKorThread
{
    RcvThreadMirror() : CKorThread(0) {}
    CKorSerial* m_pSerial = nullptr;
    unsigned int m_nTimeout = 0;
};

struct RcvThreadProbe : CKorSerial::CKorSerialRcvThread
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        using Initialize = bool (RcvThreadProbe::*)();
        return {SlotOf(&RcvThreadProbe::Run),
                SlotOf(static_cast<Initialize>(&RcvThreadProbe::Initialize)),
                SlotOf(&RcvThreadProbe::Next)};
    }
    static void PinMembers()
    {
        PIN_MEMBER(RcvThreadProbe, RcvThreadMirror, m_pSerial);
        PIN_MEMBER(RcvThreadProbe, RcvThreadMirror, m_nTimeout);
        static_assert(std::is_same_v<decltype(RcvThreadProbe::m_nTimeout), unsigned int>);
    }
};
static_assert(sizeof(CKorSerial::CKorSerialRcvThread) == sizeof(RcvThreadMirror));
static_assert(std::has_virtual_destructor_v<CKorSerial::CKorSerialRcvThread>);

struct SerialMirror
{
    virtual ~SerialMirror() = default;
    CKorMutexBuffer m_oRcvBuffer;
    CKorSerial::CKorSerialRcvThread m_oRcvThread;
    int m_hPort = -1;
    struct termios m_oTermios;
};

struct SerialProbe : CKorSerial
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&SerialProbe::DataInd), SlotOf(&SerialProbe::LineStateInd),
                SlotOf(&SerialProbe::Next)};
    }
    static void PinMembers()
    {
        PIN_MEMBER(SerialProbe, SerialMirror, m_oRcvBuffer);
        PIN_MEMBER(SerialProbe, SerialMirror, m_oRcvThread);
        PIN_MEMBER(SerialProbe, SerialMirror, m_hPort);
        static_assert(std::is_same_v<decltype(SerialProbe::m_hPort), int>);
        PIN_MEMBER(SerialProbe, SerialMirror, m_oTermios);
    }
};
static_assert(sizeof(CKorSerial) == sizeof(SerialMirror));
static_assert(std::has_virtual_destructor_v<CKorSerial>);

struct XonXoffMirror
{
    bool m_bUseXonXoff;
    unsigned short m_nXonLimit;
    unsigned short m_nXoffLimit;
    char m_cXonChar;
    char m_cXoffChar;
};

struct XonXoffProbe : CKorXonXoff
{
    static void PinMembers()
    {
        PIN_MEMBER(XonXoffProbe, XonXoffMirror, m_bUseXonXoff);
        PIN_MEMBER(XonXoffProbe, XonXoffMirror, m_nXonLimit);
        PIN_MEMBER(XonXoffProbe, XonXoffMirror, m_nXoffLimit);
        PIN_MEMBER(XonXoffProbe, XonXoffMirror, m_cXonChar);
        PIN_MEMBER(XonXoffProbe, XonXoffMirror, m_cXoffChar);
    }
};
static_assert(sizeof(CKorXonXoff) == sizeof(XonXoffMirror));
static_assert(!std::is_polymorphic_v<CKorXonXoff>);

} // namespace

TEST(SerialLayout, SlotsOfTheReceiveThread)
{
    ExpectInOrderBehindDestructor(RcvThreadProbe::Slots());
}

TEST(SerialLayout, SlotsOfThePort)
{
    ExpectInOrderBehindDestructor(SerialProbe::Slots());
}
