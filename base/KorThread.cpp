#include "base/KorThread.h"

#include <cerrno>
#include <climits>
#include <ctime>
#include <unistd.h>

namespace
{

size_t UsableStackSize(unsigned int nRequested)
{
    const size_t nPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t nMinimum = static_cast<size_t>(PTHREAD_STACK_MIN);
    const size_t nSize = nRequested < nMinimum ? nMinimum : nRequested;
    return (nSize + nPage - 1) / nPage * nPage;
}

} // namespace

CKorThread::CKorThread(unsigned int nStackSize)
    : m_nStackSize(nStackSize),
      m_nState(THREAD_ENDED),
      m_bTerminate(false),
      m_bCreated(false),
      m_oThread()
{
}

CKorThread::~CKorThread()
{
    Terminate();
    Join();
}

void CKorThread::Run() {}

bool CKorThread::Initialize()
{
    return true;
}

bool CKorThread::Start()
{
    int nState = THREAD_ENDED;
    if (!m_nState.compare_exchange_strong(nState, THREAD_STARTING))
        return false;

    Join();
    m_bTerminate = false;
    m_bCreated = Create();
    if (!m_bCreated)
        m_nState = THREAD_ENDED;
    return m_bCreated;
}

void CKorThread::Terminate()
{
    m_bTerminate = true;
}

bool CKorThread::IsTerminationRequested() const
{
    return m_bTerminate;
}

int CKorThread::GetState() const
{
    return m_nState;
}

void CKorThread::Sleep(unsigned int nSeconds, unsigned int nMilliseconds)
{
    timespec oRest;
    oRest.tv_sec = static_cast<time_t>(nSeconds) + static_cast<time_t>(nMilliseconds / 1000);
    oRest.tv_nsec = static_cast<long>(nMilliseconds % 1000) * 1000000L;
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &oRest, &oRest) == EINTR) {
    }
}

void* CKorThread::ThreadMain(void* pThread)
{
    CKorThread& oThread = *static_cast<CKorThread*>(pThread);
    oThread.m_nState = THREAD_RUNNING;
    if (oThread.Initialize())
        oThread.Run();
    oThread.m_nState = THREAD_ENDED;
    return nullptr;
}

bool CKorThread::Create()
{
    pthread_attr_t oAttributes;
    pthread_attr_init(&oAttributes);
    if (m_nStackSize != 0)
        pthread_attr_setstacksize(&oAttributes, UsableStackSize(m_nStackSize));
    const int nError = pthread_create(&m_oThread, &oAttributes, &CKorThread::ThreadMain, this);
    pthread_attr_destroy(&oAttributes);
    return nError == 0;
}

void CKorThread::Join()
{
    if (m_bCreated)
        pthread_join(m_oThread, nullptr);
    m_bCreated = false;
}
