// Our WordPerfect files as readers other than libwpd see them: wp2latex (5.1 and 6) and wp2x (5.1)
// take every file without a warning and find the words libwpd finds (wp2x those of the parts it
// reads at all).

#include "IndependentReaders.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Fixture {
    const char *name;
    std::string styles;
    std::string body;
    std::string masterStyles = {};
    std::string meta = {};
};

using wptest::style;

const std::string columnStyle =
    style("S", "section", "", R"(<style:columns fo:column-count="2" fo:column-gap="0.5in"/>)") +
    style("CB", "paragraph", R"(fo:break-before="column")");

std::string cell(const std::string &words)
{
    return "<table:table-cell><text:p>" + words + "</text:p></table:table-cell>";
}

std::string table(int rows, int columns)
{
    std::string xml = R"(<table:table table:name="t"><table:table-column table:number-columns-repeated=")" +
                      std::to_string(columns) + "\"/>";
    for (int row = 0; row < rows; ++row) {
        xml += "<table:table-row>";
        for (int column = 0; column < columns; ++column)
            xml += cell("cell" + std::to_string(row) + "x" + std::to_string(column) + " words");
        xml += "</table:table-row>";
    }
    return xml + "</table:table>";
}

const Fixture fixtures[] = {
    {"SummaryInItsOwnIndexBlock", "", "<text:p>body words</text:p>", "",
     "<office:meta><dc:title>Title words</dc:title><dc:subject>Subject words</dc:subject>"
     "<dc:creator>Author Name</dc:creator><dc:description>Abstract words</dc:description>"
     "<meta:keyword>keyword</meta:keyword></office:meta>"},
    {"HangingListAndParagraph",
     R"(<text:list-style style:name="L"><text:list-level-style-bullet text:level="1" text:bullet-char="•">
     <style:list-level-properties text:list-level-position-and-space-mode="label-alignment">
     <style:list-level-label-alignment text:label-followed-by="listtab" fo:margin-left="0.5in"
     fo:text-indent="-0.25in"/></style:list-level-properties></text:list-level-style-bullet></text:list-style>)" +
         style("HG", "paragraph", R"(fo:margin-left="1in" fo:text-indent="-0.5in")"),
     R"(<text:list text:style-name="L"><text:list-item><text:p>apple words</text:p></text:list-item>
     <text:list-item><text:p>pear words</text:p></text:list-item></text:list><text:p text:style-name="HG"
     >hanging paragraph words that run on</text:p><text:p>after list</text:p>)"},
    {"AlignedTabStops",
     style("TB", "paragraph", "",
           R"(<style:tab-stops><style:tab-stop style:position="1.5in" style:type="center"/><style:tab-stop
           style:position="3in" style:type="right" style:leader-style="dotted" style:leader-text="."/>
           <style:tab-stop style:position="4.5in" style:type="char" style:char="."/></style:tab-stops>)"),
     R"(<text:p text:style-name="TB">left<text:tab/>centre<text:tab/>right<text:tab/>12.50</text:p>
     <text:p text:style-name="TB">name<text:tab/>middle<text:tab/>page<text:tab/>3.25</text:p>
     <text:p>own<text:tab/>stops<text:tab/>gone</text:p>)"},
    {"Table", "", "<text:p>before table</text:p>" + table(3, 3) + "<text:p>after table</text:p>"},
    {"RowHeights",
     style("R1", "table-row", R"(style:min-row-height="1in")") +
         style("M", "table-cell", R"(style:vertical-align="middle" fo:border="0.5pt solid #ff0000")"),
     R"(<table:table table:name="t"><table:table-column table:number-columns-repeated="2"/>
     <table:table-header-rows><table:table-row>)" +
         cell("head words") + cell("more head") +
         R"(</table:table-row></table:table-header-rows><table:table-row table:style-name="R1">
         <table:table-cell table:style-name="M"><text:p>tall words</text:p></table:table-cell>)" +
         cell("tall more") + "</table:table-row></table:table><text:p>after rows</text:p>"},
    {"NestedTable", "",
     R"(<text:p>before outer</text:p><table:table table:name="o"><table:table-column
     table:number-columns-repeated="2"/><table:table-row><table:table-cell><text:p>outer words</text:p>)" +
         table(2, 2) + "</table:table-cell>" + cell("right outer") +
         "</table:table-row></table:table><text:p>after outer</text:p>"},
    {"TwoColumnSectionWithColumnBreak", columnStyle,
     R"(<text:p>above columns</text:p><text:section text:name="s" text:style-name="S"><text:p>left column
     words</text:p><text:p text:style-name="CB">right column words</text:p></text:section>
     <text:p>below columns</text:p>)"},
    {"NotesHeaderAndFooter", "",
     R"(<text:p>body<text:note text:note-class="footnote"><text:note-citation>1</text:note-citation>
     <text:note-body><text:p>footnote words</text:p></text:note-body></text:note> more<text:note
     text:note-class="endnote"><text:note-citation>i</text:note-citation><text:note-body><text:p>endnote
     words</text:p></text:note-body></text:note></text:p>)",
     R"(<style:master-page style:name="Standard"><style:header><text:p>header words</text:p></style:header>
     <style:footer><text:p>footer words</text:p></style:footer></style:master-page>)"},
    {"SpacedParagraphsAndEmptyHeader",
     style("SP", "paragraph", R"(fo:margin-top="0.1in" fo:margin-bottom="0.2in")"),
     R"(<text:p>first plain words</text:p><text:p text:style-name="SP">spaced paragraph words</text:p>
     <text:p text:style-name="SP">second spaced words</text:p><text:p>last plain words</text:p>)",
     R"(<style:master-page style:name="Standard"><style:header><text:p/></style:header></style:master-page>)"},
    {"PlacedTextBoxes", style("G", "graphic", R"(style:horizontal-rel="page" style:vertical-rel="page")"),
     R"(<text:p>paragraph words<draw:frame text:anchor-type="paragraph" svg:x="1in" svg:y="0.5in"
     svg:width="2in" svg:height="1in"><draw:text-box><text:p>beside words</text:p></draw:text-box></draw:frame>
     more words</text:p><text:p>page words<draw:frame draw:style-name="G" text:anchor-type="page" svg:x="4in"
     svg:y="6in" svg:width="2in" svg:height="1in"><draw:text-box><text:p>placed words</text:p></draw:text-box>
     </draw:frame></text:p>)"},
    {"HighlightedWords", style("HL", "text", R"(fo:background-color="#ffff00")"),
     R"(<text:p>plain <text:span text:style-name="HL">marked words</text:span> plain again</text:p>)"},
    {"Characters", "",
     "<text:p>café naïve ¿qué? ß • bullet – dash “quoted”</text:p><text:p>αβγ Greek Жизнь Cyrillic "
     "שלום Hebrew カタカナ kana ひらがな hiragana soft\u00adhyphen non\u2011breaking</text:p>"},
};

