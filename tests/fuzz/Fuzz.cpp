#include "tests/fuzz/Fuzz.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

void WriteAll(int nHandle, const std::string& strContent)
{
    const ssize_t nWritten = pwrite(nHandle, strContent.data(), strContent.size(), 0);
    Expect(nWritten == static_cast<ssize_t>(strContent.size()), "a file can be written");
}

std::string ReadAll(int nHandle)
{
    struct stat oStatus = {};
    fstat(nHandle, &oStatus);
    std::string strContent(static_cast<std::size_t>(oStatus.st_size), '\0');
    const ssize_t nRead = pread(nHandle, strContent.data(), strContent.size(), 0);
    Expect(nRead == oStatus.st_size, "a file can be read");
    return strContent;
}

} // namespace

std::string Shown(const std::string& strText)
{
    std::string strShown = "\"";
    for (const char c : strText) {
        char szCode[8];
        std::snprintf(szCode, sizeof(szCode), "\\%03o", static_cast<unsigned char>(c));
        const bool bPlain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
        strShown += bPlain ? std::string(1, c) : szCode;
    }
    return strShown + "\"";
}

void Find(const char* pszPromise, const std::string& strDetail)
{
    std::fprintf(stderr, "BROKEN: %s\n  %s\n", pszPromise, strDetail.c_str());
    std::abort();
}

MemoryFile::MemoryFile()
    : m_nHandle(memfd_create("fuzz", MFD_CLOEXEC)),
      m_strName("/proc/self/fd/" + std::to_string(m_nHandle))
{
}

MemoryFile::~MemoryFile()
{
    close(m_nHandle);
}

void MemoryFile::Write(const std::string& strContent) const
{
    Expect(ftruncate(m_nHandle, 0) == 0, "a file can be emptied");
    WriteAll(m_nHandle, strContent);
}

std::string MemoryFile::Read() const
{
    return ReadAll(m_nHandle);
}

DirectoryFile::DirectoryFile() : m_strDirectory(std::filesystem::temp_directory_path())
{
    m_strDirectory += "/tarvo-fuzz-XXXXXX";
    Expect(mkdtemp(m_strDirectory.data()) != nullptr, "a directory can be made");
    m_strName = m_strDirectory + "/test.ini";
}

DirectoryFile::~DirectoryFile()
{
    std::error_code oIgnored;
    std::filesystem::remove_all(m_strDirectory, oIgnored);
}

void DirectoryFile::Write(const std::string& strContent) const
{
    unlink(m_strName.c_str());
    const int nHandle = open(m_strName.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    WriteAll(nHandle, strContent);
    close(nHandle);
}

std::string DirectoryFile::Read() const
{
    const int nHandle = open(m_strName.c_str(), O_RDONLY | O_CLOEXEC);
    if (nHandle == -1)
        return "";
    std::string strContent = ReadAll(nHandle);
    close(nHandle);
    return strContent;
}
