#include "app/KorDaemonApplication.h"

#include "tests/app/PrintingDaemon.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

std::string LinkTarget(const std::string& strLink)
{
    char acTarget[256];
    const ssize_t nLength = readlink(strLink.c_str(), acTarget, sizeof acTarget);
    return nLength > 0 ? std::string(acTarget, static_cast<std::size_t>(nLength)) : "";
}

/// Waits until a file has a text.
std::string WaitFor(const std::string& strFile, const std::string& strText)
{
    std::string strContent;
    WaitUntil([&] {
        strContent = ReadFile(strFile);
        return strContent.find(strText) != std::string::npos;
    });
    return strContent;
}

/// Goes to the background and writes what it finds there into a file.
class Detaching : public CKorDaemonApplication
{
public:
    explicit Detaching(const std::string& strFile)
        : CKorDaemonApplication(nullptr, "detaching", nullptr), m_strFile(strFile)
    {
        m_nTimer = GetLoop().CallEvery(20, [this] {
            Note("timer");
            GetLoop().Cancel(m_nTimer);
        });
    }

    bool Initialize() override
    {
        m_nFirst = getpid();
        const mode_t nMask = umask(0);
        umask(nMask);
        if (!Detach()) {
            Note("failed " + std::to_string(errno));
            return false;
        }
        NoteEnvironment(nMask);
        return true;
    }
    void ReloadInd() override { Note("reloaded"); }
    int Finalize() override
    {
        Note("finalized");
        return CKorDaemonApplication::Finalize();
    }

private:
    void Note(const std::string& strText) const
    {
        const int nFile = open(m_strFile.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0600);
        const std::string strLine = strText + "\n";
        if (write(nFile, strLine.data(), strLine.size()) < 0)
            _exit(99);
        close(nFile);
    }
    void NoteEnvironment(mode_t nFormerMask)
    {
        const mode_t nMask = umask(0);
        umask(nMask);
        char szDir[256] = "";
        Note(m_nFirst != getpid() ? "copy" : "same");
        Note(getsid(0) != getpid() && getsid(0) != getsid(m_nFirst) ? "no leader" : "leader");
        Note(open("/dev/tty", O_RDWR) == -1 ? "no terminal" : "terminal");
        for (const char* pszHandle : {"0", "1", "2"})
            Note(LinkTarget(std::string("/proc/self/fd/") + pszHandle));
        Note(getcwd(szDir, sizeof szDir) != nullptr ? szDir : "");
        Note(nMask == nFormerMask ? "mask" : "other mask");
        Note("process " + std::to_string(getpid()));
    }

    std::string m_strFile;
    pid_t m_nFirst = 0;
    int m_nTimer = -1;
};

/// The daemon of a file that it wrote; killed at the end of the scope.
class Background
{
public:
    explicit Background(const std::string& strFile)
    {
        const std::string strContent = WaitFor(strFile, "timer\n");
        const std::size_t nStart = strContent.find("process ");
        m_nProcess = nStart == std::string::npos ? 0 : std::stoi(strContent.substr(nStart + 8));
    }
    ~Background()
    {
        if (m_nProcess != 0)
            kill(m_nProcess, SIGKILL);
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    void Signal(int nSignal) const { EXPECT_EQ(0, kill(m_nProcess, nSignal)); }

private:
    pid_t m_nProcess;
};

TEST(KorDaemonDetach, TheOneThatStaysKeepsWhatItHas)
{
    const ScratchDir oDir;
    const std::string strFile = oDir.File("notes");
    WriteFile(strFile, "");
    PseudoTerminal oTerminal;
    ChildProcess oChild([&] {
        umask(027);
        setsid();
        open(oTerminal.Name(), O_RDWR); // the session's terminal
        if (chdir(oDir.Path().c_str()) != 0)
            return 1;
        std::atexit([] { Print("exit handler "); });
        Detaching oDaemon(strFile);
        const int nStatus = oDaemon.Start(0, nullptr);
        Print("returned ");
        return nStatus;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("", oChild.Wait().strOut);
    const Background oBackground(strFile);
    oTerminal.HangUp();
    oBackground.Signal(SIGHUP);
    WaitFor(strFile, "reloaded\n");
    oBackground.Signal(SIGTERM);
    const std::string strContent = WaitFor(strFile, "finalized\n");
    const std::size_t nProcess = strContent.find("process ");
    EXPECT_EQ("copy\nno leader\nno terminal\n/dev/null\n/dev/null\n/dev/null\n" + oDir.Path() +
                  "\nmask\n",
              strContent.substr(0, nProcess));
    EXPECT_EQ("timer\nreloaded\nfinalized\n",
              strContent.substr(strContent.find('\n', nProcess) + 1));
}

TEST(KorDaemonDetach, UnderAManagerNobodyLeaves)
{
    const ScratchDir oDir;
    const std::string strFile = oDir.File("notes");
    WriteFile(strFile, "");
    ChildProcess oChild([&strFile] {
        setenv("NOTIFY_SOCKET", "/no/such/socket", 1);
        return Detaching(strFile).Start(0, nullptr);
    });
    EXPECT_EQ("same\n", WaitFor(strFile, "timer\n").substr(0, 5));
    oChild.Signal(SIGTERM);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
}

TEST(KorDaemonDetach, AFailureChangesNothing)
{
    const ScratchDir oDir;
    const std::string strFile = oDir.File("notes");
    ChildProcess oChild([&strFile] {
        class Limited : public Detaching
        {
        public:
            using Detaching::Detaching;
            bool Initialize() override
            {
                rlimit oFormer = {};
                getrlimit(RLIMIT_NOFILE, &oFormer);
                const rlimit oNone = {3, oFormer.rlim_max};
                setrlimit(RLIMIT_NOFILE, &oNone);
                errno = 0;
                const bool bDetached = Detach();
                const int nError = errno;
                setrlimit(RLIMIT_NOFILE, &oFormer);
                RequestEnd(!bDetached && nError == EMFILE ? 42 : 1);
                return false;
            }
        };
        return Limited(strFile).Start(0, nullptr);
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized\n", ReadFile(strFile));
}

TEST(KorDaemonDetach, ASignalToTheOneThatLeavesEndsTheOneThatStays)
{
    const ScratchDir oDir;
    const std::string strFile = oDir.File("notes");
    WriteFile(strFile, "");
    ChildProcess oChild([&strFile] {
        Detaching oDaemon(strFile);
        // The first process waits to leave when its copy begins. No other one gets the signal: the
        // parent of a later copy may be init, which would end the system.
        static const pid_t nFirst = getpid();
        pthread_atfork(nullptr, nullptr, [] {
            if (getppid() == nFirst)
                kill(nFirst, SIGTERM);
        });
        return oDaemon.Start(0, nullptr);
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_NE(std::string::npos, WaitFor(strFile, "finalized\n").find("finalized\n"));
}

} // namespace