std::string document(const Fixture &fixture)
{
    std::string odt = wptest::flatOdt(fixture.styles, fixture.body, fixture.masterStyles);
    if (!fixture.meta.empty())
        odt.insert(odt.find("<office:automatic-styles>"), fixture.meta);
    return odt;
}

struct Case {
    const Fixture *fixture;
    const char *option;
};

void PrintTo(const Case &c, std::ostream *os)
{
    *os << c.fixture->name << " " << c.option;
}

class IndependentReaders : public ::testing::TestWithParam<Case> {};

TEST_P(IndependentReaders, ReadOurFileWithoutComplaintAndFindLibwpdsWords)
{
    const Case &param = GetParam();
    testing_support::TempDir scratch;
    const std::string source = scratch.write("source.fodt", document(*param.fixture));
    const std::string output = scratch.file("out.wp");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, param.option, source, output});
    ASSERT_EQ(run.status, 0) << run.err;

    const readers::Reading reference = readers::libwpd(output);
    ASSERT_EQ(reference.status, 0);
    EXPECT_TRUE(reference.complaints.empty()) << reference.complaints.front();
    ASSERT_GE(readers::words(reference.text).size(), 2u) << reference.text;
    const wptest::ReadBack model = wptest::readWordPerfect(testing_support::readFile(output));
    ASSERT_TRUE(model.ok);

    const readers::Reading latex = readers::wp2latex(output);
    if (!latex.available)
        GTEST_SKIP() << "wp2latex is not installed";
    EXPECT_EQ(latex.status, 0);
    EXPECT_EQ(readers::beyondWp2latexLimits(latex.complaints, model.document), std::vector<std::string>{});
    const readers::WordShare byLatex =
        readers::shareOfWords(readers::asLibwpdReadsIt(model.document), latex.text);
    EXPECT_GE(byLatex.share, 0.98) << "wp2latex misses " << ::testing::PrintToString(byLatex.missing);

    if (std::string(param.option) != "--wp5")
        return;
    const readers::Reading x = readers::wp2x(output);
    if (!x.available)
        GTEST_SKIP() << "wp2x is not installed";
    EXPECT_EQ(x.status, 0);
    EXPECT_EQ(x.complaints, std::vector<std::string>{});
    const readers::WordShare byX = readers::shareOfWords(readers::asWp2xReadsIt(model.document), x.text);
    EXPECT_GE(byX.share, 0.90) << "wp2x misses " << ::testing::PrintToString(byX.missing);
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    for (const Fixture &fixture : fixtures) {
        all.push_back({&fixture, "--wp6"});
        all.push_back({&fixture, "--wp5"});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Fixtures, IndependentReaders, ::testing::ValuesIn(cases()), [](const auto &info) {
    return std::string(info.param.fixture->name) + "_" + (info.param.option + 2);
});

