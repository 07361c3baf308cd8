#include "Fixtures.h"

#include <gtest/gtest.h>

using namespace fixtures;
using richtext::Inline;
using richtext::Properties;

namespace {

// A style of this family holding these text properties, after its parent if it names one.
std::string style(const std::string &family, const std::string &name, const std::string &text,
                  const std::string &parent = "")
{
    return "<style:style style:name=\"" + name + "\" style:family=\"" + family + "\"" +
           (parent.empty() ? "" : " style:parent-style-name=\"" + parent + "\"") + ">" +
           (text.empty() ? "" : "<style:text-properties " + text + "/>") + "</style:style>";
}

// The same small document in both forms must read the same.
Odt letter()
{
    const Odt odt{
        .fontFaces = R"(<style:font-face style:name="Serif1" svg:font-family="'Liberation Serif'"/>)",
        .styles =
            R"(<style:default-style style:family="paragraph"><style:text-properties
            fo:font-size="12pt"/></style:default-style>
        <style:style style:name="Standard" style:family="paragraph"/>)" +
            style("text", "Emphasis", R"(fo:font-style="italic")"),
        .automaticStyles =
            R"(<style:style style:name="P1" style:family="paragraph" style:parent-style-name="Standard">
            <style:paragraph-properties fo:text-align="center" fo:margin-left="2.54cm"/>
            <style:text-properties style:font-name="Serif1"/></style:style>)" +
            style("text", "T1", R"(fo:font-weight="bold")") + R"(
        <style:page-layout style:name="PL1"><style:page-layout-properties fo:page-width="8.5in"
            fo:page-height="11in"
            fo:margin-left="1in" fo:margin-right="1in" fo:margin-top="1in" fo:margin-bottom="1in"/>
            </style:page-layout>)",
        .masterStyles = R"(<style:master-page style:name="Standard" style:page-layout-name="PL1">
        <style:header><text:p>Head</text:p></style:header></style:master-page>)",
        .body = R"(<text:p text:style-name="P1">Caf&#xE9; <text:span text:style-name="T1">bold</text:span> and
        <text:span text:style-name="Emphasis">slanted</text:span></text:p><text:p>second</text:p>)"};
    return odt;
}

class BothForms : public testing::TestWithParam<bool> {
protected:
    richtext::Document read() const { return readOdt(GetParam() ? letter().package() : letter().flat()); }
};

TEST_P(BothForms, ReadTheSameTextAndResolveItsStyles)
{
    const richtext::Document document = read();
    EXPECT_EQ(texts(document), (std::vector<std::string>{"Caf\xC3\xA9 bold and slanted", "second"}));
    ASSERT_EQ(document.pageSpans.size(), 1u);
    EXPECT_EQ(property(document.pageSpans[0].properties, "fo:page-width"), "8.5000in");
    ASSERT_EQ(document.pageSpans[0].headersAndFooters.size(), 1u);
    EXPECT_EQ(document.pageSpans[0].headersAndFooters[0].occurrence, "all");
    const richtext::Paragraph *first = document.paragraphs().at(0);
    EXPECT_EQ(property(first->properties, "fo:text-align"), "center");
    EXPECT_EQ(property(first->properties, "fo:margin-left"), "1.0000in") << "2.54cm is an inch";
    const Inline *bold = pieceWith(document, "bold");
    ASSERT_TRUE(bold);
    EXPECT_EQ(property(bold->style, "fo:font-weight"), "bold");
    EXPECT_EQ(property(bold->style, "style:font-name"), "Liberation Serif")
        << "the paragraph's font, by its family";
    EXPECT_EQ(property(bold->style, "fo:font-size"), "12.0000pt") << "from the default style";
    const Inline *slanted = pieceWith(document, "slanted");
    ASSERT_TRUE(slanted);
    EXPECT_EQ(property(slanted->style, "fo:font-style"), "italic") << "a named text style";
    EXPECT_EQ(property(slanted->style, "fo:font-weight"), "");
}

INSTANTIATE_TEST_SUITE_P(OdtReader, BothForms, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool> &info) {
                             return info.param ? "Package" : "Flat";
                         });

struct Inheritance {
    const char *why;
    std::string styles;
    std::string automatic;
    std::string paragraph; // the body's only paragraph
    std::string name;
    std::string expected;
};

void PrintTo(const Inheritance &c, std::ostream *out)
{
    *out << c.why;
}

class StyleInheritance : public testing::TestWithParam<Inheritance> {};

