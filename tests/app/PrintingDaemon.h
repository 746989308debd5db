#pragma once

#include "app/KorDaemonApplication.h"

#include <string>
#include <unistd.h>

/// Prints at once.
inline void Print(const std::string& strText)
{
    if (write(STDOUT_FILENO, strText.data(), strText.size()) !=
        static_cast<ssize_t>(strText.size()))
        _exit(99);
}

/// A daemon that prints what is called.
class PrintingDaemon : public CKorDaemonApplication
{
public:
    PrintingDaemon() : CKorDaemonApplication(nullptr, "daemon", nullptr) {}

    /// Keeps all of them in this process from printing until the end of the scope.
    class Muted
    {
    public:
        Muted() { m_bMute = true; }
        ~Muted() { m_bMute = false; }
        Muted(const Muted&) = delete;
        Muted& operator=(const Muted&) = delete;
    };

    void Run() override
    {
        GetLoop().Post([] { Say("running "); });
        CKorDaemonApplication::Run();
    }
    int Finalize() override
    {
        Say("finalized ");
        return CKorDaemonApplication::Finalize();
    }
    void ReloadInd() override { Say("reloaded "); }

private:
    static void Say(const char* pszText)
    {
        if (!m_bMute)
            Print(pszText);
    }

    inline static bool m_bMute = false;
};
