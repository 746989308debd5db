#include "DetachedThread.h"

#include <memory>
#include <new>
#include <pthread.h>
#include <utility>

namespace
{

void* RunMain(void* pMain)
{
    const std::unique_ptr<std::function<void()>> pFunction(
        static_cast<std::function<void()>*>(pMain));
    (*pFunction)();
    return nullptr;
}

} // namespace

bool RunDetached(std::function<void()> fnMain)
{
    const auto pNew = new (std::nothrow) std::function<void()>(std::move(fnMain));
    std::unique_ptr<std::function<void()>> pMain(pNew);
    pthread_t oThread;
    if (pMain == nullptr || pthread_create(&oThread, nullptr, RunMain, pMain.get()) != 0)
        return false;
    static_cast<void>(pMain.release()); // it is the thread's now
    pthread_detach(oThread);
    return true;
}