TEST_P(StyleInheritance, GivesTheResolvedProperty)
{
    const Odt odt{
        .styles = GetParam().styles, .automaticStyles = GetParam().automatic, .body = GetParam().paragraph};
    const richtext::Document document = readOdt(odt.flat());
    const Inline *piece = pieceWith(document, "x");
    ASSERT_TRUE(piece);
    EXPECT_EQ(property(piece->style, GetParam().name), GetParam().expected);
}

const std::string boldBase = style("paragraph", "Base", R"(fo:font-weight="bold" fo:font-size="10pt")");
const std::string inP1 = R"(<text:p text:style-name="P1">x</text:p>)";

INSTANTIATE_TEST_SUITE_P(
    OdtReader, StyleInheritance,
    testing::Values(
        Inheritance{"the default style",
                    R"(<style:default-style style:family="paragraph">
            <style:text-properties fo:color="#112233"/></style:default-style>)",
                    "", "<text:p>x</text:p>", "fo:color", "#112233"},
        Inheritance{"a parent chain of named styles", boldBase + style("paragraph", "Mid", "", "Base"),
                    style("paragraph", "P1", "", "Mid"), inP1, "fo:font-weight", "bold"},
        Inheritance{"an automatic style overrides its parent", boldBase,
                    style("paragraph", "P1", R"(fo:font-weight="normal")", "Base"), inP1, "fo:font-weight",
                    "normal"},
        Inheritance{"a relative size counts from the inherited one", boldBase,
                    style("paragraph", "P1", R"(fo:font-size="150%")", "Base"), inP1, "fo:font-size",
                    "15.0000pt"},
        Inheritance{
            "a span overrides its paragraph", boldBase, style("text", "T1", R"(fo:font-weight="normal")"),
            R"(<text:p text:style-name="Base"><text:span text:style-name="T1">x</text:span></text:p>)",
            "fo:font-weight", "normal"},
        Inheritance{"nested spans add up", "",
                    style("text", "T1", R"(fo:font-style="italic")") +
                        style("text", "T2", R"(style:text-underline-style="solid")"),
                    R"(<text:p><text:span text:style-name="T1"><text:span
                text:style-name="T2">x</text:span></text:span></text:p>)",
                    "fo:font-style", "italic"},
        Inheritance{"a parent loop ends",
                    style("paragraph", "A", R"(fo:font-style="italic")", "B") +
                        style("paragraph", "B", "", "A"),
                    "", R"(<text:p text:style-name="A">x</text:p>)", "fo:font-style", "italic"},
        Inheritance{"an unknown style name is no style", "", "",
                    R"(<text:p text:style-name="Nowhere">x</text:p>)", "fo:font-weight", ""},
        Inheritance{"superscript", "", style("text", "T1", R"(style:text-position="super 58%")"),
                    R"(<text:p><text:span text:style-name="T1">x</text:span></text:p>)",
                    "style:text-position", "super 58%"}));

TEST(OdtReader, GivesEachScriptItsOwnFontSizeAndWeight)
{
    const Odt odt{.fontFaces = R"(<style:font-face style:name="Hebrew1" svg:font-family="David"/>
            <style:font-face style:name="Cjk1" svg:font-family="'MS Mincho'"/>)",
                  .automaticStyles =
                      style("paragraph", "P1", R"(fo:font-size="10pt" style:font-size-complex="20pt"
            style:font-name-complex="Hebrew1" style:font-weight-complex="bold" style:font-size-asian="14pt"
            style:font-name-asian="Cjk1")"),
                  .body = "<text:p text:style-name=\"P1\">(1) \u05E9\u05DC\u05D5\u05DD world, "
                          "\u65E5\u672C 2</text:p><text:p text:style-name=\"P1\">plain</text:p>"};
    const richtext::Document document = readOdt(odt.flat());
    EXPECT_EQ(texts(document).at(0), "(1) \u05E9\u05DC\u05D5\u05DD world, \u65E5\u672C 2");
    struct Row {
        const char *piece, *font, *size, *weight;
    };
    const Row rows[] = {
        {"(1) \u05E9", "David", "20.0000pt", "bold"}, // the opening digits go with the first letters
        {"world, ", "", "10.0000pt", ""},
        {"\u65E5\u672C 2", "MS Mincho", "14.0000pt", ""}, // and the closing ones with the last
        {"plain", "", "10.0000pt", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.piece);
        const Inline *piece = pieceWith(document, row.piece);
        ASSERT_TRUE(piece);
        EXPECT_EQ(property(piece->style, "style:font-name"), row.font);
        EXPECT_EQ(property(piece->style, "fo:font-size"), row.size);
        EXPECT_EQ(property(piece->style, "fo:font-weight"), row.weight);
    }
}

