// The settings of a program: read, changed and saved.

#include "config/KorOptionExchange.h"
#include "config/KorSafeIniFile.h"
#include "config/KorTypedOptions.h"
#include "tests/failing/Beside.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/EntriesOf.h"

namespace
{

constexpr char COMMENT[] = "# the meters\n";
constexpr char OLD[] = "# the meters\n[Port]\nDevice=\"/dev/ttyUSB0\"\nSpeed=9600\n\n"
                       "[Log]\nFile=\"a rather long name of a file\"\n";

template <class TFile>
class COptions : public TFile
{
public:
    explicit COptions(const std::string& strFile) : TFile(strFile.c_str(), TFile::PATH_UNCHANGED) {}
    using TFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        IOX_Std<std::string>(pExchange, "Port", "Device", m_strDevice, "none");
        IOX_Value(pExchange, "Port", "Speed", m_nSpeed, 0);
        IOX_Std<std::string>(pExchange, "Log", "File", m_strFile, "none");
    }
    bool AreOld() const
    {
        return m_strDevice == "/dev/ttyUSB0" && m_nSpeed == 9600 &&
               m_strFile == "a rather long name of a file";
    }
    void SetNew()
    {
        const CBeside oBeside;
        m_strDevice = "/dev/ttyUSB1";
        m_nSpeed = 19200;
        m_strFile = "a rather long name of another file";
    }

    std::string m_strDevice;
    int m_nSpeed = 0;
    std::string m_strFile;
};

class CSettings : public CScenario
{
public:
    explicit CSettings(const std::string& strDirectory)
        : m_strDirectory(strDirectory), m_strFile(strDirectory + "/gateway.ini")
    {
    }
    void Prepare() override
    {
        Empty(m_strDirectory);
        SetText(m_strFile, OLD);
    }

protected:
    /// The file's content is the one that the first run, an undisturbed one, has left.
    bool IsNew()
    {
        const CBeside oBeside;
        if (m_strNew.empty())
            m_strNew = TextOf(m_strFile);
        return TextOf(m_strFile) == m_strNew && m_strNew != OLD;
    }
    bool IsOld() const
    {
        const CBeside oBeside;
        return TextOf(m_strFile) == OLD;
    }
    bool IsAlone() const
    {
        const CBeside oBeside;
        return EntriesOf(m_strDirectory) == 1;
    }

    const std::string m_strDirectory;
    const std::string m_strFile;
    std::string m_strNew;
};

class CSafeSettings : public CSettings
{
public:
    using CSettings::CSettings;
    bool MustTell() const override { return !IsInterruption(); }
    void Run() override
    {
        COptions<CKorSafeIniFile> oOptions(m_strFile);
        Read(oOptions);
        oOptions.SetNew();
        const bool bSaved =
            Save(oOptions, "settings are saved", [&] { return oOptions.UpdateOptions(true); });
        Expect(!bSaved || IsNew(), "settings that were saved are in the file");
        if (!bSaved)
            return;
        Save(oOptions, "an option is written",
             [&] { return oOptions.WriteOption("Port", "Parity", "even"); });
        Succeeds("an option is read",
                 [&] { return oOptions.ReadOption("Port", "Parity", "none") == "even"; });
        Save(oOptions, "an option is removed",
             [&] { return oOptions.RemoveOption("Port", "Parity"); });
        Expect(m_bForGood || IsNew(), "an option that was removed leaves the file as before");
    }

private:
    void Read(COptions<CKorSafeIniFile>& rOptions)
    {
        const bool bRead = Succeeds(
            "settings are read", [&] { return rOptions.UpdateOptions(false); },
            [&] { Expect(IsOld(), "reading changes no file"); });
        Expect(!bRead || rOptions.AreOld(), "settings that were read are those of the file");
    }
    template <typename TOperation>
    bool Save(COptions<CKorSafeIniFile>& rOptions, const char* pszName, TOperation fnSave)
    {
        std::string strBefore;
        {
            const CBeside oBeside;
            strBefore = TextOf(m_strFile);
        }
        const bool bSaved = Succeeds(pszName, fnSave, [&] {
            Expect(rOptions.WasWritten() || TextOf(m_strFile) == strBefore,
                   "a save that failed leaves the file");
            Expect(IsAlone(), "a save that failed leaves no other file");
        });
        Expect(IsAlone(), "nothing is left beside the file");
        const CBeside oBeside;
        std::string().swap(strBefore);
        return bSaved;
    }
};

class CPlainSettings : public CSettings
{
public:
    using CSettings::CSettings;
    void Run() override
    {
        COptions<CKorIniFile> oOptions(m_strFile);
        const bool bRead = Succeeds("settings are read", [&] {
            oOptions.UpdateOptions(false);
            return oOptions.AreOld();
        });
        Expect(IsOld(), "reading changes no file");
        if (!bRead)
            return;
        oOptions.SetNew();
        Succeeds(
            "settings are saved",
            [&] {
                oOptions.UpdateOptions(true);
                return IsNew();
            },
            [&] {
                Expect(MayLose() || IsWhole(), "a save that failed leaves each option");
                Prepare();
            });
    }

private:
    /// A file that cannot be opened reads as empty and is written all the same; one that cannot be
    /// written is left shortened.
    bool MayLose() const { return m_strFailing == "open" || m_strFailing == "write"; }
    /// What the program set before its exchange ran out of memory is written.
    bool IsWhole() const
    {
        COptions<CKorIniFile> oOptions(m_strFile);
        oOptions.UpdateOptions(false);
        return TextOf(m_strFile).find(COMMENT) == 0 &&
               (oOptions.m_strDevice == "/dev/ttyUSB0" || oOptions.m_strDevice == "/dev/ttyUSB1") &&
               (oOptions.m_nSpeed == 9600 || oOptions.m_nSpeed == 19200) &&
               oOptions.m_strFile.find("a rather long name of a") == 0;
    }
};

} // namespace

CScenario* MakeSafeSettings(const std::string& strDirectory)
{
    return new CSafeSettings(strDirectory);
}

CScenario* MakePlainSettings(const std::string& strDirectory)
{
    return new CPlainSettings(strDirectory);
}
