#include "tests/support/CallWatch.h"

#include <utility>

extern int (*g_pDecideOnCall)(const char* pszCall);

namespace
{

thread_local CallWatch* s_pWatch = nullptr;

const bool INSTALLED = (g_pDecideOnCall = CallWatch::Decide) != nullptr;

} // namespace

CallWatch::CallWatch(Decision fnDecision) : m_fnDecision(std::move(fnDecision))
{
    s_pWatch = this;
}

CallWatch::~CallWatch()
{
    s_pWatch = nullptr;
}

int CallWatch::Decide(const char* pszCall)
{
    CallWatch* pWatch = std::exchange(s_pWatch, nullptr);
    const int nError = pWatch != nullptr ? pWatch->m_fnDecision(pszCall) : 0;
    s_pWatch = pWatch;
    return nError;
}

std::string FailEachCall(int nError, const std::function<void()>& fnRun,
                         const std::function<void(const std::string& strFailed)>& fnLook)
{
    std::string strAll;
    std::string strFailed;
    for (int nLeft = 0;; ++nLeft) {
        strFailed.clear();
        int nCalls = 0;
        {
            const CallWatch oWatch([&](const std::string& strCall) {
                if (nCalls++ != nLeft)
                    return 0;
                strFailed = strCall;
                return nError;
            });
            fnRun();
        }
        fnLook(strFailed);
        if (strFailed.empty())
            return strAll;
        strAll += strFailed + " ";
    }
}
