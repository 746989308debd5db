// Runs a scenario with one call that fails, with libFailCalls.so loaded before everything else.
// usage: scenario NAME DIRECTORY KIND ERRNO once|on [NUMBER]
//
// For each call of the kind that comes (or only for that number) a forked copy does three runs: an
// undisturbed one, so that all is there that stays for the life of a process; one in which that
// call fails ("on": and all after it); and again an undisturbed one, after which it must have as
// many blocks of memory, descriptors, threads and children as after the first. Prints how many
// calls have failed. The exit status is 1 with a complaint about one of them.

#include "tests/failing/FailCalls.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/EntriesOf.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

constexpr unsigned int PATIENCE_S = 20;

template <typename TFunction>
TFunction Preloaded(const char* pszName)
{
    void* const pFunction = dlsym(RTLD_DEFAULT, pszName);
    if (pFunction == nullptr) {
        std::fprintf(stderr, "libFailCalls.so is not loaded\n");
        std::exit(2);
    }
    return reinterpret_cast<TFunction>(pFunction);
}

/// What a process can leak.
struct SHoldings
{
    long nBlocks;
    long nHandles;
    long nThreads;
    bool bChildren;

    bool operator==(const SHoldings& o) const
    {
        return nBlocks == o.nBlocks && nHandles == o.nHandles && nThreads == o.nThreads &&
               bChildren == o.bChildren;
    }
};

SHoldings Holdings()
{
    const auto pfnBlocks = Preloaded<long (*)()>("FailCallsBlocks");
    SHoldings oHoldings{};
    oHoldings.nHandles = static_cast<long>(EntriesOf("/proc/self/fd"));
    oHoldings.nThreads = static_cast<long>(EntriesOf("/proc/self/task"));
    siginfo_t oChild = {};
    oHoldings.bChildren = waitid(P_ALL, 0, &oChild, WEXITED | WNOHANG | WNOWAIT) == 0;
    oHoldings.nBlocks = pfnBlocks();
    return oHoldings;
}

/// A thread that was joined stays in the system's list for a moment.
SHoldings SettledHoldings(const SHoldings& oWanted)
{
    SHoldings oHoldings = Holdings();
    for (int nTry = 0; nTry < 100 && !(oHoldings == oWanted); ++nTry) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + nTry / 2));
        oHoldings = Holdings();
    }
    return oHoldings;
}

void RunOnce(CScenario& oScenario)
{
    try {
        oScenario.Run();
    } catch (const std::bad_alloc&) {
        // A clear result, unless nothing has failed.
        if (oScenario.m_strFailing != "memory")
            oScenario.m_vecComplaints.push_back("no memory, but nothing failed");
    }
}

void RunUndisturbed(CScenario& oScenario)
{
    const std::string strFailing = std::move(oScenario.m_strFailing);
    oScenario.m_strFailing.clear();
    oScenario.Prepare();
    RunOnce(oScenario);
    oScenario.m_strFailing = strFailing;
}

void RunDisturbed(CScenario& oScenario, SFailCalls& oCalls)
{
    oScenario.Prepare();
    oCalls.m_bArmed = true;
    RunOnce(oScenario);
    oCalls.m_bArmed = false;
}

void CompareHoldings(CScenario& oScenario, const SHoldings& oBefore)
{
    const SHoldings oAfter = SettledHoldings(oBefore);
    if (oAfter == oBefore)
        return;
    oScenario.m_vecComplaints.push_back(
        "leaked: blocks " + std::to_string(oAfter.nBlocks - oBefore.nBlocks) + ", handles " +
        std::to_string(oAfter.nHandles - oBefore.nHandles) + ", threads " +
        std::to_string(oAfter.nThreads - oBefore.nThreads) + (oAfter.bChildren ? ", a child" : ""));
}