TEST(OdtReader, NamesTheFirstFamilyOfAFontList)
{
    const Odt odt{
        .fontFaces = R"(<style:font-face style:name="Mono" svg:font-family="'Nimbus Mono L', 'Courier New'"/>
            <style:font-face style:name="Comma" svg:font-family="&quot;Foo, Inc&quot;, Arial"/>)",
        .automaticStyles = style("text", "T1", R"(style:font-name="Mono")") +
                           style("text", "T2", R"(style:font-name="Comma")") +
                           style("text", "T3", R"(fo:font-family="'Liberation Sans', Arial, sans-serif")") +
                           style("text", "T4", R"(fo:font-family="Gentium")"),
        .body = R"(<text:p><text:span text:style-name="T1">mono</text:span><text:span
            text:style-name="T2">comma</text:span><text:span text:style-name="T3">listed</text:span><text:span
            text:style-name="T4">plain</text:span></text:p>)"};
    const richtext::Document document = readOdt(odt.flat());
    const std::pair<const char *, const char *> rows[] = {{"mono", "Nimbus Mono L"},
                                                          {"comma", "Foo, Inc"},
                                                          {"listed", "Liberation Sans"},
                                                          {"plain", "Gentium"}};
    for (const auto &[text, font] : rows) {
        const Inline *piece = pieceWith(document, text);
        ASSERT_TRUE(piece) << text;
        EXPECT_EQ(property(piece->style, "style:font-name"), font) << text;
    }
}

TEST(OdtReader, CollapsesWhitespaceAsOdfSays)
{
    const Odt odt{.body = "<text:p>  lead   and\n\ttrail <text:s "
                          "text:c=\"3\"/>spaced<text:tab/>tab<text:line-break/>next </text:p>"};
    EXPECT_EQ(texts(readOdt(odt.flat())), (std::vector<std::string>{"lead and trail    spaced\ttab\nnext "}));
}

TEST(OdtReader, ReadsListsWithTheirLabels)
{
    const Odt odt{.automaticStyles = R"~(<text:list-style style:name="L1">
        <text:list-level-style-number text:level="1" style:num-format="A" style:num-suffix="."
            text:start-value="2"/>
        <text:list-level-style-number text:level="2" style:num-format="i" style:num-prefix="("
            style:num-suffix=")"/>
        </text:list-style><text:list-style style:name="L2"><text:list-level-style-bullet text:level="1"
        text:bullet-char="*"/></text:list-style><text:list-style style:name="L3"><text:list-level-style-image
        text:level="1" xlink:href="Pictures/dot.png"/></text:list-style>)~",
                  .body = R"(<text:list text:style-name="L1">
        <text:list-item><text:p>one</text:p>
          <text:list><text:list-item><text:p>inner</text:p></text:list-item>
                     <text:list-item><text:p>inner two</text:p></text:list-item></text:list></text:list-item>
        <text:list-item><text:p>two</text:p><text:p>same item</text:p></text:list-item></text:list>
        <text:p>between</text:p>
        <text:list text:style-name="L1" text:continue-numbering="true"><text:list-item><text:p>three</text:p>
        </text:list-item></text:list>
        <text:list text:style-name="L2"><text:list-item><text:p>dot</text:p></text:list-item></text:list>
        <text:list text:style-name="L1"><text:list-item text:start-value="7"><text:p>seventh</text:p>
        </text:list-item><text:list-item><text:p>eighth</text:p></text:list-item></text:list>
        <text:list text:style-name="L3"><text:list-item><text:p>pictured</text:p></text:list-item></text:list>)"};
    const richtext::Document document = readOdt(odt.flat());
    std::vector<std::tuple<std::string, int, std::string>> seen;
    for (const richtext::Paragraph *paragraph : document.paragraphs())
        seen.emplace_back(paragraph->text(), paragraph->listLevel, paragraph->label);
    const std::vector<std::tuple<std::string, int, std::string>> expected = {
        {"one", 1, "B."},     {"inner", 2, "(i)"}, {"inner two", 2, "(ii)"},  {"two", 1, "C."},
        {"same item", 0, ""}, {"between", 0, ""},  {"three", 1, "D."},        {"dot", 1, "*"},
        {"seventh", 1, "G."}, {"eighth", 1, "H."}, {"pictured", 1, "\u2022"},
    };
    EXPECT_EQ(seen, expected);
}