// libwpd reads no 5.1 columns; wp2latex does: the section's words in multicols, the column break
// between them, a page break with the columns off around it, the words after the section outside. wp2latex
// keeps a column mode open only after a figure box (without one it closes it where it opens, on WordPerfect's
// own prn_test5.wp too), so a picture stands above the columns.
TEST(IndependentReaders51, Wp2latexSetsTheSectionInColumns)
{
    const std::string png =
        "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAADklEQVR4nGNwAAMGCAUAFQ4DAdSUe+sAAAAASUVORK5CYII=";
    const std::string picture =
        "<draw:frame text:anchor-type=\"as-char\" svg:width=\"0.5in\" svg:height=\"0.5in\">"
        "<draw:image><office:binary-data>" +
        png + "</office:binary-data></draw:image></draw:frame>";
    testing_support::TempDir scratch;
    const std::string source = scratch.write(
        "source.fodt",
        wptest::flatOdt(columnStyle + wptest::style("PB", "paragraph", "fo:break-before=\"page\""),
                        "<text:p>above columns" + picture +
                            "</text:p><text:section text:name=\"s\" text:style-name=\"S\">"
                            "<text:p>left column words</text:p><text:p text:style-name=\"CB\">right column "
                            "words</text:p><text:p text:style-name=\"PB\">next page words</text:p>"
                            "</text:section><text:p>below columns</text:p>"));
    const std::string output = scratch.file("out.wp");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, "--wp5", source, output});
    ASSERT_EQ(run.status, 0) << run.err;
    const readers::Reading latex = readers::wp2latex(output);
    if (!latex.available)
        GTEST_SKIP() << "wp2latex is not installed";
    const std::string &tex = latex.text;
    std::size_t at = 0;
    for (const char *next : {"\\begin{multicols}{2}", "left column words", "\\columnbreak",
                             "right column words", "\\end{multicols}", "\\newpage", "\\begin{multicols}{2}",
                             "next page words", "\\end{multicols}", "below columns"}) {
        const std::size_t found = tex.find(next, at);
        ASSERT_NE(found, std::string::npos) << next << " missing or out of order in\n" << tex;
        at = found;
    }
}

} // namespace
