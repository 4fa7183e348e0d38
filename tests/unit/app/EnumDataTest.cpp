#include "tests/support/LogTrap.h"

#include <framework/app/EnumData.h>

#include <gtest/gtest.h>

TEST(EnumData, recordsAreFoundByIdentifierAndKey)
{
    EXPECT_TRUE(registerEnumData({0x7E570001, "TestOne", "caption"}));
    const EnumData* record = findEnumData(0x7E570001);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->key, "TestOne");
    EXPECT_EQ(record->caption, "caption");
    EXPECT_EQ(findEnumData(QString("TestOne")), record);
    EXPECT_EQ(findEnumData(0x7E57FFFF), nullptr);
    EXPECT_EQ(findEnumData(QString("testone")), nullptr);
}

TEST(EnumData, identifierOrKeyThatIsTakenIsRefused)
{
    EXPECT_TRUE(registerEnumData({0x7E570011, "TestTaken", {}}));
    EXPECT_FALSE(registerEnumData({0x7E570011, "TestOther", {}}));
    EXPECT_FALSE(registerEnumData({0x7E570012, "TestTaken", {}}));
    const QStringList log = LogTrap::take();
    ASSERT_EQ(log.size(), 2);
    EXPECT_EQ(log[0], "Type 0x7e570011 \"TestOther\" is not registered: its identifier or key is taken");
    EXPECT_EQ(findEnumData(0x7E570012), nullptr);
}

TEST(EnumData, pointersStayGoodAndOrderIsThatOfRegistration)
{
    registerEnumData({0x7E570021, "TestFirst", {}});
    const EnumData* first = findEnumData(0x7E570021);
    const std::size_t before = getEnumData().size();
    for (int i = 0; i < 100; ++i)
        registerEnumData({0x7E571000 - i, QString("TestMany%1").arg(i), {}});
    EXPECT_EQ(findEnumData(0x7E570021), first);
    const std::vector<EnumData> all = getEnumData();
    ASSERT_EQ(all.size(), before + 100);
    EXPECT_EQ(all[before].key, "TestMany0");
    EXPECT_EQ(all.back().key, "TestMany99");
}
