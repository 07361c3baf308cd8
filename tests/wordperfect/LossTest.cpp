// What odt2wp5 says it could not carry: one stderr line naming each kind of thing once, for each
// thing a version has no code libwpd reads back, and nothing when the file holds it all.

#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"
#include "richtext/Losses.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

namespace loss = richtext::loss;

struct Case {
    const char *name;
    std::string styles;
    std::string body;
    std::vector<std::string_view> wp6; // the kinds each version reports, in order
    std::vector<std::string_view> wp5;
    std::string masterStyles = {};
};

const std::string shading =
    wptest::style("Y", "table-cell", R"(fo:background-color="#ffff00" fo:border="0.5pt solid #000000")");
const std::string lines = wptest::style("B", "table-cell", R"(fo:border="0.5pt solid #000000")");
const std::string box =
    R"(<draw:frame text:anchor-type="as-char" svg:width="2in" svg:height="1in"><draw:text-box
    ><text:p>boxed words</text:p></draw:text-box></draw:frame>)";

std::string cell(const std::string &content, const std::string &style = {})
{
    return "<table:table-cell" + (style.empty() ? "" : " table:style-name=\"" + style + "\"") + ">" +
           content + "</table:table-cell>";
}

std::string table(const std::string &cells)
{
    return "<table:table table:name=\"t\"><table:table-column table:number-columns-repeated=\"2\"/>"
           "<table:table-row>" +
           cells + "</table:table-row></table:table>";
}

// Thirty columns, the first cell holding a table of six: more columns together than WordPerfect sets.
std::string tooManyColumns()
{
    std::string inner =
        "<table:table table:name=\"i\"><table:table-column table:number-columns-repeated=\"6\"/>"
        "<table:table-row>";
    std::string outer =
        "<table:table table:name=\"o\"><table:table-column table:number-columns-repeated=\"30\"/>"
        "<table:table-row>";
    for (int i = 0; i < 6; ++i)
        inner += cell("<text:p>in</text:p>", "B");
    outer += cell(inner + "</table:table-row></table:table>", "B");
    for (int i = 1; i < 30; ++i)
        outer += cell("<text:p>out</text:p>", "B");
    return outer + "</table:table-row></table:table>";
}

const Case cases[] = {
    {"NothingLost",
     lines,
     "<text:p>plain words " + box + "</text:p>" +
         table(cell("<text:p>a</text:p>", "B") + cell("<text:p>b</text:p>", "B")),
     {},
     {loss::textBoxes}},
    {"CellsWithoutLines", "", table(cell("<text:p>a</text:p>") + cell("<text:p>b</text:p>")), {}, {}},
    {"TableInATable",
     lines,
     table(cell(table(cell("<text:p>inner a</text:p>", "B") + cell("<text:p>inner b</text:p>", "B")), "B") +
           cell("<text:p>b</text:p>", "B")),
     {},
     {}},
    {"TwoTablesInARow",
     lines,
     table(cell(table(cell("<text:p>a</text:p>", "B") + cell("<text:p>a2</text:p>", "B")), "B") +
           cell(table(cell("<text:p>b</text:p>", "B") + cell("<text:p>b2</text:p>", "B")), "B")),
     {loss::nestedTables},
     {loss::nestedTables}},
    {"TableInANoteInACell",
     lines,
     table(cell("<text:p>a<text:note text:note-class=\"footnote\"><text:note-citation>1</text:note-citation>"
                "<text:note-body>" +
                    table(cell("<text:p>noted</text:p>", "B") + cell("<text:p>two</text:p>", "B")) +
                    "</text:note-body></text:note></text:p>",
                "B") +
           cell("<text:p>b</text:p>", "B")),
     {loss::nestedTables},
     {loss::nestedTables}},
    {"TooManyColumnsToJoin", lines, tooManyColumns(), {loss::nestedTables}, {loss::nestedTables}},
    {"TextBoxInAHeader",
     "",
     "<text:p>body</text:p>",
     {loss::textBoxes},
     {loss::textBoxes},
     "<style:master-page style:name=\"Standard\"><style:header><text:p>head " + box +
         "</text:p></style:header>"
         "</style:master-page>"},
    {"CellShading",
     shading + lines,
     table(cell("<text:p>yellow</text:p>", "Y") + cell("<text:p>plain</text:p>", "B")),
     {},
     {loss::cellShading}},
    // LibreOffice's trace of a drawing it could not save.
    {"DrawingLibreOfficeLeftOut",
     "",
     "<text:p>words</text:p><text:p text:anchor-type=\"char\" draw:z-index=\"7\"/>",
     {loss::drawings},
     {loss::drawings}},
    // Hebrew set in a right-to-left paragraph; the empty one before it reads no way at all.
    {"RightToLeftParagraph",
     wptest::style("R", "paragraph", R"(style:writing-mode="rl-tb")"),
     "<text:p text:style-name=\"R\"/><text:p>words</text:p><text:p "
     "text:style-name=\"R\">\u05E9\u05DC\u05D5\u05DD</text:p>",
     {loss::rightToLeft},
     {loss::rightToLeft}},
    {"Comment",
     "",
     "<text:p>noted<office:annotation><dc:creator>Ann</dc:creator><text:p>a "
     "remark</text:p></office:annotation>"
     " words</text:p>",
     {loss::comments},
     {loss::comments}},
    // A shape's words (Word's text boxes come as shapes) stay, in a text box; the drawing is lost.
    {"DrawingShapes",
     "",
     R"(<text:p>before <draw:rect svg:width="1in" svg:height="1in"/><draw:custom-shape
     text:anchor-type="char" svg:width="2in" svg:height="1in"><text:p>shaped words</text:p></draw:custom-shape>
     after</text:p>)",
     {loss::drawings},
     {loss::drawings, loss::textBoxes}},
    {"HiraganaAndKanji",
     "",
     "<text:p>\u3072\u3089\u304C\u306A \u6F22\u5B57</text:p>",
     {loss::hiraganaAsKatakana, loss::charactersWordPerfect},
     {loss::charactersWordPerfect}},
    {"EachKindOnce",
     "",
     "<text:p>\u6F22 one</text:p><text:p>\u5B57 two</text:p>",
     {loss::charactersWordPerfect},
     {loss::charactersWordPerfect}},
};

