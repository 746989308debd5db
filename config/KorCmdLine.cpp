#include "config/KorCmdLine.h"

#include "config/KorCmdLineExchange.h"
#include "text/KorStringDetail.h"

#include <stdexcept>

CKorCmdLine::CKorCmdLine() = default;

CKorCmdLine::CKorCmdLine(int argc, char** argv)
{
    Initialize(argc, argv);
}

CKorCmdLine::~CKorCmdLine() = default;

void CKorCmdLine::Initialize(int argc, char** argv)
{
    m_vecArgs.clear();
    for (int i = 0; argv != nullptr && i < argc; ++i) {
        if (argv[i] == nullptr)
            throw std::logic_error("basic_string::_S_construct NULL not valid");
        KorAdd(m_vecArgs, argv[i]);
    }
}

bool CKorCmdLine::UpdateOptions(bool)
{
    CKorCmdLineExchange oExchange(this);
    DoOptionExchange(&oExchange);
    return true;
}

void CKorCmdLine::DoOptionExchange(CKorConfigExchange* pExchange)
{
    DoOptionExchange(static_cast<CKorCmdLineExchange*>(pExchange));
}

void CKorCmdLine::DoOptionExchange(CKorCmdLineExchange*) {}
