#include "fs/KorChild.h"
#include "fs/KorChildDetail.h"
#include "time/KorTimeout.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <signal.h>
#include <sys/ioctl.h>
#include <utility>

namespace
{

constexpr size_t BUFFER_SIZE = 8192;

/// Writes without the signal that a pipe sends which nobody reads any more.
ssize_t WriteQuietly(int nHandle, const char* pBytes, size_t nCount)
{
    sigset_t oPipe;
    sigemptyset(&oPipe);
    sigaddset(&oPipe, SIGPIPE);
    sigset_t oFormer;
    pthread_sigmask(SIG_BLOCK, &oPipe, &oFormer);
    const ssize_t nWritten = write(nHandle, pBytes, nCount);
    const int nErrno = errno;
    const timespec oNow = {};
    if (nWritten == -1 && nErrno == EPIPE && sigismember(&oFormer, SIGPIPE) == 0)
        sigtimedwait(&oPipe, nullptr, &oNow);
    pthread_sigmask(SIG_SETMASK, &oFormer, nullptr);
    errno = nErrno;
    return nWritten;
}

/// A program that runs while its input and output are served.
class CRun
{
public:
    CRun(const std::string* pstrInput, unsigned int nTimeout)
        : m_pstrInput(pstrInput), m_oTimeout(nTimeout)
    {
    }

    /// @return 0, or the `errno` of the failure
    int Run(const std::vector<std::string>& vecArguments)
    {
        SKorChildOptions oOptions;
        oOptions.m_eInput =
            m_pstrInput != nullptr ? SKorChildOptions::STREAM_PIPE : SKorChildOptions::STREAM_NULL;
        oOptions.m_eOutput = SKorChildOptions::STREAM_PIPE;
        if (!m_oChild.Start(vecArguments, oOptions))
            return m_oChild.GetLastError();
        m_hOutput = m_oChild.GetOutputHandle();
        const bool bEnded = Serve();
        if (!bEnded)
            m_oChild.Stop(0);
        ReadRest();
        return bEnded || m_nError != 0 ? m_nError : ETIMEDOUT;
    }

    std::string TakeOutput() { return std::move(m_strOutput); }

    int GetStatus() const
    {
        const int nSignal = m_oChild.GetEndSignal();
        return nSignal != 0 ? 128 + nSignal : m_oChild.GetExitStatus();
    }

private:
    /// @return whether the program has ended
    bool Serve()
    {
        do {
            pollfd aoPolls[] = {{m_oChild.GetEndHandle(), POLLIN, 0},
                                {m_hOutput, POLLIN, 0},
                                {m_oChild.GetInputHandle(), POLLOUT, 0}};
            if (KorPoll(aoPolls, 3, m_oTimeout.GetRemaining()) == -1)
                continue;
            if (aoPolls[0].revents != 0)
                return true;
            if (aoPolls[1].revents != 0)
                Read(BUFFER_SIZE);
            if (aoPolls[2].revents != 0)
                Write();
        } while (m_nError == 0 && !m_oTimeout.IsExpired());
        return false;
    }

    size_t Read(size_t nCount)
    {
        char acBuffer[BUFFER_SIZE];
        const ssize_t nRead = read(m_hOutput, acBuffer, std::min(nCount, sizeof acBuffer));
        if (nRead > 0) {
            m_strOutput.append(acBuffer, static_cast<size_t>(nRead));
            return static_cast<size_t>(nRead);
        }
        if (nRead == -1 && errno != EINTR)
            m_nError = errno;
        if (nRead == 0 || m_nError != 0)
            m_hOutput = -1;
        return 0;
    }

    /// Reads what the program left in the pipe, and nothing that others write into it later.
    void ReadRest()
    {
        int nWaiting = 0;
        if (m_hOutput != -1)
            ioctl(m_hOutput, FIONREAD, &nWaiting);
        for (auto nLeft = static_cast<size_t>(nWaiting); nLeft > 0 && m_hOutput != -1;)
            nLeft -= Read(nLeft);
    }

    // As much as a pipe takes at once when poll() says that it takes something.
    void Write()
    {
        const size_t nLeft = m_pstrInput->size() - m_nWritten;
        const ssize_t nWritten =
            WriteQuietly(m_oChild.GetInputHandle(), m_pstrInput->data() + m_nWritten,
                         std::min<size_t>(nLeft, PIPE_BUF));
        if (nWritten > 0)
            m_nWritten += static_cast<size_t>(nWritten);
        const bool bUnread = nWritten == -1 && errno == EPIPE;
        if (nWritten == -1 && !bUnread && errno != EINTR)
            m_nError = errno;
        if (bUnread || m_nWritten == m_pstrInput->size())
            m_oChild.CloseInput();
    }

    CKorChild m_oChild;
    const std::string* m_pstrInput;
    size_t m_nWritten = 0;
    std::string m_strOutput;
    const CKorTimeout m_oTimeout;
    int m_hOutput = -1;
    int m_nError = 0; ///< Why input or output was cut short.
};

} // namespace

bool KorRunProgram(const std::vector<std::string>& vecArguments, const std::string* pstrInput,
                   std::string& rstrOutput, int& rnExitStatus, unsigned int nTimeout)
{
    int nError = 0;
    {
        CRun oRun(pstrInput, nTimeout);
        nError = oRun.Run(vecArguments);
        rstrOutput = oRun.TakeOutput(); // not before: it may be the input, or an argument
        rnExitStatus = nError == 0 ? oRun.GetStatus() : -1;
    }
    if (nError != 0)
        errno = nError;
    return nError == 0;
}