TEST(OdtReader, NumbersContinuedListsLevelByLevelAsWordProcessorsDo)
{
    const Odt odt{.automaticStyles = R"~(<text:list-style style:name="L1">
        <text:list-level-style-number text:level="1" style:num-format="1" style:num-suffix=")"/>
        <text:list-level-style-number text:level="2" style:num-format="a" style:num-suffix=")"/>
        <text:list-level-style-number text:level="3" style:num-format="i" loext:num-list-format="%1%.%2%.%3%"
            text:display-levels="1"/>
        </text:list-style>)~",
                  .body = R"(<text:list xml:id="first" text:style-name="L1">
        <text:list-item><text:p>one</text:p><text:list><text:list-item><text:p>one a</text:p>
          <text:list><text:list-item><text:p>deep</text:p></text:list-item></text:list></text:list-item>
        </text:list></text:list-item></text:list>
        <text:p>between</text:p>
        <text:list text:continue-list="first" text:style-name="L1"><text:list-item><text:list><text:list-item>
          <text:list><text:list-item><text:p>deeper on</text:p></text:list-item></text:list></text:list-item>
          </text:list></text:list-item>
          <text:list-item><text:p>two</text:p></text:list-item></text:list>
        <text:list text:style-name="L1"><text:list-item><text:list><text:list-item><text:p>under nothing</text:p>
          </text:list-item></text:list></text:list-item><text:list-item><text:p>after it</text:p></text:list-item>
        </text:list>)"};
    const richtext::Document document = readOdt(odt.flat());
    std::vector<std::pair<std::string, std::string>> seen;
    for (const richtext::Paragraph *paragraph : document.paragraphs())
        seen.emplace_back(paragraph->text(), paragraph->label);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"one", "1)"},
        {"one a", "a)"},
        {"deep", "1.a.i"},
        {"between", ""},
        // The continued list goes on at every level; the item holding only a deeper list shows nothing.
        {"deeper on", "1.a.ii"},
        {"two", "2)"},
        // A new list whose first item holds only a deeper list: that item still takes number 1.
        {"under nothing", "a)"},
        {"after it", "2)"},
    };
    EXPECT_EQ(seen, expected);
}

TEST(OdtReader, NumbersHeadingsFromTheOutlineStyle)
{
    const Odt odt{
        .styles = R"(<text:outline-style style:name="Outline">
        <text:outline-level-style text:level="1" style:num-format="1" style:num-suffix="."/>
        <text:outline-level-style text:level="2" style:num-format="1" text:display-levels="2"><style:list-level-properties>
          <style:list-level-label-alignment text:label-followed-by="listtab"/></style:list-level-properties>
        </text:outline-level-style>
        <text:outline-level-style text:level="3" style:num-format=""/></text:outline-style>)",
        .body = R"(<text:h text:outline-level="1">Intro</text:h><text:h text:outline-level="2">Scope</text:h>
        <text:h text:outline-level="2">Terms</text:h><text:h text:outline-level="3">Plain</text:h>
        <text:h text:outline-level="1">Method</text:h><text:h text:outline-level="2">Data</text:h>
        <text:h text:outline-level="1" text:is-list-header="true">Unnumbered</text:h>)"};
    EXPECT_EQ(texts(readOdt(odt.flat())),
              (std::vector<std::string>{"1. Intro", "1.1\tScope", "1.2\tTerms", "Plain", "2. Method",
                                        "2.1\tData", "Unnumbered"}));
}

TEST(OdtReader, KeepsTheBaseOfRubyTextAsTextExportsDo)
{
    const Odt odt{
        .body =
            R"(<text:p>see <text:ruby><text:ruby-base>base</text:ruby-base><text:ruby-text>aid</text:ruby-text>
        </text:ruby> here</text:p>)"};
    EXPECT_EQ(texts(readOdt(odt.flat())), (std::vector<std::string>{"see base here"}));
}

TEST(OdtReader, ShowsTrackedDeletionsStruckOutWhereTheyStood)
{
    const Odt odt{.body = R"(<text:tracked-changes><text:changed-region text:id="c1"><text:deletion>
        <office:change-info><dc:creator>A</dc:creator></office:change-info>
        <text:p>removed words</text:p><text:p>and more<text:change text:change-id="c1"/></text:p></text:deletion>
        </text:changed-region><text:changed-region text:id="c2"><text:insertion/></text:changed-region>
        </text:tracked-changes>
        <text:p>kept <text:change text:change-id="c1"/>after<text:change text:change-id="c2"/></text:p>)"};
    const richtext::Document document = readOdt(odt.flat());
    EXPECT_EQ(texts(document), (std::vector<std::string>{"kept removed words and moreafter"}));
    const richtext::Inline *removed = nullptr;
    for (const Inline &piece : document.paragraphs().front()->content)
        if (piece.text.find("removed") != std::string::npos)
            removed = &piece;
    ASSERT_NE(removed, nullptr);
    EXPECT_EQ(removed->style.count("style:text-line-through-style"), 1u);
}

