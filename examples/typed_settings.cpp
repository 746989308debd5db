// Reads settings with types and limits, and says which lines are wrong.
#include "config/KorSafeIniFile.h"
#include "config/KorTypedOptions.h"

#include <cstdio>

class Settings : public CKorSafeIniFile
{
public:
    explicit Settings(const char* pszFile) : CKorSafeIniFile(pszFile, PATH_UNCHANGED) {}
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        IOX_Value(pExchange, "Port", "Device", m_strDevice, "/dev/ttyAM0");
        IOX_Range(pExchange, "Poll", "Interval", m_oInterval, 500, 10, 60000); // in ms
    }
    std::string m_strDevice;
    CKorTimeDiff m_oInterval;
};

int main(int argc, char** argv)
{
    Settings oSettings(argc > 1 ? argv[1] : "gateway.ini");
    const bool bRead = oSettings.UpdateOptions(false);
    for (const SKorIniFinding& oFinding : oSettings.GetFindings())
        std::printf("line %u: %s\n", oFinding.m_nLine, oFinding.m_strText.c_str());
    std::printf("%s, %lld ms\n", oSettings.m_strDevice.c_str(),
                oSettings.m_oInterval.GetTotalMilliSeconds());
    return bRead ? 0 : 1;
}
