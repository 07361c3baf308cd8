#include "richtext/Losses.h"

#include <gtest/gtest.h>

using richtext::Losses;

TEST(Losses, EachKindOnceInTheOrderFirstMet)
{
    Losses losses;
    losses.add("pictures");
    losses.add("characters");
    losses.add("pictures");
    losses.add("");
    Losses more;
    more.add("characters");
    more.add("columns");
    losses.add(more);
    EXPECT_EQ(losses.kinds(), (std::vector<std::string>{"pictures", "characters", "columns"}));
    EXPECT_EQ(losses.joined(), "pictures; characters; columns");
    EXPECT_EQ(Losses().stderrLine("wpd2odt"), "") << "nothing lost, nothing said";
}

TEST(Losses, TheStderrLineIsReadBackAmongOtherLines)
{
    Losses losses;
    losses.add("pictures that could not be read");
    losses.add("two\nlines");
    const std::string line = losses.stderrLine("wpd2odt");
    EXPECT_EQ(line, "wpd2odt: lost: pictures that could not be read; two lines\n");
    const struct {
        std::string stderrText;
        std::vector<std::string> kinds;
    } rows[] = {
        {line, {"pictures that could not be read", "two lines"}},
        {"libwpd: a warning\n" + line + "odt2wp5: lost: columns",
         {"pictures that could not be read", "two lines", "columns"}},
        {"wpd2odt: /tmp/a b: lost: nothing\n", {}}, // a failure that names a path is no loss line
        {": lost: nameless\n", {}},
        {"", {}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Losses::fromStderr(row.stderrText).kinds(), row.kinds) << row.stderrText;
}
