#pragma once

// A file that its writers change in turns. Not installed.

#include "fs/KorDescriptorDetail.h"
#include "fs/KorFileImageDetail.h"

/// One writer's turn at a file. The lock is that of the file's directory, which is there before
/// the file is and stays the same when the file is replaced; it ends with the object.
class CKorLockedFile
{
public:
    explicit CKorLockedFile(const char* pszName);
    ~CKorLockedFile();
    CKorLockedFile(const CKorLockedFile&) = delete;
    CKorLockedFile& operator=(const CKorLockedFile&) = delete;

    /// Waits for the file's turn, 2 s at most.
    /// @return false with `errno`, EBUSY when the turn does not come
    bool Lock();

    /// As KorReplaceFile(), for a locked file.
    /// @param pExpected  null, or what the file must hold up to the last moment: ESTALE otherwise
    bool Replace(const std::string& strContent, const SKorFileImage* pExpected = nullptr);

    /// Whether the file has the new content, also when its directory could not be synced.
    bool WasReplaced() const { return m_bReplaced; }

    /// The state of the file that Replace() made.
    const KorFileState& GetState() const { return m_oState; }

private:
    bool OpenOld(CKorDescriptor& roOld) const;
    std::string TemporaryName() const;

    const std::string m_strName; ///< as the caller spells it
    std::string m_strPath;       ///< no link
    CKorDescriptor m_oDirectory;
    bool m_bReplaced = false;
    KorFileState m_oState{};
};
