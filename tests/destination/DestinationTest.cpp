#include "TestSupport.h"
#include "destination/Destination.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using namespace testing_support;

TEST(Destination, OutputNameDropsOnlyAKnownLastExtension)
{
    struct Row {
        const char *input;
        const char *ext;
        const char *output;
    };
    const Row rows[] = {
        {"Letter.wpd", "odt", "Letter.odt"},
        {"REPORT.WPD", "odt", "REPORT.odt"},
        {"Letter.final.wpd", "odt", "Letter.final.odt"},
        {"archive.tar.gz", "odt", "archive.tar.gz.odt"},
        {"notes", "odt", "notes.odt"},
        {"Letter.docx", "wp6", "Letter.wp6"},
        {"Picture.WPG", "png", "Picture.png"},
        {"book.fodt", "wp5", "book.wp5"},
        {"page.htm", "wp6", "page.wp6"},
        {"trailing.", "odt", "trailing..odt"},
        {".wpd", "odt", ".odt"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.input);
        const fs::path input = fs::path("/archive/letters") / row.input;
        EXPECT_EQ(Destination::proposedURL(input, row.ext), fs::path("/archive/letters") / row.output);
    }
}

TEST(Destination, NumberedNamesTakeTheFirstFreeNumber)
{
    TempDir dir;
    const fs::path input = dir / "Letter.wpd";
    writeFile(dir / "Letter.odt", "x");
    EXPECT_EQ(Destination::firstFreeNumberedURL(input, "odt"), dir / "Letter (1).odt");
    writeFile(dir / "Letter (1).odt", "x");
    EXPECT_EQ(Destination::firstFreeNumberedURL(input, "odt"), dir / "Letter (2).odt");
    fs::remove(dir / "Letter (1).odt");
    writeFile(dir / "Letter (2).odt", "x");
    EXPECT_EQ(Destination::firstFreeNumberedURL(input, "odt"), dir / "Letter (1).odt");
    const auto claimed = [&](const fs::path &p) { return p == dir / "Letter (1).odt"; };
    EXPECT_EQ(Destination::firstFreeNumberedURL(input, "odt", claimed), dir / "Letter (3).odt");
}
