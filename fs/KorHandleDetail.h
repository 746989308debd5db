#pragma once

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

/// An open descriptor that is closed at the end of the scope, unless it is taken. It is none of
/// the standard streams', also when these are closed.
class CKorHandle
{
public:
    CKorHandle() = default;
    explicit CKorHandle(int nHandle) : m_nHandle(nHandle)
    {
        if (nHandle != -1 && nHandle <= STDERR_FILENO) {
            m_nHandle = fcntl(nHandle, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            const int nErrno = errno;
            close(nHandle);
            errno = nErrno;
        }
    }
    ~CKorHandle() { Close(); }
    CKorHandle(const CKorHandle&) = delete;
    CKorHandle& operator=(const CKorHandle&) = delete;
    CKorHandle& operator=(CKorHandle&& oOther) noexcept
    {
        Close();
        m_nHandle = oOther.Take();
        return *this;
    }

    bool IsOpen() const { return m_nHandle != -1; }
    int Get() const { return m_nHandle; }
    int Take()
    {
        const int nHandle = m_nHandle;
        m_nHandle = -1;
        return nHandle;
    }
    /// Leaves `errno` as it is.
    void Close()
    {
        const int nErrno = errno;
        if (m_nHandle != -1)
            close(m_nHandle);
        m_nHandle = -1;
        errno = nErrno;
    }

private:
    int m_nHandle = -1;
};

/// Opens a pipe whose ends are closed when a program is executed.
bool KorOpenPipe(CKorHandle& oReader, CKorHandle& oWriter);
