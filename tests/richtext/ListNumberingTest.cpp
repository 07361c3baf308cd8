#include "richtext/ListNumbering.h"

#include <gtest/gtest.h>

using richtext::ListNumbering;

namespace {

struct Number {
    int value;
    const char *format;
    const char *expected;
};

TEST(ListNumbering, FormatsNumbersAsOdfDoes)
{
    const Number numbers[] = {
        {42, "1", "42"},
        {26, "a", "z"},
        {27, "a", "aa"},
        {53, "A", "AAA"},
        {1994, "I", "MCMXCIV"},
        {9, "i", "ix"},
        {3, "", ""},
        {0, "a", "0"},
        {-2, "i", "-2"},
        {1, "1st", "1st"},
        {2, "1st", "2nd"},
        {3, "1st", "3rd"},
        {11, "1st", "11th"},
        {112, "1st", "112th"},
        {23, "1st", "23rd"},
        {7, "01, 02, 03, ...", "07"},
        {123, "01, 02, 03, ...", "123"},
        {3, "\u4E00, \u4E8C, \u4E09, ...", "\u4E09"},
        {10, "\u4E00", "\u5341"},
        {12, "\u4E00", "\u5341\u4E8C"},
        {40, "\u4E00", "\u56DB\u5341"},
        {100, "\u4E00", "100"},
    };
    for (const Number &number : numbers)
        EXPECT_EQ(ListNumbering::formatNumber(number.value, number.format), number.expected)
            << number.value << " in " << number.format;
}

librevenge::RVNGPropertyList level(const char *format, int start = 1, int displayLevels = 1)
{
    librevenge::RVNGPropertyList list;
    list.insert("style:num-format", format);
    list.insert("style:num-prefix", "(");
    list.insert("style:num-suffix", ")");
    list.insert("text:start-value", start);
    list.insert("text:display-levels", displayLevels);
    return list;
}

TEST(ListNumbering, CountsThroughLevels)
{
    ListNumbering numbering;
    numbering.openLevel(level("1", 3), true);
    EXPECT_EQ(numbering.nextLabel(), "(3)");
    numbering.openLevel(level("a", 1, 2), true);
    EXPECT_EQ(numbering.nextLabel(), "(3.a)") << "two levels shown";
    EXPECT_EQ(numbering.nextLabel(), "(3.b)");
    numbering.closeLevel();
    EXPECT_EQ(numbering.nextLabel(), "(4)") << "the parent goes on";
    numbering.openLevel(level("a"), true);
    EXPECT_EQ(numbering.nextLabel(), "(a)") << "a level that opens again starts again";
    numbering.restartAt(5);
    EXPECT_EQ(numbering.nextLabel(), "(e)");
    numbering.closeLevel();
    librevenge::RVNGPropertyList bullet;
    bullet.insert("text:bullet-char", "-");
    numbering.openLevel(bullet, false);
    EXPECT_EQ(numbering.nextLabel(), "-");
    EXPECT_EQ(numbering.depth(), 2);
    numbering.closeLevel();
    numbering.closeLevel();
    numbering.closeLevel(); // one too many does no harm
    EXPECT_EQ(numbering.nextLabel(), "");
}

} // namespace
