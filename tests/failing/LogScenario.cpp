// A log whose file is rotated, opened anew and left.

#include "app/KorLog.h"
#include "tests/failing/Beside.h"
#include "tests/failing/Scenarios.h"

#include <algorithm>
#include <cstdlib>

namespace
{

class CLogging : public CScenario
{
public:
    explicit CLogging(const std::string& strDirectory)
        : m_strDirectory(strDirectory), m_strFile(strDirectory + "/gateway.log")
    {
    }
    void Prepare() override { Empty(m_strDirectory); }
    void Run() override
    {
        CKorLog oLog;
        m_nWritten = 0;
        m_nThrown = 0;
        const bool bUsed = Succeeds(
            "a file is used", [&] { return oLog.UseFile(m_strFile.c_str(), MAX_SIZE, KEEP); });
        if (!bUsed)
            return;
        for (int nLine = 0; nLine < LINES; ++nLine)
            Write(oLog);
        Succeeds("a file is opened anew", [&] { return oLog.Reopen(); });
        const CBeside oBeside;
        Write(oLog); // which tells of one that was lost
        Judge(oLog.GetLostCount());
    }

private:
    static constexpr unsigned long MAX_SIZE = 300;
    static constexpr unsigned int KEEP = 9;
    static constexpr int LINES = 12;

    void Write(CKorLog& rLog)
    {
        try {
            rLog.Write(CKorLog::LEVEL_INFO, "this is line number %d.", m_nWritten++);
        } catch (const std::bad_alloc&) {
            ++m_nThrown;
        }
    }

    /// Every line is there, or it was told that it is not; each is whole, and they are in order.
    void Judge(unsigned long nLost)
    {
        std::string strAll;
        for (unsigned int nFormer = KEEP; nFormer > 0; --nFormer)
            strAll += TextOf(m_strFile + "." + std::to_string(nFormer));
        strAll += TextOf(m_strFile);
        int nFound = 0;
        int nLast = -1;
        const std::string strText = "info: this is line number ";
        for (size_t n = 0; (n = strAll.find(strText, n)) != std::string::npos; ++nFound) {
            n += strText.size();
            const int nNumber = std::atoi(&strAll[n]);
            Expect(nNumber > nLast, "lines are in order");
            nLast = nNumber;
            Expect(strAll.compare(strAll.find('.', n), 2, ".\n") == 0, "lines are whole");
        }
        const int nTold = static_cast<int>(nLost) + m_nThrown;
        Expect(nFound + nTold == m_nWritten, "a line that is missing was told");
        Expect(nTold <= (m_bForGood         ? LINES
                         : IsInterruption() ? 0
                                            : 1),
               "one failure costs one line at most");
        const auto nTells = std::count(strAll.begin(), strAll.end(), '\n') - nFound;
        Expect(nTells == (nLost == 0 ? 0 : 1), "the log itself tells of lines that were lost");
    }

    const std::string m_strDirectory;
    const std::string m_strFile;
    int m_nWritten = 0;
    int m_nThrown = 0;
};

} // namespace

CScenario* MakeLog(const std::string& strDirectory)
{
    return new CLogging(strDirectory);
}
