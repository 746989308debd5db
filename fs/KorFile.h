#pragma once

/// @file
/// Files of the operating system.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#files-and-paths

#include "KorExport.h"

#include <string>

/// @addtogroup files
/// @{

class CKorFileStatus;

/// An open file, and helpers for whole files.
///
/// Failures show in the results; the members also record them in #m_nLastError, for derived
/// classes to read. Positions are those of a board with 32-bit file offsets, on every host: a file
/// beyond 2 GiB can be read, written and examined, but no position beyond 2^31 - 1 can be told.
/// An object serves one thread at a time; the static helpers may run on any number of threads.
/// A null text reads as the empty text.
class TARVO_EXT_API CKorFile
{
public:
    /// A missing file descriptor.
    static constexpr int HANDLE_FILE_NULL = -1;

    /// Flags of Open(): one of the first three and, if wanted, one of the others.
    enum EOpenFlag : unsigned int
    {
        OPEN_READ = 0x0000,          ///< Read only; so does the access value 3.
        OPEN_WRITE = 0x0001,         ///< Write only.
        OPEN_READWRITE = 0x0002,     ///< Read and write.
        OPEN_PERM_READ = 0x0020,     ///< Permission 0400; without effect, nothing is created.
        OPEN_PERM_WRITE = 0x0030,    ///< Permission 0200; without effect, nothing is created.
        OPEN_PERM_READWRITE = 0x0040 ///< Permission 0600; without effect, nothing is created.
    };

    /// Origins of Seek().
    enum ESeekOrigin : unsigned int
    {
        ORIGIN_BEGIN = 0,   ///< The start of the file.
        ORIGIN_CURRENT = 1, ///< The present position.
        ORIGIN_END = 2      ///< The end of the file.
    };

    /// Kinds of GetCurrentWorkDir().
    enum EWorkDir
    {
        WORKDIR_CURRENT = 1, ///< The working directory.
        WORKDIR_PROGRAM = 2  ///< The directory of the program file.
    };

    /// No file.
    CKorFile();
    /// Works on a descriptor that stays the caller's: the destructor does not close it.
    explicit CKorFile(int hFile);
    /// Opens a file, see Open().
    CKorFile(const char* pszPath, unsigned int nOpenFlags);
    CKorFile(const CKorFile&) = delete;
    CKorFile& operator=(const CKorFile&) = delete;

    /// Closes a file that Open() opened.
    virtual ~CKorFile();

    /// The position in bytes from the start of the file: Seek() by 0 from the present position.
    /// @return as Seek()
    virtual long long GetPosition() const;

    /// The name that SetFile() gave; Open() gives none.
    virtual std::string GetFile() const;
    /// Gives the file a name. Nothing is opened or renamed.
    virtual void SetFile(const char* pszName);

    /// Opens an existing file; it creates none and cuts none. An earlier descriptor of the object
    /// is dropped without being closed.
    /// @param pszPath    the file
    /// @param nOpenFlags see #EOpenFlag; bit 15 and all bits without a name are ignored
    /// @return whether the file is open; #m_nLastError tells why not
    virtual bool Open(const char* pszPath, unsigned int nOpenFlags);

    /// Moves the position.
    /// @param nOffset    bytes from the origin, of which the low 32 bits count, as a signed number
    /// @param nOrigin    see #ESeekOrigin; any other value counts as #ORIGIN_BEGIN
    /// @return the new position in bytes; 0 without a descriptor, -1 on failure. A position beyond
    ///         2^31 - 1 is a failure with `EOVERFLOW`; the file was moved there nevertheless.
    virtual long long Seek(unsigned long long nOffset, unsigned int nOrigin);

    /// Moves to the position @p nLength. The file's size does not change.
    /// @return always true
    virtual bool SetLength(unsigned long long nLength);

    /// The file's size, found by moving to its end and back. From a position beyond 2^31 - 1 there
    /// is no way back: the file is left at its end.
    /// @return the size in bytes; 0 without a descriptor, -1 on failure or beyond 2^31 - 1
    virtual long long GetLength() const;

    /// Reads once.
    /// @return the number of bytes read, which may be less than @p nCount; 0 at the end of the
    ///         file, without a descriptor, for a null buffer and for a count of 0; 0xFFFFFFFF on
    ///         failure
    virtual unsigned int Read(void* pBuffer, unsigned int nCount);

    /// Writes once.
    /// @return whether all bytes were written in one go; false without a descriptor, for a null
    ///         buffer and for a count of 0. After a short write, which records no error, the
    ///         position tells how many bytes were written.
    virtual bool Write(const void* pBuffer, unsigned int nCount);

    /// Forces nothing out: every Write() has handed its bytes to the system already.
    /// @return whether there is a descriptor
    virtual bool Flush();

    /// Closes the descriptor, its own or the caller's. The object is without a descriptor then,
    /// whatever the result.
    /// @return false without a descriptor, or when the system reports a failure, which is not
    ///         recorded. A success records the present value of `errno`.
    virtual bool Close();

    /// The last component of the name that SetFile() gave.
    /// @throws std::out_of_range for a last component without ".", as ::GetFileName()
    virtual std::string GetFileName() const;

    /// The name that SetFile() gave up to its last separator.
    /// @throws std::out_of_range for a last component without ".", as ::GetPathName()
    virtual std::string GetPathName() const;

    /// Moves to the start of the file. @return as Seek()
    long long SeekToBegin();
    /// Moves to the end of the file. @return as Seek()
    long long SeekToEnd();
    /// Records the present value of `errno`.
    void SetLastError();

    /// Fills a record with what the file system knows about a file; links are followed. Its name
    /// stays. A file that cannot be examined leaves size and attributes 0 and all times at the
    /// stamp of 1970-01-01, so ask FileExist() first.
    /// @return always true
    static bool GetStatus(const char* pszPath, CKorFileStatus& oStatus);

    /// Whether there is a file, directory or other object of this name. Links are followed: one
    /// that leads nowhere does not exist, though its name is taken. `errno` tells why not.
    static bool FileExist(const char* pszPath);

    /// Removes a file; of a link the link itself, also one that leads nowhere.
    /// @return inverted: true when it could **not** be removed, false when it is gone
    static bool Remove(const char* pszPath);

    /// Renames a file, in place of one that has the new name already. Links are renamed and
    /// replaced themselves.
    /// @return whether it has the new name now
    static bool Rename(const char* pszFrom, const char* pszTo);

    /// A directory with a trailing separator.
    /// @param nKind  2 (#WORKDIR_PROGRAM): CKorProcess::GetCurrentProgDir();
    ///               any other value: CKorProcess::GetCurrentWorkDir()
    static std::string GetCurrentWorkDir(int nKind);

protected:
    int m_hFile;               ///< The descriptor, or #HANDLE_FILE_NULL.
    bool m_bCloseOnDelete;     ///< Whether the destructor closes it: Open() opened it.
    std::string m_strFileName; ///< The name that SetFile() gave.
    /// `errno` of the last recorded failure, `EBADF` when there was no descriptor, or 0.
    /// GetPosition() and GetLength() record failures too.
    mutable int m_nLastError;
};

/// @}
