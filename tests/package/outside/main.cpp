// A program outside the tree: it knows the installed package and nothing else.

#include "app/KorConApplication.h"
#include "base/KorThread.h"

#include <cstdio>

class Outside : public CKorConApplication
{
public:
    Outside() : CKorConApplication(nullptr, nullptr, nullptr) {}
    void Run() override { CKorThread::Sleep(0, 1); }
    int Finalize() override
    {
        std::printf("%s runs on %s\n", GetApplName().c_str(),
                    CKorApplicationInfo::GetLibraryInfo().GetVersionString().c_str());
        return 0;
    }
};

int main(int argc, char** argv)
{
    Outside oOutside;
    return oOutside.Start(argc, argv);
}
