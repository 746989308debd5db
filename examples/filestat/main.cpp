// Prints what the file system knows about a file, and a dump of its first and last lines.
//
// Shows CKorOptionParser, CKorFile, CKorFileStatus and KorMemDump, and how a derived class reports why it failed.

#include "app/KorOptionParser.h"
#include "fs/KorFile.h"
#include "fs/KorFileStatus.h"
#include "text/KorMemDump.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>
#include <sys/stat.h>

namespace
{

constexpr size_t MOST_BYTES = 0x1000000;

/// CKorFile keeps the cause of a failure for classes derived from it; this one tells it.
class InputFile : public CKorFile
{
public:
    using CKorFile::CKorFile;
    bool IsOpen() const { return m_hFile != HANDLE_FILE_NULL; }
    int LastError() const { return m_nLastError; }
};

int Fail(const char* pszPath, const char* pszReason)
{
    std::cerr << "filestat: " << pszPath << ": " << pszReason << '\n';
    return 1;
}

/// The times of a status are stamps: 10 us for each second since 1970, wrapped to 32 bits. Another
/// stamp tells that the file was touched since; a calendar date made of one would be wrong, so the
/// program prints the plain number.
long long StampOf(const CKorUTCTime& oTime)
{
    CKorUTCTime oEpoch;
    oEpoch = 0L;
    return oTime.GetHighResolutionLocaltime() - oEpoch.GetHighResolutionLocaltime();
}

void PrintStatus(const CKorFileStatus& oStatus)
{
    std::cout << "Name:      " << oStatus.m_strFullName << '\n'
              << "Size:      " << oStatus.m_nSize << " bytes\n"
              << "Mode:      0" << std::oct << oStatus.m_nAttribute << std::dec << '\n'
              << "Modified:  stamp " << StampOf(oStatus.m_oMTime) << '\n'
              << "Changed:   stamp " << StampOf(oStatus.m_oCTime) << '\n'
              << "Accessed:  stamp " << StampOf(oStatus.m_oATime) << '\n';
}

int DumpFile(const char* pszPath, unsigned int nHead, unsigned int nTail)
{
    InputFile oFile(pszPath, CKorFile::OPEN_READ);
    if (!oFile.IsOpen())
        return Fail(pszPath, std::strerror(oFile.LastError()));

    // Read to the end rather than GetLength() bytes: files such as those of /proc have no length.
    std::string strContent;
    char acPiece[4096];
    unsigned int nRead = 0;
    while ((nRead = oFile.Read(acPiece, sizeof acPiece)) != 0) {
        if (nRead == 0xFFFFFFFF)
            return Fail(pszPath, std::strerror(oFile.LastError()));
        strContent.append(acPiece, nRead);
        if (strContent.size() > MOST_BYTES)
            return Fail(pszPath, "too large to dump (16 MiB at most)");
    }
    const unsigned int nLength = static_cast<unsigned int>(strContent.size());
    std::cout << KorMemDump(strContent.data(), nLength, nHead, nTail);
    return 0;
}

int Report(const char* pszPath, unsigned int nHead, unsigned int nTail)
{
    // Asked first, for GetStatus tells no failure: a missing file gives a record of zeros.
    if (!CKorFile::FileExist(pszPath))
        return Fail(pszPath, std::strerror(errno));
    CKorFileStatus oStatus;
    CKorFile::GetStatus(pszPath, oStatus);
    oStatus.m_strFullName = pszPath;
    PrintStatus(oStatus);

    const int nResult = S_ISREG(oStatus.m_nAttribute) ? DumpFile(pszPath, nHead, nTail) : 0;
    return std::cout.flush() ? nResult : Fail("standard output", std::strerror(errno));
}

} // namespace

int main(int argc, char** argv)
{
    std::string strPath;
    unsigned int nHead = 8;
    unsigned int nTail = 8;
    CKorOptionParser oParser({"filestat", TARVO_VERSION, "Quentor GmbH", "File status and dump",
                              "www.quentor.example", nullptr});
    oParser.AddArgument("FILE", strPath, "the file whose status and lines are printed");
    oParser.AddArgument("HEAD", nHead, "number of first lines in the dump (8)", false);
    oParser.AddArgument("TAIL", nTail, "number of last lines in the dump (8)", false);
    const CKorOptionParser::EResult eResult = oParser.Parse(argc, argv);
    if (eResult == CKorOptionParser::PARSE_OK)
        return Report(strPath.c_str(), nHead, nTail);
    const bool bWrong = eResult == CKorOptionParser::PARSE_WRONG;
    (bWrong ? std::cerr : std::cout) << oParser.GetText();
    return bWrong ? 2 : 0;
}