TEST(OdtReader, ReadsTablesWithSpansAndRepeats)
{
    const Odt odt{
        .automaticStyles = R"(<style:style style:name="C1" style:family="table-column">
        <style:table-column-properties style:column-width="1in"/></style:style>
        <style:style style:name="Cell" style:family="table-cell"><style:table-cell-properties
        fo:background-color="#ff0000"/></style:style>)",
        .body = R"(<table:table><table:table-column table:style-name="C1" table:number-columns-repeated="3"/>
        <table:table-header-rows><table:table-row>
          <table:table-cell table:number-columns-spanned="2"
              table:style-name="Cell"><text:p>wide</text:p></table:table-cell>
          <table:covered-table-cell/><table:table-cell
              table:number-rows-spanned="2"><text:p>tall</text:p></table:table-cell>
        </table:table-row></table:table-header-rows>
        <table:table-row><table:table-cell
            table:number-columns-repeated="2"><text:p>r</text:p></table:table-cell>
          <table:covered-table-cell/></table:table-row>
        <table:table-row
            table:number-rows-repeated="2"><table:table-cell><text:p>a</text:p></table:table-cell>
          <table:table-cell><table:table><table:table-column/><table:table-row><table:table-cell>
          <text:p>inner</text:p>
          </table:table-cell></table:table-row></table:table></table:table-cell><table:table-cell/>
          </table:table-row>
        </table:table>)"};
    const richtext::Document document = readOdt(odt.flat());
    const std::vector<const richtext::Table *> tables = document.tables();
    ASSERT_EQ(tables.size(), 3u) << "the repeated row holds an inner table each time";
    const richtext::Table &table = *tables[0];
    EXPECT_EQ(table.columnWidths, (std::vector<double>{1, 1, 1}));
    ASSERT_EQ(table.rows.size(), 4u);
    EXPECT_EQ(table.columnCount(), 3);
    EXPECT_EQ(property(table.rows[0].properties, "librevenge:is-header-row"), "true");
    const richtext::Cell &wide = table.rows[0].cells[0];
    EXPECT_EQ(wide.columnSpan, 2);
    EXPECT_EQ(property(wide.properties, "fo:background-color"), "#ff0000");
    EXPECT_TRUE(table.rows[0].cells[1].covered);
    EXPECT_EQ(table.rows[0].cells[2].rowSpan, 2);
    EXPECT_EQ(table.rows[1].cells.size(), 3u) << "a repeated cell, then the one the tall cell covers";
    EXPECT_TRUE(table.rows[1].cells[2].covered);
    EXPECT_EQ(table.rows[1].cells[2].column, 2);
    EXPECT_EQ(texts(document),
              (std::vector<std::string>{"wide", "tall", "r", "r", "a", "inner", "a", "inner"}));
}

TEST(OdtReader, PlacesCellsThatSpansPushAsideWhenCoveredCellsAreLeftOut)
{
    // libodfgen writes no covered cells; a cell goes to the next slot no span covers.
    const Odt odt{.body = R"(<table:table><table:table-column table:number-columns-repeated="4"/>
        <table:table-row><table:table-cell table:number-rows-spanned="2"><text:p>A</text:p></table:table-cell>
          <table:table-cell table:number-columns-spanned="2"><text:p>B</text:p></table:table-cell>
          <table:table-cell
              table:number-rows-spanned="2"><text:p>C</text:p></table:table-cell></table:table-row>
        <table:table-row><table:table-cell><text:p>D</text:p></table:table-cell>
          <table:table-cell><text:p>E</text:p></table:table-cell></table:table-row></table:table>)"};
    const richtext::Document document = readOdt(odt.flat());
    const richtext::Table &table = *document.tables().at(0);
    std::vector<std::vector<std::string>> grid;
    for (const richtext::Row &row : table.rows) {
        grid.emplace_back(4, "");
        for (const richtext::Cell &cell : row.cells)
            grid.back().at(static_cast<std::size_t>(cell.column)) =
                cell.covered ? "~" : cell.blocks.at(0).paragraph()->text();
    }
    EXPECT_EQ(grid, (std::vector<std::vector<std::string>>{{"A", "B", "~", "C"}, {"~", "D", "E", "~"}}));
}

