#include "app/KorApplicationInfo.h"

#include <gtest/gtest.h>
#include <locale>

namespace
{

CKorApplicationInfo NamedOnly(const char* pszName)
{
    return {pszName, 0, 0, 0, nullptr, nullptr, nullptr, nullptr};
}

std::string VersionFrom(const char* pszText)
{
    CKorApplicationInfo oInfo = NamedOnly("x");
    oInfo.SetVersion(pszText);
    return oInfo.GetVersion();
}

TEST(KorApplicationInfo, ANameAloneIsAlsoTheDescription)
{
    const CKorApplicationInfo oInfo = NamedOnly("gw");
    EXPECT_EQ("gw", oInfo.GetApplName());
    EXPECT_EQ("gw", oInfo.GetApplDescription());
    EXPECT_EQ("", oInfo.GetVendorName());
    EXPECT_EQ("", oInfo.GetContact());
    EXPECT_EQ("gw, Version 0.0.0", oInfo.GetVersionString());
}

TEST(KorApplicationInfo, TheCopyrightLineKeepsItsBlankWithoutAVendor)
{
    EXPECT_EQ("Copyright (C) ", NamedOnly("gw").GetCopyrightString());
}

TEST(KorApplicationInfo, TheCopyrightLineNamesVendorAndContact)
{
    CKorApplicationInfo oInfo("gw", 1, 2, 3, "Example Ltd", "Gateway", "gw.example", "(c) 2026");
    EXPECT_EQ("(c) 2026 Example Ltd (gw.example)", oInfo.GetCopyrightString());
    oInfo.SetContact(nullptr);
    EXPECT_EQ("(c) 2026 Example Ltd", oInfo.GetCopyrightString());
    oInfo.SetCopyright(nullptr);
    EXPECT_EQ("Copyright (C) Example Ltd", oInfo.GetCopyrightString());
}

TEST(KorApplicationInfo, NullTextsSetTheDefaults)
{
    CKorApplicationInfo oInfo("gw", 1, 2, 3, "Example Ltd", "Gateway", "gw.example", "(c) 2026");
    oInfo.SetApplDescription(nullptr);
    EXPECT_EQ("gw", oInfo.GetApplDescription());
    oInfo.SetApplName(nullptr);
    EXPECT_EQ("", oInfo.GetApplName());
    EXPECT_EQ("gw", oInfo.GetApplDescription());
    oInfo.SetVendorName(nullptr);
    EXPECT_EQ("", oInfo.GetVendorName());
}

TEST(KorApplicationInfo, VersionNumbersAreKeptUnchecked)
{
    CKorApplicationInfo oInfo = NamedOnly("gw");
    oInfo.SetVersion(2, -1, 3);
    EXPECT_EQ(2, oInfo.GetVersionMajor());
    EXPECT_EQ(-1, oInfo.GetVersionMinor());
    EXPECT_EQ(3, oInfo.GetVersionPatch());
    EXPECT_EQ("2.-1.3", oInfo.GetVersion());
}

TEST(KorApplicationInfo, AVersionTextIsThreeNumbers)
{
    EXPECT_EQ("2.5.7", VersionFrom("2.5.7"));
    EXPECT_EQ("1.0.10", VersionFrom("1.0.10"));
    EXPECT_EQ("1.2.3", VersionFrom(" 1. 2 . 3"));
    EXPECT_EQ("1.2.3", VersionFrom("1.2.3-rc4"));
}

TEST(KorApplicationInfo, MissingVersionNumbersAreThoseOfOneZeroZero)
{
    EXPECT_EQ("3.0.0", VersionFrom("3"));
    EXPECT_EQ("3.4.0", VersionFrom("3.4"));
    EXPECT_EQ("3.4.0", VersionFrom("3.4."));
    EXPECT_EQ("1.0.0", VersionFrom(""));
    EXPECT_EQ("1.0.0", VersionFrom(nullptr));
}

TEST(KorApplicationInfo, AVersionTextIsReadUpToWhatDoesNotFit)
{
    EXPECT_EQ("1.0.0", VersionFrom("x.y.z"));
    EXPECT_EQ("7.0.0", VersionFrom("7.a.9"));
    EXPECT_EQ("1.0.0", VersionFrom("99999999999.2.3"));
}

TEST(KorApplicationInfo, AnyCharacterSeparatesVersionNumbers)
{
    EXPECT_EQ("4.5.6", VersionFrom("4-5-6"));
}

TEST(KorApplicationInfo, AVersionTextReadsTheSameUnderAGroupingLocale)
{
    struct DotGrouping : std::numpunct<char>
    {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale oOld = std::locale::global(std::locale(std::locale(), new DotGrouping));
    const std::string strVersion = VersionFrom("1.000.10");
    std::locale::global(oOld);
    EXPECT_EQ("1.0.10", strVersion);
}

TEST(KorApplicationInfo, TheTextConstructorReadsTheVersion)
{
    const CKorApplicationInfo oInfo("gw", "4-5-6", "V", nullptr, nullptr, nullptr);
    EXPECT_EQ("gw, Version 4.5.6", oInfo.GetVersionString());
    const CKorApplicationInfo oDefault("gw", nullptr, "V", nullptr, nullptr, nullptr);
    EXPECT_EQ("1.0.0", oDefault.GetVersion());
}

TEST(KorApplicationInfo, CopiesOwnTheirTexts)
{
    CKorApplicationInfo oCopy = NamedOnly("other");
    {
        const CKorApplicationInfo oInfo("gw", "1.2.3", "V", "D", "C", "(c)");
        oCopy = oInfo;
    }
    EXPECT_EQ("D, Version 1.2.3", oCopy.GetVersionString());
    EXPECT_EQ("(c) V (C)", oCopy.GetCopyrightString());
}

TEST(KorApplicationInfo, TheLibraryDescribesItself)
{
    const CKorApplicationInfo& oLibrary = CKorApplicationInfo::GetLibraryInfo();
    EXPECT_EQ(&oLibrary, &CKorApplicationInfo::GetLibraryInfo());
    EXPECT_EQ("libTarvo", oLibrary.GetApplName());
    EXPECT_EQ("Quentor GmbH", oLibrary.GetVendorName());
    EXPECT_EQ("Quentor libTarvo, Version 1.0.10", oLibrary.GetVersionString());
    EXPECT_EQ("Copyright (C) 2009-2026 Quentor GmbH (www.quentor.example)",
              oLibrary.GetCopyrightString());
}

} // namespace
