// WordPerfect 5 boxes. Figure boxes anchored to a paragraph: wpd2odt gives each frame the size and
// the place WordPerfect recorded for its box (read from the box records by hand for these files),
// where libwpd alone makes them the whole text area high and puts some off the page. What libwpd
// passes over in boxes (equations, text, graphic lines) is named on standard error.

#include "OdtFile.h"
#include "ProgramRun.h"

#include <gtest/gtest.h>

#include <charconv>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

// Inches from an ODF length such as "3.2500in"; -1 when it is no length in inches.
double inches(const std::string &length)
{
    double value = -1;
    const auto [end, error] = std::from_chars(length.data(), length.data() + length.size(), value);
    if (error != std::errc() || std::string(end, length.data() + length.size()) != "in")
        return -1;
    return value;
}

struct Frame {
    double width, height;
    double x;          // from the page's left edge
    double belowFirst; // below the top of the paragraph's first box
};

// A graphic property of a frame's style, or of the style it is based on.
std::string property(const std::string &xml, const std::string &frame, const std::string &name)
{
    const std::string style = "//style:style[@style:name=" + frame + "/@draw:style-name]";
    for (const std::string &path :
         {style, "//style:style[@style:name=" + style + "/@style:parent-style-name]"}) {
        const std::vector<std::string> values =
            OdtFile::select(xml, path + "/style:graphic-properties/@" + name);
        if (!values.empty())
            return values[0];
    }
    return {};
}

TEST(BoxTest, ParagraphBoxesKeepWordPerfectsSizeAndPlace)
{
    const struct {
        const char *file;
        std::vector<Frame> frames;
    } cases[] = {
        // Three drawings at the top of the page: right-aligned, full width beside it (so at the
        // left margin, as narrow as WordPerfect made it, not over the first), and a small one
        // lower right.
        {"images5.wp", {{3.25, 3.0717, 4.25, 0}, {3.0833, 4.7533, 1.0, 0}, {1.7083, 1.2092, 5.7917, 3.3333}}},
        // A small centred mouse under a heading (libwpd alone: ten inches high, off the page's
        // right edge, and a page of its own).
        {"prn_test5.wp", {{1.0, 0.7292, 3.75, 0}}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        const fs::path source = fs::path(QM_CORPUS_DIR) / "wp" / c.file;
        if (!fs::exists(source))
            GTEST_SKIP() << source << " is not in the corpus";
        const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--stdout", source.string()});
        ASSERT_EQ(run.status, 0) << run.err;
        ASSERT_EQ(OdtFile::select(run.out, "//office:text//draw:frame").size(), c.frames.size());
        for (std::size_t i = 0; i < c.frames.size(); ++i) {
            SCOPED_TRACE("frame " + std::to_string(i + 1));
            const std::string frame = "(//office:text//draw:frame)[" + std::to_string(i + 1) + "]";
            const auto attribute = [&](const std::string &name) {
                const std::vector<std::string> values = OdtFile::select(run.out, frame + "/@" + name);
                return values.empty() ? std::string() : values[0];
            };
            const Frame &expected = c.frames[i];
            EXPECT_NEAR(inches(attribute("svg:width")), expected.width, 0.001);
            EXPECT_NEAR(inches(attribute("svg:height")), expected.height, 0.001);
            EXPECT_EQ(property(run.out, frame, "style:vertical-rel"), "paragraph");
            EXPECT_NEAR(inches(attribute("svg:y")), expected.belowFirst, 0.001);
            EXPECT_EQ(property(run.out, frame, "style:horizontal-rel"), "page");
            EXPECT_NEAR(inches(attribute("svg:x")), expected.x, 0.001);
        }
    }
}

TEST(BoxTest, NamesWhatBoxesHeldThatIsLost)
{
    const struct {
        const char *file;
        const char *lost; // the stderr line, empty when nothing is lost
    } cases[] = {
        // Equations, two text boxes ("Toto je jeden maly textbox") and two table boxes, one
        // with a caption; wpd2text shows none of their words either.
        {"test5.wp", "wpd2odt: lost: equations; text in boxes\n"},
        // Ruled lines, an equation and numbered user boxes besides the mouse, which is kept.
        {"prn_test5.wp", "wpd2odt: lost: graphic lines; equations; text in boxes\n"},
        {"images5.wp", ""},
        {"opinion_wpd.wpd", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        const fs::path source = fs::path(QM_CORPUS_DIR) / "wp" / c.file;
        if (!fs::exists(source))
            GTEST_SKIP() << source << " is not in the corpus";
        const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--stdout", source.string()});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, c.lost);
    }
}

} // namespace