TEST(OdtReader, ReadsNotesInPlace)
{
    const Odt odt{
        .body = R"(<text:p>See<text:note text:note-class="footnote"><text:note-citation>1</text:note-citation>
        <text:note-body><text:p>The note.</text:p><text:p>Its second paragraph.</text:p></text:note-body>
        </text:note>
        and<text:note text:note-class="endnote"><text:note-citation>i</text:note-citation><text:note-body>
        <text:p>At the end.</text:p></text:note-body></text:note> more.</text:p>)"};
    const richtext::Document document = readOdt(odt.flat());
    EXPECT_EQ(texts(document), (std::vector<std::string>{"See and more."})) << "note text is not main text";
    const std::vector<const Inline *> footnotes = document.notes(Inline::Kind::footnote);
    ASSERT_EQ(footnotes.size(), 1u);
    ASSERT_EQ(footnotes[0]->content->size(), 2u);
    EXPECT_EQ(footnotes[0]->content->at(0).paragraph()->text(), "The note.");
    EXPECT_EQ(property(footnotes[0]->object, "librevenge:number"), "1");
    ASSERT_EQ(document.notes(Inline::Kind::endnote).size(), 1u);
    EXPECT_EQ(document.notes(Inline::Kind::endnote)[0]->content->at(0).paragraph()->text(), "At the end.");
}

TEST(OdtReader, FollowsMasterPagesWithHeadersAndFooters)
{
    const Odt odt{
        .automaticStyles =
            R"(<style:page-layout style:name="Letter"><style:page-layout-properties fo:page-width="8.5in"
        fo:page-height="11in"/><style:header-style><style:header-footer-properties fo:min-height="0.2in"
        fo:margin-bottom="0.1in"/></style:header-style></style:page-layout>
        <style:page-layout style:name="Wide"><style:page-layout-properties fo:page-width="11in"
            fo:page-height="8.5in"
        style:print-orientation="landscape"/></style:page-layout>
        <style:style style:name="Turn" style:family="paragraph" style:master-page-name="Landscape"/>)",
        .masterStyles = R"(<style:master-page style:name="Standard" style:page-layout-name="Letter">
        <style:header><text:p>odd head</text:p></style:header><style:header-left><text:p>even head</text:p>
        </style:header-left><style:footer><text:p>foot <text:page-number>1</text:page-number></text:p>
        </style:footer>
        </style:master-page><style:master-page style:name="Landscape" style:page-layout-name="Wide">
        <style:footer style:display="false"><text:p>hidden</text:p></style:footer></style:master-page>)",
        .body = R"(<text:p>first page</text:p><text:p text:style-name="Turn">turned</text:p>)"};
    for (const std::string &bytes : {odt.flat(), odt.package()}) {
        const richtext::Document document = readOdt(bytes);
        ASSERT_EQ(document.pageSpans.size(), 2u);
        const auto &parts = document.pageSpans[0].headersAndFooters;
        ASSERT_EQ(parts.size(), 3u);
        EXPECT_EQ(parts[0].occurrence, "odd");
        EXPECT_EQ(parts[0].blocks[0].paragraph()->text(), "odd head");
        EXPECT_EQ(parts[1].occurrence, "even");
        EXPECT_TRUE(parts[2].footer);
        EXPECT_EQ(parts[2].blocks[0].paragraph()->content.back().kind, Inline::Kind::field);
        EXPECT_EQ(property(parts[0].properties, "fo:min-height"), "0.2000in");
        EXPECT_EQ(property(document.pageSpans[1].properties, "style:print-orientation"), "landscape");
        EXPECT_TRUE(document.pageSpans[1].headersAndFooters.empty()) << "a footer that is not displayed";
        EXPECT_EQ(document.pageSpans[1].blocks[0].paragraph()->text(), "turned");
    }
}

// Columns reach librevenge as its count, gap and per-column widths, from a page layout as from a
// section style.
struct Columns {
    const char *why;
    std::string automatic;
    std::string body;
    bool section; // the first section's properties; else the page span's
    Properties expected;
};

void PrintTo(const Columns &c, std::ostream *out)
{
    *out << c.why;
}

class ColumnsOf : public testing::TestWithParam<Columns> {};

TEST_P(ColumnsOf, PassesCountGapAndWidths)
{
    const Odt odt{.automaticStyles = GetParam().automatic,
                  .masterStyles = R"(<style:master-page style:name="Standard" style:page-layout-name="PL"/>)",
                  .body = GetParam().body};
    const richtext::Document document = readOdt(odt.package());
    ASSERT_EQ(document.pageSpans.size(), 1u);
    const richtext::PageSpan &span = document.pageSpans[0];
    if (GetParam().section) {
        ASSERT_EQ(span.sections.size(), 1u);
    }
    const Properties &properties = GetParam().section ? span.sections[0] : span.properties;
    for (const auto &[name, value] : GetParam().expected)
        EXPECT_EQ(property(properties, name), value) << name;
}

const std::string twoColumnLayout = R"(<style:page-layout style:name="PL"><style:page-layout-properties
    fo:page-width="8.5in" fo:page-height="11in"><style:columns fo:column-count="2" fo:column-gap="0.5in">
    <style:column style:rel-width="4000*" fo:start-indent="0in" fo:end-indent="0.25in"/>
    <style:column style:rel-width="6000*" fo:start-indent="0.25in" fo:end-indent="0in"/>
    </style:columns></style:page-layout-properties></style:page-layout>)";

