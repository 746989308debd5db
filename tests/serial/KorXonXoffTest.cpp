#include "serial/KorXonXoff.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace
{

TEST(KorXonXoff, KeepsWhatItIsBuiltWith)
{
    const CKorXonXoff oRecord(100, 400, '\x11', '\x13');
    EXPECT_TRUE(oRecord.GetUseFlag());
    EXPECT_EQ(100, oRecord.GetXonLimit());
    EXPECT_EQ(400, oRecord.GetXOffLimit());
    EXPECT_EQ('\x11', oRecord.GetXonChar());
    EXPECT_EQ('\x13', oRecord.GetXoffChar());
}

TEST(KorXonXoff, ADefaultBuiltRecordIsFilledByItsSetters)
{
    CKorXonXoff oRecord;
    oRecord.UseXonXoff(false);
    oRecord.SetXonLimit(0);
    oRecord.SetXoffLimit(65535);
    oRecord.SetXonChar('\xFF');
    oRecord.SetXoffChar('\0');
    EXPECT_FALSE(oRecord.GetUseFlag());
    EXPECT_EQ(0, oRecord.GetXonLimit());
    EXPECT_EQ(65535, oRecord.GetXOffLimit());
    EXPECT_EQ('\xFF', oRecord.GetXonChar());
    EXPECT_EQ('\0', oRecord.GetXoffChar());
    oRecord.UseXonXoff(true);
    EXPECT_TRUE(oRecord.GetUseFlag());
}

TEST(KorXonXoff, IsAPlainRecord)
{
    EXPECT_FALSE(std::is_polymorphic<CKorXonXoff>::value);
    EXPECT_EQ(8U, sizeof(CKorXonXoff));
}

} // namespace
