#include "fs/KorFile.h"
#include "fs/KorFileStatus.h"
#include "fs/KorProcess.h"
#include "tests/layout/Layout.h"

#include <type_traits>

namespace
{

struct FileMirror
{
    virtual ~FileMirror() = default;
    int m_hFile = -1;
    bool m_bCloseOnDelete = false;
    std::string m_strFileName;
    int m_nLastError = 0;
};

struct FileProbe : CKorFile
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&FileProbe::GetPosition), SlotOf(&FileProbe::GetFile),
                SlotOf(&FileProbe::SetFile),     SlotOf(&FileProbe::Open),
                SlotOf(&FileProbe::Seek),        SlotOf(&FileProbe::SetLength),
                SlotOf(&FileProbe::GetLength),   SlotOf(&FileProbe::Read),
                SlotOf(&FileProbe::Write),       SlotOf(&FileProbe::Flush),
                SlotOf(&FileProbe::Close),       SlotOf(&FileProbe::GetFileName),
                SlotOf(&FileProbe::GetPathName), SlotOf(&FileProbe::Next)};
    }
    static void PinMembers()
    {
        PIN_MEMBER(FileProbe, FileMirror, m_hFile);
        PIN_MEMBER(FileProbe, FileMirror, m_bCloseOnDelete);
        PIN_MEMBER(FileProbe, FileMirror, m_strFileName);
        PIN_MEMBER(FileProbe, FileMirror, m_nLastError);
    }
};
static_assert(sizeof(CKorFile) == sizeof(FileMirror));
static_assert(std::has_virtual_destructor_v<CKorFile>);

struct FileStatusMirror
{
    virtual ~FileStatusMirror() = default;
    CKorUTCTime m_oCTime;
    CKorUTCTime m_oMTime;
    CKorUTCTime m_oATime;
    std::string m_strFullName;
    long long m_nSize = 0;
    unsigned int m_nAttribute = 0;
};

struct FileStatusProbe : CKorFileStatus
{
    virtual void Next() {}
    static void PinMembers()
    {
        PIN_MEMBER(FileStatusProbe, FileStatusMirror, m_oCTime);
        PIN_MEMBER(FileStatusProbe, FileStatusMirror, m_oMTime);
        PIN_MEMBER(FileStatusProbe, FileStatusMirror, m_oATime);
        PIN_MEMBER(FileStatusProbe, FileStatusMirror, m_strFullName);
        PIN_MEMBER(FileStatusProbe, FileStatusMirror, m_nSize);
        PIN_MEMBER(FileStatusProbe, FileStatusMirror, m_nAttribute);
    }
};
static_assert(sizeof(CKorFileStatus) == sizeof(FileStatusMirror));
static_assert(std::has_virtual_destructor_v<CKorFileStatus>);

struct ProcessMirror
{
    virtual ~ProcessMirror() = default;
    int m_nProcessID = 0;
    int m_nHandle = 0;
    std::string m_sName;
};

struct ProcessProbe : CKorProcess
{
    virtual void Next() {}
    static void PinMembers()
    {
        PIN_MEMBER(ProcessProbe, ProcessMirror, m_nProcessID);
        PIN_MEMBER(ProcessProbe, ProcessMirror, m_nHandle);
        PIN_MEMBER(ProcessProbe, ProcessMirror, m_sName);
    }
};
static_assert(sizeof(CKorProcess) == sizeof(ProcessMirror));
static_assert(std::has_virtual_destructor_v<CKorProcess>);

} // namespace

TEST(FsLayout, SlotsOfTheFile)
{
    ExpectInOrderBehindDestructor(FileProbe::Slots());
}

TEST(FsLayout, SlotsOfTheFileStatus)
{
    ExpectInOrderBehindDestructor({SlotOf(&FileStatusProbe::Next)});
}

TEST(FsLayout, SlotsOfTheProcess)
{
    ExpectInOrderBehindDestructor({SlotOf(&ProcessProbe::Next)});
}