/// What the copy does. @return its exit status
int TryFailure(CScenario& oScenario, SFailCalls& oCalls)
{
    alarm(PATIENCE_S);
    RunUndisturbed(oScenario);
    const SHoldings oBefore = Holdings();
    RunDisturbed(oScenario, oCalls);
    RunUndisturbed(oScenario);
    if (oScenario.m_vecComplaints.empty())
        CompareHoldings(oScenario, oBefore);
    for (const std::string& strComplaint : oScenario.m_vecComplaints)
        std::fprintf(stderr, "call %u: %s\n", oCalls.m_nNumber, strComplaint.c_str());
    return oScenario.m_vecComplaints.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// @return whether all is well with the failure of this call
bool SurvivesFailure(CScenario& oScenario, SFailCalls& oCalls, unsigned int nNumber)
{
    oCalls.m_nNumber = nNumber;
    for (auto& nCount : oCalls.m_anCounts)
        nCount = 0;
    const pid_t nCopy = fork();
    if (nCopy == 0)
        _exit(TryFailure(oScenario, oCalls));
    int nStatus = 0;
    waitpid(nCopy, &nStatus, 0);
    oCalls.m_bArmed = false; // one that crashed has left it so
    if (WIFSIGNALED(nStatus))
        std::fprintf(stderr, "call %u: signal %d\n", nNumber, WTERMSIG(nStatus));
    const bool bAborted = WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == SIGABRT;
    return nStatus == 0 || (bAborted && oScenario.MayAbort());
}

/// @return whether all is well with the failure of each call
bool SurvivesFailures(CScenario& oScenario, SFailCalls& oCalls)
{
    constexpr int MANY = 20;
    unsigned int nNumber = 0;
    int nBad = 0;
    do {
        nBad += SurvivesFailure(oScenario, oCalls, ++nNumber) ? 0 : 1;
    } while (oCalls.HasFailed() && nBad < MANY);
    std::printf("%u\n", nNumber - 1);
    return nBad == 0;
}

} // namespace

int& CBeside::Depth()
{
    static const auto s_pfnPause = Preloaded<int* (*)()>("FailCallsPause");
    return *s_pfnPause();
}

CScenario* MakeScenario(const std::string& strName, const std::string& strDirectory)
{
    struct SMaker
    {
        const char* pszName;
        CScenario* (*pfnMake)(const std::string& strDirectory);
    };
    static constexpr SMaker MAKERS[] = {{"safe-settings", MakeSafeSettings},
                                        {"plain-settings", MakePlainSettings},
                                        {"line", MakeLine},
                                        {"port", MakePort},
                                        {"loop", MakeLoop},
                                        {"daemon", MakeDaemon},
                                        {"detach", MakeDetach},
                                        {"child", MakeChild},
                                        {"log", MakeLog},
                                        {"store", MakeStore},
                                        {"zone", MakeZone}};
    for (const SMaker& oMaker : MAKERS) {
        if (strName == oMaker.pszName)
            return oMaker.pfnMake(strDirectory);
    }
    return nullptr;
}

bool CScenario::HasFailed()
{
    static const SFailCalls* const s_pCalls = Preloaded<SFailCalls* (*)()>("FailCalls")();
    return s_pCalls->m_bArmed && s_pCalls->HasFailed();
}

int main(int argc, char** argv)
{
    SFailCalls& oCalls = *Preloaded<SFailCalls* (*)()>("FailCalls")();
    unsetenv("LD_PRELOAD"); // for the programs that it starts
    const std::unique_ptr<CScenario> pScenario(argc < 6 ? nullptr : MakeScenario(argv[1], argv[2]));
    oCalls.m_nKind = argc < 6 ? FAIL_NOTHING : FailKindOf(argv[3]);
    if (pScenario == nullptr || oCalls.m_nKind == FAIL_NOTHING)
        return 2;
    oCalls.m_nError = std::atoi(argv[4]);
    oCalls.m_bOn = std::strcmp(argv[5], "on") == 0;
    pScenario->m_strFailing = argv[3];
    pScenario->m_nError = oCalls.m_nError;
    pScenario->m_bForGood = oCalls.m_bOn;
    RunUndisturbed(*pScenario);
    for (const std::string& strComplaint : pScenario->m_vecComplaints)
        std::fprintf(stderr, "undisturbed: %s\n", strComplaint.c_str());
    bool bWell = pScenario->m_vecComplaints.empty();
    if (argc > 6)
        bWell = SurvivesFailure(*pScenario, oCalls, static_cast<unsigned int>(std::atoi(argv[6])));
    else if (bWell)
        bWell = SurvivesFailures(*pScenario, oCalls);
    return bWell ? EXIT_SUCCESS : EXIT_FAILURE;
}
