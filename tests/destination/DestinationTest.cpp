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

TEST(Destination, ANameTooLongForTheFolderLosesTheTailOfItsBaseNotItsExtension)
{
    TempDir dir;
    // 255 bytes, the usual limit: two-byte characters then an unknown extension that stays in the base.
    std::string name;
    while (name.size() < 252)
        name += "\xC3\xA9"; // é
    name += ".z";
    ASSERT_EQ(name.size(), 254u);
    const fs::path proposed = Destination::proposedURL(dir / name, "odt");
    EXPECT_EQ(proposed.parent_path(), dir.path());
    const std::string output = proposed.filename().string();
    EXPECT_LE(output.size(), 255u);
    EXPECT_EQ(output.substr(output.size() - 4), ".odt");
    EXPECT_EQ(output.rfind("\xC3\xA9\xC3\xA9", 0), 0u);
    EXPECT_EQ(output.size() % 2, 0u) << "no character cut in half: " << output.size() - 4 << " bytes of é";
    writeFile(proposed, "x"); // the file system takes the name
    const fs::path numbered = Destination::firstFreeNumberedURL(dir / name, "odt");
    EXPECT_LE(numbered.filename().string().size(), 255u);
    EXPECT_TRUE(numbered.filename().string().ends_with(" (1).odt"));
    writeFile(numbered, "x");
}
