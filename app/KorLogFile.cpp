#include "app/KorLogSinkDetail.h"
#include "app/KorOpenDetail.h"
#include "config/KorTextValue.h"
#include "fs/KorDescriptorDetail.h"
#include "text/KorStringDetail.h"

#include <cstdint>
#include <cstdio>
#include <sys/stat.h>

namespace
{

constexpr mode_t MODE = 0644;

int OpenLog(const std::string& strName, mode_t nMode)
{
    return KorOpenAboveStandard(strName.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK, nMode);
}

class CLogFile : public CKorLogStream
{
public:
    CLogFile(std::string strName, unsigned long nMaxSize, unsigned int nKeep)
        : CKorLogStream(-1), m_strName(std::move(strName)), m_nMaxSize(nMaxSize), m_nKeep(nKeep)
    {
    }
    ~CLogFile() override { const CKorDescriptor oClosed(Handle()); }

    bool Write(const CKorLogLine& oLine) override
    {
        struct stat oFile;
        if (m_nMaxSize != 0 && fstat(Handle(), &oFile) == 0 && S_ISREG(oFile.st_mode) &&
            oFile.st_size > 0 &&
            static_cast<std::uint64_t>(oFile.st_size) + oLine.Length() > m_nMaxSize)
            BeginAnew(oFile.st_mode & 0777);
        return CKorLogStream::Write(oLine);
    }
    bool Reopen() override { return Replace(OpenLog(m_strName, MODE)); }

private:
    void BeginAnew(mode_t nMode)
    {
        if (m_nKeep == 0) {
            // Where that fails the log goes on in the same file.
            static_cast<void>(ftruncate(Handle(), 0) == 0);
        } else if (MakeRoom() && Rename(m_strName, Former(1)) &&
                   !Replace(OpenLog(m_strName, nMode))) {
            Rename(Former(1), m_strName);
        }
    }

    /// Moves the former files on, up to the first name that is free, so that the first one is.
    bool MakeRoom() const
    {
        unsigned int nFree = 1;
        while (nFree < m_nKeep && access(Former(nFree).c_str(), F_OK) == 0)
            ++nFree;
        bool bMoved = true;
        for (; bMoved && nFree > 1; --nFree)
            bMoved = Rename(Former(nFree - 1), Former(nFree));
        return bMoved;
    }

    bool Replace(int nHandle)
    {
        if (nHandle == -1)
            return false;
        const CKorDescriptor oClosed(Handle());
        SetHandle(nHandle);
        return true;
    }

    static bool Rename(const std::string& strFrom, const std::string& strTo)
    {
        return std::rename(strFrom.c_str(), strTo.c_str()) == 0;
    }
    std::string Former(unsigned int nNumber) const
    {
        return KorConcat({m_strName, ".", KorWriteUnsigned(nNumber)});
    }

    std::string m_strName;
    unsigned long m_nMaxSize;
    unsigned int m_nKeep;
};

} // namespace

std::unique_ptr<CKorLogSink> KorLogToFile(const char* pszName, unsigned long nMaxSize,
                                          unsigned int nKeep)
{
    auto pFile = std::make_unique<CLogFile>(KorNameFromRoot(pszName), nMaxSize, nKeep);
    if (!pFile->Reopen())
        pFile.reset();
    return pFile;
}
