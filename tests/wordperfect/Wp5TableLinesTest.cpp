// WordPerfect 5.1 table lines and shading. No reader here reads them (libwpd draws every line,
// wp2latex too, wp2x no table), so the row codes are read back by hand: first from WordPerfect's
// own printer test, to hold the reading to what WordPerfect wrote, then from our file.

#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

unsigned u16(const std::string &bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) | (static_cast<unsigned char>(bytes[at + 1]) << 8);
}

struct Row {
    int flags = 0, height = 0;
    std::vector<unsigned> cells; // a word per column
};

struct Table {
    int shade = 0;
    std::vector<Row> rows;
};

// The tables of a 5.1 document: the definition's shading percentage, and each row code's own
// state, where a word 0x80NN repeats the next one NN times.
std::vector<Table> tablesOf(const std::string &bytes)
{
    std::vector<Table> tables;
    for (std::size_t at = u16(bytes, 4); at + 4 < bytes.size(); ++at) {
        const unsigned char code = bytes[at];
        if (code != 0xD2 && code != 0xDC)
            continue;
        const unsigned char sub = bytes[at + 1];
        const std::size_t end = at + 4 + u16(bytes, at + 2);
        if (end > bytes.size() || static_cast<unsigned char>(bytes[end - 1]) != code ||
            static_cast<unsigned char>(bytes[end - 2]) != sub)
            continue;
        const std::string data = bytes.substr(at + 4, end - at - 8);
        if (code == 0xD2 && sub == 0x0B) {
            tables.push_back(Table{static_cast<unsigned char>(data.at(24 + 5 * u16(data, 2) + 1)), {}});
        } else if (code == 0xDC && sub == 0x01 && !tables.empty()) {
            std::size_t p = 4 + (data.at(3) & 0x7F); // past the old state
            Row row{static_cast<unsigned char>(data.at(p)), static_cast<int>(u16(data, p + 1)), {}};
            const std::size_t words = p + 4 + (data.at(p + 3) & 0x7F);
            for (p += 4; p + 1 < words; p += 2) {
                const unsigned word = u16(data, p);
                if ((word & 0xFF00) == 0x8000 && p + 3 < words) {
                    row.cells.insert(row.cells.end(), word & 0xFF, u16(data, p + 2));
                    p += 2;
                } else {
                    row.cells.push_back(word);
                }
            }
            tables.back().rows.push_back(row);
        }
        at = end - 1;
    }
    return tables;
}

int top(unsigned word) { return word & 7; }
int left(unsigned word) { return (word >> 3) & 7; }
int bottom(unsigned word) { return (word >> 8) & 7; }
int right(unsigned word) { return (word >> 11) & 7; }
bool shaded(unsigned word) { return word & 0x4000; }

TEST(Wp5TableLines, ReadsWordPerfectsOwnTable)
{
    const fs::path source = fs::path(QM_CORPUS_DIR) / "wp" / "prn_test5.wp";
    if (!fs::exists(source))
        GTEST_SKIP() << source << " is not in the corpus";
    std::ifstream in(source, std::ios::binary);
    const std::vector<Table> tables = tablesOf(std::string(std::istreambuf_iterator<char>(in), {}));
    ASSERT_EQ(tables.size(), 2u);
    // Its first table is lines of text without lines; its second, by its own footnote, "only double
    // and single lines": a double border, single lines inside, a double line above the column's
    // total, and the tall cell on the left shaded at the table's 10 %.
    for (const Row &row : tables[0].rows)
        EXPECT_EQ(row.cells, std::vector<unsigned>(4, 0));
    const Table &table = tables[1];
    EXPECT_EQ(table.shade, 10);
    ASSERT_EQ(table.rows.size(), 3u);
    for (std::size_t r = 0; r < 3; ++r) {
        const std::vector<unsigned> &cells = table.rows[r].cells;
        ASSERT_EQ(cells.size(), 4u);
        EXPECT_EQ(left(cells[0]), 2);
        EXPECT_EQ(right(cells[3]), 2);
        EXPECT_EQ(left(cells[1]), 1);
        EXPECT_EQ(left(cells[2]), 1);
        EXPECT_EQ(left(cells[3]), 1);
        EXPECT_TRUE(shaded(cells[0]));
        EXPECT_FALSE(shaded(cells[1]) || shaded(cells[2]) || shaded(cells[3]));
        EXPECT_EQ(top(cells[0]), r == 0 ? 2 : 0); // one cell down three rows
        for (std::size_t c = 0; c < 4; ++c)
            EXPECT_EQ(bottom(cells[c]), r == 2 ? 2 : 0);
    }
    EXPECT_EQ(top(table.rows[0].cells[2]), 2);
    EXPECT_EQ(top(table.rows[1].cells[1]), 1);
    EXPECT_EQ(top(table.rows[2].cells[1]), 2);
    EXPECT_EQ(top(table.rows[2].cells[2]), 1);
}

