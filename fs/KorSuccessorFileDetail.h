#pragma once

// A new file that is to take another one's place. Not installed.

#include "fs/KorDescriptorDetail.h"
#include "fs/KorFileImageDetail.h"

#include <string>
#include <sys/types.h>

/// A new file under a temporary name; it is removed at the end of the scope unless it was given
/// the final one. All operations return false with `errno`.
class CKorSuccessorFile
{
public:
    explicit CKorSuccessorFile(const std::string& strTemporaryName) : m_strName(strTemporaryName) {}
    ~CKorSuccessorFile();
    CKorSuccessorFile(const CKorSuccessorFile&) = delete;
    CKorSuccessorFile& operator=(const CKorSuccessorFile&) = delete;

    /// Makes the file, in place of one that an ended process left.
    bool Create(mode_t nMode);
    /// Writes the content, takes over owner, extended attributes and mode of the old file, unless
    /// there is none, and brings all of it to the disk.
    bool Fill(const std::string& strContent, const CKorDescriptor& oOld);
    bool Rename(const std::string& strName);

    KorFileState GetState() const;

private:
    const std::string m_strName;
    CKorDescriptor m_oFile;
    bool m_bTemporary = false;
};