INSTANTIATE_TEST_SUITE_P(
    OdtReader, ColumnsOf,
    testing::Values(
        Columns{"a page layout's columns with their widths",
                twoColumnLayout,
                "<text:p>x</text:p>",
                false,
                {{"fo:column-count", "2"},
                 {"fo:column-gap", "0.5000in"},
                 {"style:columns", "2"},
                 {"style:columns/0/style:rel-width", "4000*"},
                 {"style:columns/1/fo:start-indent", "0.2500in"},
                 {"fo:page-width", "8.5000in"}}},
        Columns{"a page layout's equal columns: count and gap only",
                R"(<style:page-layout style:name="PL">
            <style:page-layout-properties><style:columns fo:column-count="3" fo:column-gap="1cm"/>
            </style:page-layout-properties></style:page-layout>)",
                "<text:p>x</text:p>",
                false,
                {{"fo:column-count", "3"}, {"fo:column-gap", "0.3937in"}, {"style:columns", ""}}},
        Columns{"one column is none",
                R"(<style:page-layout style:name="PL"><style:page-layout-properties>
            <style:columns fo:column-count="1" fo:column-gap="0in"/></style:page-layout-properties>
            </style:page-layout>)",
                "<text:p>x</text:p>",
                false,
                {{"fo:column-count", ""}, {"fo:column-gap", ""}}},
        Columns{"a section's columns",
                R"(<style:style style:name="S" style:family="section">
            <style:section-properties><style:columns fo:column-count="2" fo:column-gap="0.2in"/>
            </style:section-properties></style:style>)",
                R"(<text:section text:name="s" text:style-name="S"><text:p>x</text:p></text:section>)",
                true,
                {{"fo:column-count", "2"}, {"fo:column-gap", "0.2000in"}}}));

// Word's "different first page" comes from LibreOffice as a master page whose next style is the
// regular one: its header and footer are the first page's only, the next style's those of the rest.
struct FirstPage {
    const char *why;
    std::string masters;
    std::vector<std::string> expected; // "footer first: text" per header and footer, in order
};

void PrintTo(const FirstPage &c, std::ostream *out)
{
    *out << c.why;
}

class FirstPageOf : public testing::TestWithParam<FirstPage> {};

TEST_P(FirstPageOf, GivesTheFirstPageItsOwnHeaders)
{
    const Odt odt{.automaticStyles = R"(<style:style style:name="P1" style:family="paragraph"
        style:master-page-name="First_20_Page"/>)",
                  .masterStyles = GetParam().masters,
                  .body = R"(<text:p text:style-name="P1">one</text:p><text:p>two</text:p>)"};
    const richtext::Document document = readOdt(odt.flat());
    ASSERT_EQ(document.pageSpans.size(), 1u) << "the reader does not lay out pages";
    std::vector<std::string> parts;
    for (const richtext::HeaderFooter &part : document.pageSpans[0].headersAndFooters) {
        std::string text;
        for (const richtext::Block &block : part.blocks)
            if (block.paragraph())
                text += block.paragraph()->text();
        parts.push_back(std::string(part.footer ? "footer " : "header ") + part.occurrence + ": " + text);
    }
    EXPECT_EQ(parts, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    OdtReader, FirstPageOf,
    testing::Values(
        FirstPage{
            "a first page master with its own footer",
            R"(<style:master-page style:name="Standard"><style:footer><text:p>foot</text:p></style:footer>
            </style:master-page><style:master-page style:name="First_20_Page" style:next-style-name="Standard">
            <style:footer><text:p>first foot</text:p></style:footer></style:master-page>)",
            {"footer all: foot", "footer first: first foot"}},
        FirstPage{
            "a first page without the others' header has an empty one",
            R"(<style:master-page style:name="Standard"><style:header><text:p>head</text:p></style:header>
            </style:master-page><style:master-page style:name="First_20_Page"
            style:next-style-name="Standard"/>)",
            {"header all: head", "header first: "}},
        FirstPage{
            "left and right pages after the first",
            R"(<style:master-page style:name="Standard"><style:header><text:p>odd</text:p></style:header>
            <style:header-left><text:p>even</text:p></style:header-left></style:master-page>
            <style:master-page style:name="First_20_Page" style:next-style-name="Standard"><style:header>
            <text:p>title</text:p></style:header></style:master-page>)",
            {"header odd: odd", "header even: even", "header first: title"}},
        FirstPage{"a first page header in the master page itself",
                  R"(<style:master-page style:name="First_20_Page"><style:header><text:p>head</text:p>
            </style:header><style:header-first><text:p>letterhead</text:p></style:header-first>
            </style:master-page>)",
                  {"header all: head", "header first: letterhead"}},
        FirstPage{"a master page that is its own next style",
                  R"(<style:master-page style:name="First_20_Page" style:next-style-name="First_20_Page">
            <style:footer><text:p>foot</text:p></style:footer></style:master-page>)",
                  {"footer all: foot"}},
        FirstPage{"right and left page styles that alternate are no first page",
                  R"(<style:master-page style:name="Left" style:next-style-name="First_20_Page">
            <style:footer><text:p>left</text:p></style:footer></style:master-page>
            <style:master-page style:name="First_20_Page" style:next-style-name="Left">
            <style:footer><text:p>right</text:p></style:footer></style:master-page>)",
                  {"footer all: right"}},
        FirstPage{
            "a first page's footer like the others' is no footer of its own (Word numbers its pictures)",
            R"(<style:master-page style:name="Standard"><style:footer><text:p text:style-name="F">foot<draw:frame
            draw:name="Picture 1" draw:z-index="1"/></text:p></style:footer></style:master-page>
            <style:master-page style:name="First_20_Page" style:next-style-name="Standard"><style:footer><text:p
            text:style-name="F">foot<draw:frame draw:name="Picture 2" draw:z-index="7"/></text:p></style:footer>
            </style:master-page>)",
            {"footer all: foot"}},
        FirstPage{
            "a first page footer that differs in its text stays",
            R"(<style:master-page style:name="First_20_Page"><style:footer><text:p>foot</text:p></style:footer>
            <style:footer-first><text:p>foot <text:span>2</text:span></text:p></style:footer-first>
            </style:master-page>)",
            {"footer all: foot", "footer first: foot 2"}},
        FirstPage{"a next style that does not exist",
                  R"(<style:master-page style:name="First_20_Page" style:next-style-name="Gone">
            <style:footer><text:p>foot</text:p></style:footer></style:master-page>)",
                  {"footer all: foot"}}));

