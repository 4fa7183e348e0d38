#include <viewer/printable.h>

#include <gtest/gtest.h>

TEST(Printable, PlainTextStaysAsItIs)
{
    const QString text = QString::fromUtf8("two  blanks, \"quotes\", back\\slash, Übermaß, 塔, 🏠");
    EXPECT_EQ(printable(text), text);
}

TEST(Printable, ControlCharactersAreWrittenOut)
{
    EXPECT_EQ(printable("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(printable(QString("red\x1b[31m") + QChar(0x7f) + QChar(0x9b)), "red\\x1b[31m\\x7f\\x9b");
    EXPECT_EQ(printable(QString(QChar(0))), "\\x00");
}

TEST(Printable, CharactersThatTurnOrBreakLinesAreWrittenOut)
{
    EXPECT_EQ(printable(QString("gnp.") + QChar(0x202e) + "obj"), "gnp.\\u202eobj");
    EXPECT_EQ(printable(QString(QChar(0x2028)) + QChar(0x2029)), "\\u2028\\u2029");
}

TEST(Quoted, NeverLeavesItsEndInDoubt)
{
    EXPECT_EQ(quoted("roof"), "\"roof\"");
    EXPECT_EQ(quoted(""), "\"\"");
    EXPECT_EQ(quoted("a\": 5 points\nb"), "\"a\\\": 5 points\\nb\"");
    EXPECT_EQ(quoted("a\\"), "\"a\\\\\"");
}

TEST(ShownName, IsQuotedOnlyWhereNothingWouldShow)
{
    EXPECT_EQ(shownName("a b.obj"), "a b.obj");
    EXPECT_EQ(shownName(""), "\"\"");
    EXPECT_EQ(shownName("  "), "\"  \"");
}
