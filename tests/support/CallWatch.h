#pragma once

#include <functional>
#include <string>

/// Stands between the library and the system: decides on each `open`, `read`, `write`, `fsync`,
/// `fchown` and `rename` of the running thread for the scope. The calls are real ones; those that
/// the decision makes fail do not reach the system.
class CallWatch
{
public:
    /// Gets the call's name and returns 0 to let it pass or the `errno` of its failure. Calls that
    /// it makes itself are not watched.
    using Decision = std::function<int(const std::string& strCall)>;

    explicit CallWatch(Decision fnDecision);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    /// The decision on a call of this thread.
    static int Decide(const char* pszCall);

private:
    Decision m_fnDecision;
};

/// Makes each call that an operation makes fail once, the others passing, and looks after each of
/// these runs. Ends with the run in which no call is left to fail.
/// @param fnRun    one run of the operation from the same start, under the watch
/// @param fnLook   gets the name of the call that failed; empty after the last run
/// @return the names of the calls that failed, each followed by a blank
std::string FailEachCall(int nError, const std::function<void()>& fnRun,
                         const std::function<void(const std::string& strFailed)>& fnLook);
