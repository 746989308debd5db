#pragma once

/// @file
/// The application framework: one object that is the program.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#applications

#include "KorExport.h"
#include "app/KorApplicationInfo.h"
#include "base/KorMutex.h"
#include "config/KorCmdLine.h"
#include "config/KorCmdLineExchange.h"
#include "time/KorLocalTime.h"

#include <string>

/// @addtogroup daemons
/// @{

class CKorCmdLineApplExchange;

/// A program: derive, override Run() and what else is needed, construct one object and return
/// its Start() from `main`.
///
/// Start() runs, in this order:
///
/// 1. InitializeClass(): takes over the command line, derives the name and the INI file name;
/// 2. ParseCommandLine(): calls DoCmdLineExchange() twice;
/// 3. Initialize();
/// 4. Run(), only when Initialize() returned true;
/// 5. Finalize(), whose value Start() returns.
///
/// **The program file must have an extension** (`gateway.bin`): the name of the application is
/// the title of `argv[0]`, and a file name without "." makes Start() fail with
/// std::out_of_range "basic_string::substr". With CMake, `set(CMAKE_EXECUTABLE_SUFFIX .bin)`
/// gives every program one.
///
/// Nothing is caught: an exception from any step leaves Start() unchanged, and Start() does not
/// call Finalize() then. Where nobody else catches it, it ends the process by `SIGABRT`, which a
/// CKorConApplication answers with Finalize() after all.
///
/// Construct and destroy the application on one thread, before other threads start and after
/// they ended; one instance a process.
class TARVO_EXT_API CKorBaseApplication
{
public:
    /// Becomes GetApplication() when no other application did, and takes the start time.
    /// @param pszIniFile   full name of the INI file; null lets InitializeClass() derive it
    /// @param pszApplName  name of the application; null or empty lets InitializeClass() take
    ///                     the program's title
    /// @param pszLogFile   name of the log file; null for ".log". For the derived class's use.
    CKorBaseApplication(const char* pszIniFile, const char* pszApplName, const char* pszLogFile);

    /// Makes GetApplication() null, whichever application it was.
    virtual ~CKorBaseApplication();

    CKorBaseApplication(const CKorBaseApplication&) = delete;
    CKorBaseApplication& operator=(const CKorBaseApplication&) = delete;

    /// Runs the program as described above.
    /// @param argc  number of entries of @p argv
    /// @param argv  the arguments, the program file first; null leaves the names as they are
    /// @return the value of Finalize()
    /// @throws std::out_of_range "basic_string::substr" when the program file has no extension:
    ///         give it one, see above
    /// @throws std::logic_error "basic_string::_S_construct NULL not valid" when @p argv holds a
    ///         null entry, the first one included
    int Start(int argc, char** argv);

    /// Takes over the command line: GetCommandLine() and the arguments for DoCmdLineExchange().
    /// An empty application name becomes the title of `argv[0]`; an empty INI file name becomes
    /// the directory of `argv[0]`, the application name and ".ini".
    /// @throws std::out_of_range as Start(); the command line is taken over then, the names are
    ///         not
    /// @throws std::logic_error as Start()
    void InitializeClass(int argc, char** argv);

    /// Called before Run(). The base version returns true; an override that returns false keeps
    /// Run() from being called.
    virtual bool Initialize();

    /// Called last, whatever Initialize() returned. Its result is the result of Start() and so, in
    /// most programs, the exit status. The base version returns 1: override it where 0 is to tell
    /// success.
    virtual int Finalize();

    /// Declares and reads the program's command-line options; the base version does nothing.
    /// Called twice: first to declare, with `IsInitialized()` false, then to read, with
    /// `IsInitialized()` true and all arguments there again. Call `AddParamDescription` and
    /// `GetParameter` on @p pExchange.
    virtual void DoCmdLineExchange(CKorCmdLineApplExchange* pExchange);

    /// Runs the two passes of DoCmdLineExchange().
    virtual void ParseCommandLine();

    /// The program's work; called when Initialize() returned true.
    virtual void Run() = 0;

    /// The application of this process, null when there is none.
    static CKorBaseApplication* GetApplication() { return m_pApplication; }

    /// The identity record, valid as long as the application.
    const CKorApplicationInfo& GetInfo() const { return m_oInfo; }

    /// The local time of construction, valid as long as the application.
    const CKorLocalTime& GetStartZeit() const { return m_oStartZeit; }

    /// The arguments without the program file, each followed by one blank.
    std::string GetCommandLine() const { return m_strCommandLine; }

    /// The application's name.
    std::string GetApplName() const { return m_oInfo.GetApplName(); }

    /// Sets the application's name; null sets the empty text.
    void SetApplName(const char* pszName) { m_oInfo.SetApplName(pszName); }

protected:
    std::string m_strIniFile;     ///< full name of the INI file
    CKorApplicationInfo m_oInfo;  ///< identity record
    CKorLocalTime m_oStartZeit;   ///< local time of construction
    CKorCmdLine m_oCmdLine;       ///< every entry of `argv`, the program file included
    std::string m_strCommandLine; ///< the arguments, each followed by one blank
    CKorMutex m_oMutex;           ///< for derived classes; never locked here
    int m_nAppData;               ///< for derived classes; 0 at first
    std::string m_strLogFile;     ///< log file name, for derived classes; ".log" at first

    static CKorBaseApplication* m_pApplication; ///< the application of this process
};

/// The command-line exchange of an application: hands itself to
/// CKorBaseApplication::DoCmdLineExchange().
class TARVO_EXT_API CKorCmdLineApplExchange : public CKorCmdLineExchange
{
public:
    /// An exchange without application and without arguments.
    CKorCmdLineApplExchange();

    /// Runs the declaring pass over @p pCmdLine at once and restores the arguments after it.
    /// @param pApplication  whose DoCmdLineExchange() is called; not owned
    /// @param pCmdLine      the arguments; not owned
    CKorCmdLineApplExchange(CKorBaseApplication* pApplication, CKorCmdLine* pCmdLine);

    ~CKorCmdLineApplExchange() override;

    /// Runs the declaring pass of the application, then restores all arguments.
    void Initialize() override;

protected:
    CKorBaseApplication* m_pAppl; ///< the application, not owned; may be null
};

/// @}
