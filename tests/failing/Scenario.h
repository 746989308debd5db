#pragma once

#include <cerrno>
#include <new>
#include <string>
#include <vector>

/// What a run does beside the library's work: its calls neither count nor fail.
class CBeside
{
public:
    CBeside() { ++Depth(); }
    ~CBeside() { --Depth(); }
    CBeside(const CBeside&) = delete;
    CBeside& operator=(const CBeside&) = delete;

private:
    static int& Depth();
};

/// Something that a program does with the library and that a failing system disturbs. It is run
/// several times in one process.
class CScenario
{
public:
    virtual ~CScenario() = default;

    /// Makes everything ready for a run, as it was before the first one.
    virtual void Prepare() {}
    /// One run, which compares what the library tells with what is so.
    virtual void Run() = 0;

    /// Whether the failure may end the process with SIGABRT, as documented.
    virtual bool MayAbort() const { return false; }
    /// Whether an operation must not succeed in which the call failed.
    virtual bool MustTell() const { return false; }
    /// Whether a call that was interrupted may be told as a failure.
    virtual bool MayTellInterruption() const { return false; }

    std::string m_strFailing; ///< The kind of call that fails in this run; may be empty.
    int m_nError = 0;         ///< Its `errno`.
    bool m_bForGood = false;  ///< All calls after it fail as well.
    std::vector<std::string> m_vecComplaints;

protected:
    bool IsInterruption() const { return m_nError == EINTR; }

    /// A promise of the library.
    void Expect(bool bHolds, const char* pszPromise)
    {
        const CBeside oBeside;
        if (!bHolds)
            m_vecComplaints.push_back(pszPromise);
    }

    /// Has an operation succeed: at once in a healthy system, at the second attempt in one that
    /// fails once, since an object works on after a failure.
    /// @param fnOperation  tells whether it succeeded; running out of memory is a failure
    /// @param fnLook       looks at what a failure left
    template <typename TOperation, typename TLook>
    bool Succeeds(const char* pszName, TOperation fnOperation, TLook fnLook)
    {
        for (int nAttempt = MayFail() ? 0 : 1; nAttempt < 2; ++nAttempt) {
            const bool bFailedBefore = HasFailed();
            if (IsDone(fnOperation)) {
                Expect(bFailedBefore || !HasFailed() || !MustTell(), "a failure is told");
                return true;
            }
            const CBeside oBeside;
            fnLook();
        }
        Expect(m_bForGood, pszName);
        return false;
    }
    template <typename TOperation>
    bool Succeeds(const char* pszName, TOperation fnOperation)
    {
        return Succeeds(pszName, fnOperation, [] {});
    }

private:
    /// Whether the call that is to fail in this run has come.
    static bool HasFailed();

    bool MayFail() const
    {
        return !m_strFailing.empty() && (!IsInterruption() || MayTellInterruption());
    }

    template <typename TOperation>
    static bool IsDone(TOperation fnOperation)
    {
        try {
            return fnOperation();
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
};
