#include "app/KorLogSinkDetail.h"
#include "app/KorLogWriteDetail.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

const char* LevelName(int nLevel)
{
    static constexpr char NAMES[][8] = {"error", "warning", "notice", "info", "debug"};
    constexpr int FIRST = 3;
    constexpr int LAST = 7;
    return NAMES[(nLevel < FIRST ? FIRST : nLevel > LAST ? LAST : nLevel) - FIRST];
}

/// Whether the journal reads standard error, and not only that of the program's ancestors.
bool IsJournal(int nHandle)
{
    const char* const pszJournal = std::getenv("JOURNAL_STREAM");
    struct stat oTarget;
    if (pszJournal == nullptr || fstat(nHandle, &oTarget) != 0)
        return false;
    char szTarget[48];
    std::snprintf(szTarget, sizeof szTarget, "%llu:%llu",
                  static_cast<unsigned long long>(oTarget.st_dev),
                  static_cast<unsigned long long>(oTarget.st_ino));
    return std::string_view(szTarget) == pszJournal;
}

class CStandardError : public CKorLogStream
{
public:
    CStandardError() : CKorLogStream(STDERR_FILENO) {}

    void Begin(CKorLogLine& oLine, int nLevel) const override
    {
        if (!IsJournal(STDERR_FILENO))
            return CKorLogSink::Begin(oLine, nLevel);
        char szLevel[16];
        std::snprintf(szLevel, sizeof szLevel, "<%d>", nLevel);
        oLine.Add(szLevel);
    }
};

} // namespace

void CKorLogSink::Begin(CKorLogLine& oLine, int nLevel) const
{
    oLine.AddTime();
    oLine.Add(LevelName(nLevel));
    oLine.Add(": ");
}

bool CKorLogStream::Write(const CKorLogLine& oLine)
{
    if (!WriteRest())
        return false;
    const std::size_t nDone = KorWriteWithoutWaiting(m_nHandle, oLine.Bytes(), oLine.Length());
    if (nDone == 0)
        return false;
    if (nDone != oLine.Length()) {
        m_strRest.assign(oLine.Bytes() + nDone, oLine.Length() - nDone);
        m_nRestOwner = getpid();
    }
    return true;
}

/// Completes the last line.
/// @return false when it is not complete yet
bool CKorLogStream::WriteRest()
{
    if (m_nRestOwner != getpid())
        m_strRest.clear();
    if (!m_strRest.empty())
        m_strRest.erase(0, KorWriteWithoutWaiting(m_nHandle, m_strRest.data(), m_strRest.size()));
    return m_strRest.empty();
}

void CKorLogStream::SetHandle(int nHandle)
{
    m_nHandle = nHandle;
    m_strRest.clear();
}

std::unique_ptr<CKorLogSink> KorLogToStandardError()
{
    return std::make_unique<CStandardError>();
}