TEST(OdtReader, ReadsLinksFieldsAndPictures)
{
    const std::string png = png2x3();
    const Odt odt{
        .body =
            R"(<text:p><text:a xlink:href="https://example.org/">a link</text:a> <draw:frame svg:width="2in"
        svg:height="1in"><draw:image xlink:href="Pictures/p.png"/></draw:frame><text:bookmark
            text:name="b"/>end
        <text:date>1 May 2000</text:date></text:p>)"};
    const richtext::Document document = readOdt(odt.package({{"Pictures/p.png", png}}));
    const Inline *link = pieceWith(document, "a link");
    ASSERT_TRUE(link);
    EXPECT_EQ(link->link, "https://example.org/");
    const auto &content = document.paragraphs().at(0)->content;
    const auto image = std::find_if(content.begin(), content.end(),
                                    [](const Inline &piece) { return piece.kind == Inline::Kind::image; });
    ASSERT_NE(image, content.end());
    EXPECT_EQ(image->data, png);
    EXPECT_EQ(property(image->object, "librevenge:mime-type"), "image/png");
    EXPECT_EQ(property(image->object, "svg:width"), "2.0000in");
    EXPECT_EQ(texts(document)[0], "a link end 1 May 2000") << "a field shows its value";
}

// Word's text boxes reach us as drawing shapes: their words are a text box's, grouped or not; a shape
// without words holds none.
TEST(OdtReader, ReadsTheWordsOfDrawingShapesAsTextBoxes)
{
    const Odt odt{.body = R"(<text:p>before <draw:rect svg:width="1in" svg:height="1in"/><draw:custom-shape
        text:anchor-type="char" svg:width="2in" svg:height="1in"><text:p>shaped words</text:p><draw:enhanced-geometry
        svg:viewBox="0 0 0 0"/></draw:custom-shape><draw:g><draw:ellipse svg:width="1in" svg:height="1in"/>
        <draw:custom-shape svg:width="1in" svg:height="1in"><text:p>grouped words</text:p></draw:custom-shape>
        </draw:g> after</text:p>)"};
    const richtext::Document document = readOdt(odt.flat());
    std::vector<std::string> boxes;
    for (const Inline &piece : document.paragraphs().at(0)->content)
        if (piece.kind == Inline::Kind::textBox && piece.content && !piece.content->empty())
            if (const richtext::Paragraph *paragraph = piece.content->front().paragraph())
                boxes.push_back(paragraph->text());
    EXPECT_EQ(boxes, (std::vector<std::string>{"shaped words", "grouped words"}));
    EXPECT_EQ(texts(document)[0], "before  after");
}

} // namespace
