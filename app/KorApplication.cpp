#include "app/KorApplication.h"

#include "fs/KorPathFunc.h"
#include "text/KorStringDetail.h"

CKorBaseApplication* CKorBaseApplication::m_pApplication = nullptr;

CKorBaseApplication::CKorBaseApplication(const char* pszIniFile, const char* pszApplName,
                                         const char* pszLogFile)
    : m_oInfo(pszApplName, 0, 0, 0, nullptr, nullptr, nullptr, nullptr),
      m_nAppData(0),
      m_strLogFile(".log")
{
    if (pszLogFile != nullptr)
        m_strLogFile = pszLogFile;
    if (m_pApplication == nullptr)
        m_pApplication = this;
    m_oStartZeit = CKorLocalTime::CurrentLocalTime();
    if (pszIniFile != nullptr)
        m_strIniFile = pszIniFile;
}

CKorBaseApplication::~CKorBaseApplication()
{
    m_pApplication = nullptr;
}

int CKorBaseApplication::Start(int argc, char** argv)
{
    InitializeClass(argc, argv);
    ParseCommandLine();
    if (Initialize())
        Run();
    return Finalize();
}

void CKorBaseApplication::InitializeClass(int argc, char** argv)
{
    // Before anything else is touched, because a null entry ends here.
    m_oCmdLine.Initialize(argc, argv);
    if (argv == nullptr)
        return;
    for (int i = 1; i < argc; ++i)
        m_strCommandLine.append(argv[i]).append(" ");

    std::string strDrive;
    std::string strDir;
    std::string strTitle;
    SplitPath(argv[0], &strDrive, &strDir, &strTitle, nullptr);
    if (GetApplName().empty())
        SetApplName(strTitle.c_str());
    if (m_strIniFile.empty())
        m_strIniFile = KorConcat({strDrive, strDir, GetApplName(), ".ini"});
}

bool CKorBaseApplication::Initialize()
{
    return true;
}

int CKorBaseApplication::Finalize()
{
    return 1;
}

void CKorBaseApplication::DoCmdLineExchange(CKorCmdLineApplExchange*) {}

void CKorBaseApplication::ParseCommandLine()
{
    CKorCmdLineApplExchange oExchange(this, &m_oCmdLine);
    DoCmdLineExchange(&oExchange);
}

CKorCmdLineApplExchange::CKorCmdLineApplExchange() : CKorCmdLineExchange(nullptr), m_pAppl(nullptr)
{
}

CKorCmdLineApplExchange::CKorCmdLineApplExchange(CKorBaseApplication* pApplication,
                                                 CKorCmdLine* pCmdLine)
    : CKorCmdLineExchange(pCmdLine), m_pAppl(pApplication)
{
    CKorCmdLineApplExchange::Initialize();
}

CKorCmdLineApplExchange::~CKorCmdLineApplExchange() = default;

void CKorCmdLineApplExchange::Initialize()
{
    m_bInitialized = false;
    if (m_pAppl != nullptr)
        m_pAppl->DoCmdLineExchange(this);
    CopyCmdLineArgs();
    m_bInitialized = true;
}
