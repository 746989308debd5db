#pragma once

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

    std::string m_strFailing; ///< The kind of call that fails in this run; may be empty.
    bool m_bForGood = false;  ///< All calls after it fail as well.
    std::vector<std::string> m_vecComplaints;

protected:
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
        for (int nAttempt = m_strFailing.empty() ? 1 : 0; nAttempt < 2; ++nAttempt) {
            if (IsDone(fnOperation))
                return true;
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