TEST(Wp5TableLines, WritesEachCellsLinesAndGreyShading)
{
    const std::string styles =
        wptest::style("G", "table-cell", R"(fo:background-color="#cccccc" fo:border="0.5pt solid #000000")") +
        wptest::style("U", "table-cell", R"(fo:border-bottom="0.5pt solid #000000")") +
        wptest::style("B", "table-cell", R"(fo:border="0.5pt solid #000000")") +
        wptest::style("Fixed", "table-row", R"(style:row-height="0.5in")");
    const std::string body = R"(<table:table table:name="t"><table:table-column table:number-columns-repeated="2"/>
        <table:table-row table:style-name="Fixed"><table:table-cell table:style-name="G"
        table:number-rows-spanned="2"><text:p>tall</text:p></table:table-cell><table:table-cell
        table:style-name="U"><text:p>underlined</text:p></table:table-cell></table:table-row>
        <table:table-row><table:covered-table-cell/><table:table-cell><text:p>bare</text:p></table:table-cell>
        </table:table-row><table:table-row><table:table-cell table:style-name="B"><text:p>boxed</text:p>
        </table:table-cell><table:table-cell table:style-name="B"><text:p>boxed too</text:p></table:table-cell>
        </table:table-row></table:table>)";
    testing_support::TempDir scratch;
    const std::string source = scratch.write("lines.fodt", wptest::flatOdt(styles, body));
    const std::string output = scratch.file("lines.wp");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, "--wp5", source, output});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "") << "grey shading and lines are carried";
    std::ifstream in(output, std::ios::binary);
    const std::vector<Table> tables = tablesOf(std::string(std::istreambuf_iterator<char>(in), {}));
    ASSERT_EQ(tables.size(), 1u);
    EXPECT_EQ(tables[0].shade, 20);
    ASSERT_EQ(tables[0].rows.size(), 3u);
    const unsigned T = 0x0001, L = 0x0008, B = 0x0100, R = 0x0800, S = 0x4000;
    // The tall cell's bottom line is under its last row, and its shading and sides go down with it.
    EXPECT_EQ(tables[0].rows[0].cells, (std::vector<unsigned>{T | L | R | S, B}));
    EXPECT_EQ(tables[0].rows[1].cells, (std::vector<unsigned>{L | B | R | S, 0}));
    EXPECT_EQ(tables[0].rows[2].cells, (std::vector<unsigned>{T | L | B | R, T | L | B | R}));
    // A row of fixed height says so; the others follow their text.
    EXPECT_EQ(tables[0].rows[0].flags, 0x01);
    EXPECT_EQ(tables[0].rows[0].height, 600);
    EXPECT_EQ(tables[0].rows[1].flags, 0x03);
}

TEST(Wp5TableLines, ColourAndASecondGreyAreLosses)
{
    const std::string styles =
        wptest::style("Y", "table-cell", R"(fo:background-color="#ffff00")") +
        wptest::style("G", "table-cell", R"(fo:background-color="#333333")");
    const std::string body = R"(<table:table table:name="t"><table:table-column table:number-columns-repeated="2"/>
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
