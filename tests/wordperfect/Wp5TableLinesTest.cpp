// WordPerfect 5.1 table lines and shading, which libwpd does not read (it draws every line of
// every cell): wpd2odt reads them from the row codes, first of WordPerfect's own printer test,
// then of a file odt2wp5 wrote.

#include "OdtFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

constexpr const char *none = "none";
constexpr const char *single = "single";
constexpr const char *twin = "double";

struct Look {
    std::string top, left, bottom, right, background;
};

// How wpd2odt draws the cell holding `text`: each side none, single or double, and its fill.
Look cellLook(const std::string &xml, const std::string &text)
{
    const std::vector<std::string> names =
        OdtFile::select(xml, "//table:table-cell[contains(., '" + text + "')]/@table:style-name");
    if (names.empty())
        return {};
    const std::string properties =
        "//style:style[@style:name='" + names[0] + "']/style:table-cell-properties/@";
    auto side = [&](const std::string &name) -> std::string {
        const std::vector<std::string> values = OdtFile::select(xml, properties + "fo:border-" + name);
        if (values.empty() || values[0].find("solid") == std::string::npos) {
            if (!values.empty() && values[0].find("double") != std::string::npos)
                return twin;
            return none;
        }
        return single;
    };
    const std::vector<std::string> fill = OdtFile::select(xml, properties + "fo:background-color");
    return {side("top"), side("left"), side("bottom"), side("right"), fill.empty() ? "" : fill[0]};
}

void expectLook(const std::string &xml, const std::string &text, const Look &expected)
{
    SCOPED_TRACE(text);
    const Look look = cellLook(xml, text);
    EXPECT_EQ(look.top, expected.top);
    EXPECT_EQ(look.left, expected.left);
    EXPECT_EQ(look.bottom, expected.bottom);
    EXPECT_EQ(look.right, expected.right);
    EXPECT_EQ(look.background, expected.background);
}

// An edge between two cells belongs to the cell below or to the right of it, so a double line
// is not drawn twice.
TEST(Wp5TableLines, ReadsWordPerfectsOwnTable)
{
    const fs::path source = fs::path(QM_CORPUS_DIR) / "wp" / "prn_test5.wp";
    if (!fs::exists(source))
        GTEST_SKIP() << source << " is not in the corpus";
    const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--stdout", source.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    // A row of special characters without lines, then, by the table's own footnote, "only
    // double and single lines": a double border, single lines inside, a double line above the
    // column's total, and the tall cell on the left shaded at the table's 10 %.
    expectLook(run.out, "Copyright", {none, none, none, none, "#ffffff"});
    expectLook(run.out, "Attributes", {twin, twin, twin, none, "#e5e5e5"});
    expectLook(run.out, "567,845.56", {twin, single, none, none, "#ffffff"});
    expectLook(run.out, "Right Aligned", {twin, single, none, twin, "#ffffff"});
    expectLook(run.out, "67,887.47", {single, single, none, none, "#ffffff"});
    expectLook(run.out, "635,733.03", {twin, single, twin, none, "#ffffff"});
    expectLook(run.out, "Redline", {single, single, twin, none, "#ffffff"});
    expectLook(run.out, "Strikeout", {single, single, twin, twin, "#ffffff"});
}

// Written by odt2wp5 and read back: each cell's own lines, single or double, a tall cell's sides
// and shading down its rows and its bottom under the last, in one grey for the table, and a row's
// fixed height.
TEST(Wp5TableLines, WritesEachCellsLinesAndGreyShading)
{
    const std::string styles =
        wptest::style("G", "table-cell", R"(fo:background-color="#cccccc" fo:border="0.5pt solid #000000")") +
        wptest::style("U", "table-cell", R"(fo:border-bottom="0.5pt solid #000000")") +
        wptest::style("B", "table-cell", R"(fo:border="0.5pt solid #000000")") +
        wptest::style("D", "table-cell",
                      R"(fo:border="0.5pt solid #000000" fo:border-bottom="1.5pt double #000000")") +
        wptest::style("Fixed", "table-row", R"(style:row-height="0.5in")");
    const std::string body =
        R"(<table:table table:name="t"><table:table-column table:number-columns-repeated="2"/>
        <table:table-row table:style-name="Fixed"><table:table-cell table:style-name="G" table:number-rows-spanned="2"><text:p>tall</text:p>
        </table:table-cell><table:table-cell table:style-name="U"><text:p>underlined</text:p></table:table-cell>
        </table:table-row><table:table-row><table:covered-table-cell/><table:table-cell><text:p>bare</text:p>
        </table:table-cell></table:table-row><table:table-row><table:table-cell table:style-name="B"><text:p>boxed
        one</text:p></table:table-cell><table:table-cell table:style-name="D"><text:p>boxed two</text:p>
        </table:table-cell></table:table-row></table:table>)";
    testing_support::TempDir scratch;
    const std::string source = scratch.write("lines.fodt", wptest::flatOdt(styles, body));
    const std::string output = scratch.file("lines.wp");
    const ProgramRun write = ProgramRun::of({ODT2WP5_PATH, "--wp5", source, output});
    ASSERT_EQ(write.status, 0) << write.err;
    EXPECT_EQ(write.err, "") << "grey shading and lines are carried";
    const ProgramRun read = ProgramRun::of({WPD2ODT_PATH, "--stdout", output});
    ASSERT_EQ(read.status, 0) << read.err;
    expectLook(read.out, "tall", {single, single, none, none, "#cccccc"});
    expectLook(read.out, "underlined", {none, single, none, none, "#ffffff"});
    expectLook(read.out, "bare", {single, single, none, none, "#ffffff"});
    expectLook(read.out, "boxed one", {single, single, single, none, "#ffffff"});
    expectLook(read.out, "boxed two", {single, single, twin, single, "#ffffff"});
    // The first row's height is fixed, the others grow with their text.
    auto rowHeight = [&](int row) {
        const std::vector<std::string> style =
            OdtFile::select(read.out, "(//table:table-row)[" + std::to_string(row) + "]/@table:style-name");
        const std::vector<std::string> height =
            style.empty() ? style
                          : OdtFile::select(read.out, "//style:style[@style:name='" + style[0] +
                                                          "']/style:table-row-properties/@style:row-height");
        return height.empty() ? std::string() : height[0];
    };
    EXPECT_EQ(rowHeight(1), "0.5000in");
    EXPECT_EQ(rowHeight(2), "");
}

TEST(Wp5TableLines, ColourAndASecondGreyAreLosses)
{
    const std::string styles = wptest::style("Y", "table-cell", R"(fo:background-color="#ffff00")") +
                               wptest::style("G", "table-cell", R"(fo:background-color="#333333")");
    const std::string body =
        R"(<table:table table:name="t"><table:table-column table:number-columns-repeated="2"/>
        <table:table-row><table:table-cell table:style-name="Y"><text:p>yellow</text:p></table:table-cell>
        <table:table-cell table:style-name="G"><text:p>dark</text:p></table:table-cell></table:table-row>
        </table:table>)";
    testing_support::TempDir scratch;
    const std::string source = scratch.write("fills.fodt", wptest::flatOdt(styles, body));
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, "--wp5", source, scratch.file("fills.wp")});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "odt2wp5: lost: table cell shading\n");
}

} // namespace