struct Conversion {
    const Case *c;
    const char *option;
};

void PrintTo(const Conversion &conversion, std::ostream *os)
{
    *os << conversion.c->name << " " << conversion.option;
}

class Losses : public ::testing::TestWithParam<Conversion> {};

TEST_P(Losses, NamesEachKindTheVersionCannotCarryOnOneLine)
{
    const Conversion &param = GetParam();
    testing_support::TempDir scratch;
    const std::string source =
        scratch.write("source.fodt", wptest::flatOdt(param.c->styles, param.c->body, param.c->masterStyles));
    const std::string output = scratch.file("out.wp");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, param.option, source, output});
    ASSERT_EQ(run.status, 0) << run.err;
    const bool wp6 = std::string(param.option) == "--wp6";
    std::vector<std::string> expected;
    for (std::string_view kind : wp6 ? param.c->wp6 : param.c->wp5)
        expected.emplace_back(kind);
    const richtext::Losses said = richtext::Losses::fromStderr(run.err);
    EXPECT_EQ(said.kinds(), expected) << run.err;
    EXPECT_EQ(run.err, said.stderrLine("odt2wp5")) << "nothing else on stderr";
    EXPECT_TRUE(wptest::readWordPerfect(testing_support::readFile(output)).ok);
}

std::vector<Conversion> conversions()
{
    std::vector<Conversion> all;
    for (const Case &c : cases) {
        all.push_back({&c, "--wp6"});
        all.push_back({&c, "--wp5"});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Kinds, Losses, ::testing::ValuesIn(conversions()), [](const auto &info) {
    return std::string(info.param.c->name) + "_" + (info.param.option + 2);
});

} // namespace
