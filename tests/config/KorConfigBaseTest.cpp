#include "config/KorConfigBase.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace
{

struct Exchange : CKorConfigExchange
{
    using CKorConfigExchange::CKorConfigExchange;
    using CKorConfigExchange::m_bModified;
    using CKorConfigExchange::m_bWriteBack;
};

struct Source : CKorConfigBase
{
    bool UpdateOptions(bool bWriteBack) override
    {
        CKorConfigExchange oExchange(bWriteBack);
        DoOptionExchange(&oExchange);
        return true;
    }
    void DoOptionExchange(CKorConfigExchange* pExchange) override
    {
        CKorConfigBase::DoOptionExchange(pExchange);
        m_bWritten = pExchange->IsWriteBack();
    }
    bool m_bWritten = false;
};

TEST(KorConfigExchange, IsUnmodifiedAndKnowsItsDirection)
{
    const Exchange oReading(false);
    EXPECT_FALSE(oReading.m_bModified);
    EXPECT_FALSE(oReading.m_bWriteBack);
    EXPECT_FALSE(oReading.IsWriteBack());

    const Exchange oWriting(true);
    EXPECT_FALSE(oWriting.m_bModified);
    EXPECT_TRUE(oWriting.m_bWriteBack);
    EXPECT_TRUE(oWriting.IsWriteBack());
}

TEST(KorConfigExchange, ReadsUnlessToldOtherwise)
{
    const Exchange oExchange;
    EXPECT_FALSE(oExchange.IsWriteBack());
}

TEST(KorConfigBase, HandsEveryExchangeToTheSourcesHandler)
{
    Source oSource;
    CKorConfigBase& oBase = oSource;
    EXPECT_TRUE(oBase.UpdateOptions(true));
    EXPECT_TRUE(oSource.m_bWritten);
}

TEST(KorConfigBase, IsAbstract)
{
    EXPECT_TRUE(std::is_abstract_v<CKorConfigBase>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorConfigBase>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorConfigExchange>);
}

} // namespace
