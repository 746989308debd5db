#pragma once

// A descriptor with an owner. Not installed.

#include <cerrno>
#include <string>
#include <unistd.h>
#include <utility>

/// Closes its descriptor at the end of the scope; `errno` stays as it is.
class CKorDescriptor
{
public:
    explicit CKorDescriptor(int hFile = -1) : m_hFile(hFile) {}
    CKorDescriptor(CKorDescriptor&& oOther) noexcept : m_hFile(std::exchange(oOther.m_hFile, -1)) {}
    CKorDescriptor& operator=(CKorDescriptor&& oOther) noexcept
    {
        std::swap(m_hFile, oOther.m_hFile);
        return *this;
    }
    ~CKorDescriptor()
    {
        const int nError = errno;
        if (m_hFile != -1)
            close(m_hFile);
        errno = nError;
    }

    bool IsOpen() const { return m_hFile != -1; }
    int Get() const { return m_hFile; }

private:
    int m_hFile;
};

/// Writes all of a text, where a signal interrupts it too. @return false with `errno`
bool KorWriteAll(int hFile, const std::string& strContent);
