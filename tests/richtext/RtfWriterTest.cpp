#include "Fixtures.h"

#include "richtext/OdtReader.h"
#include "richtext/RtfWriter.h"

#include <gtest/gtest.h>

#include <functional>
#include <variant>

using librevenge::RVNGPropertyList;
using richtext::RtfWriter;

namespace {

using Script = std::function<void(RtfWriter &)>;

// A document of one page span, the script telling what is in it.
RtfWriter &run(RtfWriter &writer, const Script &inside, const RVNGPropertyList &page = {})
{
    writer.startDocument({});
    writer.openPageSpan(page);
    inside(writer);
    writer.closePageSpan();
    writer.endDocument();
    return writer;
}

std::string document(const Script &inside, const RVNGPropertyList &page = {})
{
    RtfWriter writer;
    return run(writer, inside, page).rtf();
}

// One paragraph inside one page span, the script telling the rest.
std::string write(const Script &inside, const RVNGPropertyList &paragraph = {},
                  richtext::RtfPicture::SvgPainter painter = {})
{
    RtfWriter writer(std::move(painter));
    return run(writer,
               [&](RtfWriter &out) {
                   out.openParagraph(paragraph);
                   inside(out);
                   out.closeParagraph();
               })
        .rtf();
}

std::string text(const std::string &utf8)
{
    return write([&](RtfWriter &out) { out.insertText(utf8.c_str()); });
}

RVNGPropertyList with(const char *name, const char *value)
{
    RVNGPropertyList list;
    list.insert(name, value);
    return list;
}

RVNGPropertyList with(const char *name, double inches, librevenge::RVNGUnit unit = librevenge::RVNG_INCH)
{
    RVNGPropertyList list;
    list.insert(name, inches, unit);
    return list;
}

// Texts, lengths in inches and counts.
RVNGPropertyList
with(std::initializer_list<std::pair<const char *, std::variant<const char *, double, int>>> all)
{
    RVNGPropertyList list;
    for (const auto &[name, value] : all)
        std::visit([&](auto v) { list.insert(name, v); }, value);
    return list;
}

struct Expect {
    const char *why;
    std::function<std::string()> rtf;
    std::vector<std::string> contains;
};

void PrintTo(const Expect &c, std::ostream *out)
{
    *out << c.why;
}

class RtfOutput : public testing::TestWithParam<Expect> {};

TEST_P(RtfOutput, HoldsTheControlWords)
{
    const std::string rtf = GetParam().rtf();
    EXPECT_EQ(rtf.rfind("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1", 0), 0u) << rtf;
    EXPECT_TRUE(fixtures::balanced(rtf)) << rtf;
    for (const std::string &part : GetParam().contains)
        EXPECT_NE(rtf.find(part), std::string::npos) << "no " << part << " in\n" << rtf;
}

std::string span(const RVNGPropertyList &properties)
{
    return write([&](RtfWriter &out) {
        out.openSpan(properties);
        out.insertText("x");
        out.closeSpan();
    });
}

// Cases: this text alone, an "x" in a span of these properties, an empty paragraph of these.
std::function<std::string()> textOf(const std::string &utf8)
{
    return [utf8] { return text(utf8); };
}
std::function<std::string()> spanOf(const RVNGPropertyList &properties)
{
    return [properties] { return span(properties); };
}
std::function<std::string()> paragraphOf(const RVNGPropertyList &properties)
{
    return [properties] { return write([](RtfWriter &) {}, properties); };
}

// A frame (2 by 1 inches unless `frame` says) holding a picture of these bytes.
void insertPicture(RtfWriter &out, const std::string &bytes, RVNGPropertyList frame = {},
                   const char *mimeType = nullptr)
{
    if (!frame["svg:width"])
        frame.insert("svg:width", 2.0);
    if (!frame["svg:height"])
        frame.insert("svg:height", 1.0);
    RVNGPropertyList object;
    if (mimeType)
        object.insert("librevenge:mime-type", mimeType);
    object.insert("office:binary-data", fixtures::binary(bytes));
    out.openFrame(frame);
    out.insertBinaryObject(object);
    out.closeFrame();
}

RVNGPropertyList tabStop()
{
    RVNGPropertyList paragraph = with("fo:margin-left", 0.5);
    librevenge::RVNGPropertyListVector stops;
    stops.append(with({{"style:position", 1.0}, {"style:type", "right"}, {"style:leader-text", "."}}));
    paragraph.insert("librevenge:tab-stops", stops);
    return paragraph;
}

INSTANTIATE_TEST_SUITE_P(
    RtfWriter, RtfOutput,
    testing::Values(
        Expect{"code page 1252 as hex escapes",
               textOf("caf\xC3\xA9 \xE2\x82\xAC\xC5\xA0"),
               {"caf\\'e9 \\'80\\'8a"}},
        Expect{"characters beyond 16 bits as two halves",
               textOf("\xF0\x9F\x98\x80"),
               {"\\u-10179\\'3f\\u-8704\\'3f"}},
        Expect{"malformed UTF-8",
               textOf("a\xFF"
                      "b"),
               {"a\\u-3\\'3fb"}},
        Expect{"spaces that meet are kept apart", textOf("a   b"), {"a {} {} b"}},
        Expect{"explicit spaces too",
               [] {
                   return write([](RtfWriter &out) {
                       out.insertText("a ");
                       out.insertSpace();
                       out.insertSpace();
                   });
               },
               {"a {} {} "}},
        Expect{"italic", spanOf(with("fo:font-style", "italic")), {"\\i x"}},
        Expect{"underline", spanOf(with("style:text-underline-style", "solid")), {"\\ul x"}},
        Expect{
            "double underline",
            spanOf(with({{"style:text-underline-type", "double"}, {"style:text-underline-style", "solid"}})),
            {"\\uldb x"}},
        Expect{"strike-through", spanOf(with("style:text-line-through-style", "solid")), {"\\strike x"}},
        Expect{"superscript", spanOf(with("style:text-position", "super 58%")), {"\\super x"}},
        Expect{"subscript as a percentage", spanOf(with("style:text-position", "-33% 58%")), {"\\sub x"}},
        Expect{"small capitals", spanOf(with("fo:font-variant", "small-caps")), {"\\scaps x"}},
        Expect{
            "size in half points", spanOf(with("fo:font-size", 11.0, librevenge::RVNG_POINT)), {"\\fs22 x"}},
        Expect{"complex scripts get the size, weight and slant too",
               [] {
                   RVNGPropertyList list = with("fo:font-size", 15.0, librevenge::RVNG_POINT);
                   list.insert("fo:font-weight", "bold");
                   list.insert("fo:font-style", "italic");
                   return span(list);
               },
               {"{\\rtlch\\afs30\\ab\\ai\\ltrch\\fs30\\b\\i x}"}},
        Expect{"a font, by the table",
               spanOf(with("style:font-name", "Courier New")),
               {"{\\fonttbl{\\f0\\fnil Times New Roman;}{\\f1\\fnil Courier New;}}", "\\f1 x"}},
        Expect{"a colour, by the table",
               spanOf(with("fo:color", "#00FF80")),
               {"{\\colortbl;\\red0\\green255\\blue128;}", "\\cf1 x"}},
        Expect{"centred", paragraphOf(with("fo:text-align", "center")), {"\\qc"}},
        Expect{"end is right", paragraphOf(with("fo:text-align", "end")), {"\\qr"}},
        Expect{"justified", paragraphOf(with("fo:text-align", "justify")), {"\\qj"}},
        Expect{"indents in twips", paragraphOf(with("fo:text-indent", -0.25)), {"\\fi-360"}},
        Expect{"spacing before", paragraphOf(with("fo:margin-top", 0.1)), {"\\sb144"}},
        Expect{"line spacing",
               paragraphOf(with("fo:line-height", 1.5, librevenge::RVNG_PERCENT)),
               {"\\sl360\\slmult1"}},
        Expect{"a page break", paragraphOf(with("fo:break-before", "page")), {"\\pagebb"}},
        Expect{
            "tab stops count from the margin", paragraphOf(tabStop()), {"\\li720", "\\tqr\\tldot\\tx2160"}},
        Expect{"tabs and line breaks",
               [] {
                   return write([](RtfWriter &out) {
                       out.insertTab();
                       out.insertText("a");
                       out.insertLineBreak();
                       out.insertSpace();
                   });
               },
               {"\\tab a\\line  "}},
        Expect{"a paragraph's mark takes its last font and size; a line without text, the default's",
               [] {
                   return document([](RtfWriter &out) {
                       RVNGPropertyList font = with("fo:font-size", 10.0, librevenge::RVNG_POINT);
                       font.insert("style:font-name", "Courier");
                       for (const RVNGPropertyList &span :
                            {font, with("fo:font-size", 14.0, librevenge::RVNG_POINT), RVNGPropertyList()}) {
                           out.openParagraph({});
                           out.openSpan(span);
                           if (span["style:font-name"])
                               out.insertText("x");
                           out.closeSpan();
                           out.closeParagraph();
                       }
                   });
               },
               {"x}\\f1\\fs20\\par", "\\fs28}\\fs28\\par", "\\ql{}\\par"}},
        Expect{"page numbers in the field's own format",
               [] {
                   return write([](RtfWriter &out) {
                       out.insertField(
                           with({{"librevenge:field-type", "text:page-number"}, {"style:num-format", "A"}}));
                   });
               },
               {"{\\field{\\*\\fldinst{ PAGE \\\\* ALPHABETIC }}{\\fldrslt{}}}"}},
        Expect{"a picture the format can hold",
               [] {
                   return write(
                       [](RtfWriter &out) { insertPicture(out, fixtures::png2x3(), {}, "image/png"); });
               },
               {"{\\pict\\pngblip\\picw2\\pich3\\picwgoal2880\\pichgoal1440\n89504e470d0a1a0a"}}));

TEST(RtfWriter, WritesEveryPartOfADocument)
{
    RtfWriter writer;
    fixtures::everything(writer);
    const std::string rtf = writer.rtf();
    ASSERT_TRUE(fixtures::balanced(rtf)) << rtf;
    const char *parts[] = {
        "{\\info{\\title Everything}}",
        "\\paperw12240\\paperh15840\\margl1440",
        "\\sectd\\sbkpage\\pgwsxn12240",
        "{\\header\\pard\\plain\\ql Head {\\chpgn}}",
        "\\b\\cf1 Bold caf\\'e9 \\u9786\\'3f \\{braces\\} back\\\\slash}",
        "{\\super\\chftn}{\\footnote\\pard\\plain\\ql{\\super\\chftn}The note.}",
        "{\\stylesheet{\\cs1\\additive\\super footnote reference;}}\n{\\*\\listtable",
        "{\\field{\\*\\fldinst{HYPERLINK \"https://example.org/?q=%22x%22\"}}{\\fldrslt{{link}}}}",
        "\\levelnfc3\\levelnfcn3\\leveljc0\\leveljcn0\\levelfollow0\\levelstartat2{\\leveltext\\'02\\'00.;}{"
        "\\levelnumbers\\'01;}",
        "{\\*\\listoverridetable{\\listoverride\\listid1\\listoverridecount0\\ls1}}",
        "\\pard\\plain\\ls1\\ilvl0\\ql{\\listtext B.\\tab}item",
        "\\trowd\\trleft0\\trpaddfl3\\trpaddl0\\trpaddfr3\\trpaddr0\\cellx2880\n\\pard\\plain\\intbl\\ql "
        "cell\\cell\n\\row",
        "\\sect\n\\sectd",
        "\\sectd\\sbkpage\\pgwsxn12240\\pghsxn15840\\marglsxn1440\\pgnlcrm\\headery720\\pgnstarts5\\pgnrestar"
        "t"
        "\\cols2\\colsx720\n",
        "\\tqr\\tldot\\tx4320",
        "page\\tab{\\field{\\*\\fldinst{ PAGE \\\\* roman }}{\\fldrslt{}}}{\\shp{\\*\\shpinst\\shpleft7920",
        "\\shpbxpage\\shpbypara\\shpwr2\\shpwrk0\\shpz0{\\sp{\\sn shapeType}{\\sv 75}}",
        "{\\sp{\\sn pib}{\\sv {\\pict\\pngblip",
        "{\\pict\\wmetafile8\\picw2540\\pich2540\\picwgoal1440\\pichgoal1440\n0100090000030c00",
        "\\sect\n\\sectd\\sbknone\\pgwsxn12240\\pghsxn15840\\marglsxn1440\\pgnlcrm\n",
    };
    for (const char *part : parts)
        EXPECT_NE(rtf.find(part), std::string::npos) << "no " << part << " in\n" << rtf;
    EXPECT_EQ(rtf.find("\\par\n\\sect"), std::string::npos) << "\\sect ends the paragraph itself";
    EXPECT_TRUE(rtf.ends_with("\\ql second section\\par\n}\n")) << "the last paragraph ends like the others";
}

// A table of one cell holding this text.
void oneCellTable(RtfWriter &out, const char *text)
{
    out.openTable({});
    out.openTableRow({});
    out.openTableCell({});
    out.insertText(text);
    out.closeTableCell();
    out.closeTableRow();
    out.closeTable();
}

void paragraph(RtfWriter &out, const char *text)
{
    out.openParagraph({});
    out.insertText(text);
    out.closeParagraph();
}

// Where `part` stands in `rtf`, failing the test when it is not there.
std::size_t at(const std::string &rtf, const std::string &part, std::size_t from = 0)
{
    const std::size_t found = rtf.find(part, from);
    EXPECT_NE(found, std::string::npos) << "no " << part << " after " << from << " in\n" << rtf;
    return found == std::string::npos ? rtf.size() : found;
}

RVNGPropertyList twoColumns()
{
    librevenge::RVNGPropertyListVector columns;
    columns.append(with({{"fo:start-indent", 0.0}, {"fo:end-indent", 0.25}}));
    columns.append(with({{"fo:start-indent", 0.25}, {"fo:end-indent", 0.0}}));
    RVNGPropertyList section;
    section.insert("style:columns", columns);
    return section;
}

TEST(RtfWriter, WritesSpansAndMergesOfTables)
{
    const std::string rtf = document([](RtfWriter &out) {
        RVNGPropertyList table;
        librevenge::RVNGPropertyListVector columns;
        for (double width : {1.0, 2.0, 0.5})
            columns.append(with("style:column-width", width));
        table.insert("librevenge:table-columns", columns);
        out.openTable(table);
        const RVNGPropertyList tall = with({{"fo:border", "0.0139in solid #000000"},
                                            {"table:number-rows-spanned", 2},
                                            {"table:number-columns-spanned", 2}});
        for (int row = 0; row < 2; ++row) {
            out.openTableRow({});
            if (row == 0) {
                out.openTableCell(tall);
                out.insertText("tall");
                out.closeTableCell();
            } else {
                out.insertCoveredTableCell({});
            }
            out.insertCoveredTableCell({});
            out.openTableCell(with("fo:border-left", "0.0208in double #000000"));
            oneCellTable(out,
                         row == 0 ? "inner" : "last"); // a table in a cell: its text stays, its grid goes
            out.closeTableCell();
            out.closeTableRow();
        }
        out.closeTable();
    });
    ASSERT_TRUE(fixtures::balanced(rtf)) << rtf;
    at(rtf, "\\clvmgf\\clbrdrt\\brdrs\\brdrw20\\brdrcf1\\clbrdrl");
    // A double line's width is a line's, a third of the whole.
    at(rtf, "\\cellx4320\\clbrdrl\\brdrdb\\brdrw10\\brdrcf1\\cellx5040\n\\pard\\plain\\intbl\\ql tall\\cell");
    at(rtf, "\\clvmrg\\clbrdrt");
    at(rtf, "\\pard\\plain\\intbl\\cell\n\\pard\\plain\\intbl\\ql last\\cell");
    EXPECT_EQ(rtf.find("\\itap"), std::string::npos);
    int rows = 0;
    for (std::size_t found = 0; (found = rtf.find("\\row", found)) != std::string::npos; found += 4)
        ++rows;
    EXPECT_EQ(rows, 2) << "the inner tables made no rows of their own";
}

TEST(RtfWriter, StartsAListAgainInAListOfItsOwn)
{
    const std::string rtf = document([](RtfWriter &out) {
        out.openOrderedListLevel(with("style:num-format", "1"));
        out.openListElement({});
        out.insertText("one");
        out.closeListElement();
        RVNGPropertyList restart;
        restart.insert("text:start-value", 5);
        out.openListElement(restart);
        out.insertText("five");
        out.closeListElement();
        out.closeOrderedListLevel();
    });
    at(rtf, "\\ls1\\ilvl0\\ql{\\listtext 1\\tab}one");
    at(rtf, "\\ls2\\ilvl0\\ql{\\listtext 5\\tab}five");
    at(rtf, "\\levelstartat5{\\leveltext\\'01\\'00;}");
}

TEST(RtfWriter, KeepsAdjacentTablesApart)
{
    at(document([](RtfWriter &out) {
           oneCellTable(out, "first");
           oneCellTable(out, "second");
       }),
       "\\row\n\\pard\\plain\\fs2\\sl-20\\slmult0\\par\n\\trowd");
}

TEST(RtfWriter, ClosesWhatAStreamLeftOpen)
{
    RtfWriter writer;
    writer.insertText("before any paragraph ");
    writer.closeSpan();
    writer.openSpan(with("fo:font-weight", "bold"));
    writer.openLink(with("xlink:href", "x"));
    writer.openFootnote({});
    writer.insertText("in a note");
    writer.endDocument();
    EXPECT_TRUE(fixtures::balanced(writer.rtf())) << writer.rtf();
    EXPECT_NE(writer.rtf().find("before any paragraph"), std::string::npos);
}

// A picture of these bytes in a 2 by 1 inch frame.
std::string picture(const std::string &bytes, richtext::RtfPicture::SvgPainter painter = {})
{
    return write([&](RtfWriter &out) { insertPicture(out, bytes); }, {}, std::move(painter));
}

// A placeable Windows metafile two inches by one with no drawing in it;
// `shortBy` bytes are cut off its end, as some producers store them.
std::string metafile(std::size_t shortBy = 0)
{
    std::string standard = {1, 0, 9, 0, 0, 3};
    const std::string records("\x03\0\0\0\0\0", 6); // the end record alone
    const std::size_t words = (18 + records.size()) / 2;
    standard += {char(words & 0xFF), char(words >> 8), 0, 0, 0, 0, 3, 0, 0, 0, 0, 0};
    std::string placeable("\xD7\xCD\xC6\x9A\0\0\0\0\0\0", 10);
    placeable += {char(2000 & 0xFF), char(2000 >> 8), char(1000 & 0xFF), char(1000 >> 8)}; // right, bottom
    placeable += {char(1000 & 0xFF), char(1000 >> 8), 0, 0, 0, 0, 0, 0}; // per inch, checksum
    std::string whole = placeable + standard + records;
    whole.resize(whole.size() - shortBy);
    return whole;
}

const char *const svg = "<?xml version=\"1.0\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"2in\" "
                        "height=\"1in\"><rect width=\"10\" height=\"10\"/></svg>";

// Records what it was asked to draw and answers with a PNG signature.
struct Painter {
    std::shared_ptr<std::vector<std::string>> calls = std::make_shared<std::vector<std::string>>();
    std::string operator()(const std::string &markup, int width, int height) const
    {
        calls->push_back(markup.substr(0, 5) + " " + std::to_string(width) + "x" + std::to_string(height));
        static constexpr char header[] = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x01\x2c\0\0\0\x96\x08\x02\0\0\0";
        return std::string(header, sizeof header - 1); // the literal holds zero bytes
    }
};

INSTANTIATE_TEST_SUITE_P(
    Pictures, RtfOutput,
    testing::Values(
        Expect{"SVG drawn as PNG at the frame's size",
               [] { return picture(svg, Painter{}); },
               {"{\\pict\\pngblip\\picw300\\pich150\\picwgoal2880\\pichgoal1440\n89504e47"}},
        Expect{"a metafile without its placeable header, its extent in hundredths of a millimetre",
               [] { return picture(metafile()); },
               {"{\\pict\\wmetafile8\\picw5080\\pich2540\\picwgoal2880\\pichgoal1440\n010009000003"}},
        Expect{"a metafile a byte short of its header is padded to its length",
               [] { return picture(metafile(1)); },
               {"\\wmetafile8", "0100090000030c0000000000030000000000030000000000}"}}));

TEST(RtfWriter, LeavesOutWhatItCannotDraw)
{
    // No painter for an SVG, a painter that fails, and bytes that are no picture.
    const std::string failing = picture(svg, [](const std::string &, int, int) { return std::string(); });
    for (const std::string &rtf : {picture(svg), failing, picture("not a picture at all")})
        EXPECT_EQ(rtf.find("\\pict"), std::string::npos) << rtf;
}

TEST(RtfWriter, DrawsEachSvgPictureOnce)
{
    Painter painter;
    picture(svg, painter);
    ASSERT_EQ(painter.calls->size(), 1u);
    EXPECT_EQ(painter.calls->front(), "<?xml 300x150");
}

TEST(RtfWriter, WritesColumnsAsContinuousSectionsOfThePage)
{
    const RVNGPropertyList page =
        with({{"fo:page-width", 8.5}, {"style:num-format", "i"}, {"style:page-number", 5}});
    const std::string rtf = document(
        [](RtfWriter &out) {
            paragraph(out, "one column");
            out.openSection(twoColumns());
            paragraph(out, "two columns");
            out.closeSection();
            paragraph(out, "one again");
            out.openSection(twoColumns());
            out.closeSection();
        },
        page);
    const std::size_t first = at(rtf, "\\sectd\\sbkpage\\pgwsxn12240\\pgnlcrm\\pgnstarts5\\pgnrestart\n");
    const std::size_t columns =
        at(rtf, "\\sect\n\\sectd\\sbknone\\pgwsxn12240\\pgnlcrm\\cols2\\colsx720\n", first);
    const std::size_t single = at(rtf, "\\sect\n\\sectd\\sbknone\\pgwsxn12240\\pgnlcrm\n", columns);
    EXPECT_LT(at(rtf, "one column", first), columns);
    EXPECT_LT(at(rtf, "two columns", columns), single);
    at(rtf, "one again", single);
    // The restart belongs to the page span alone; a section with no text makes none.
    EXPECT_EQ(rtf.find("\\pgnrestart", at(rtf, "\\pgnrestart", first) + 1), std::string::npos) << rtf;
    EXPECT_EQ(rtf.find("\\sect\n", single + 1), std::string::npos) << rtf;
    EXPECT_TRUE(fixtures::balanced(rtf));
}

TEST(RtfWriter, StartsAPageWithItsColumnsAndEndsThemBalanced)
{
    for (const bool balanced : {true, false}) {
        const std::string rtf = document([balanced](RtfWriter &out) {
            RVNGPropertyList section = twoColumns();
            section.insert("text:dont-balance-text-columns", balanced ? "false" : "true");
            out.openSection(section);
            paragraph(out, "text");
            out.closeSection();
        });
        const std::size_t text = at(rtf, "\\sectd\\sbkpage\\pgndec\\cols2\\colsx720\n");
        // Readers share text evenly among columns only before a section break.
        if (balanced)
            EXPECT_TRUE(
                rtf.ends_with("text\\par\n\\sect\n\\sectd\\sbknone\\pgndec\n{\\ftnsep\\chftnsep}\n\n}\n"))
                << rtf;
        else
            EXPECT_EQ(rtf.find("\\sect\n", text), std::string::npos) << rtf;
    }
}

// What the ODT reader finds of sections and page numbering reaches the RTF.
TEST(RtfWriter, CarriesSectionsAndPageNumbersReadFromOdt)
{
    const Odt odt{
        .automaticStyles =
            R"(<style:style style:name="Cols" style:family="section"><style:section-properties>
        <style:columns fo:column-count="3"><style:column style:rel-width="1*" fo:start-indent="0in"
        fo:end-indent="0.1in"/><style:column style:rel-width="1*" fo:start-indent="0.1in" fo:end-indent="0.1in"/>
        <style:column style:rel-width="1*" fo:start-indent="0.1in" fo:end-indent="0in"/></style:columns>
        </style:section-properties></style:style>
        <style:style style:name="Even" style:family="section"><style:section-properties>
        <style:columns fo:column-count="2" fo:column-gap="0.3in"/></style:section-properties></style:style>
        <style:style style:name="Restart" style:family="paragraph" style:master-page-name="Roman">
        <style:paragraph-properties style:page-number="3"/></style:style>
        <style:page-layout style:name="RomanLayout"><style:page-layout-properties fo:page-width="8.5in"
        style:num-format="I"/></style:page-layout>)",
        .masterStyles = R"(<style:master-page style:name="Standard"/>
        <style:master-page style:name="Roman" style:page-layout-name="RomanLayout"/>)",
        .body =
            R"(<text:p>before</text:p><text:section text:name="S" text:style-name="Cols"><text:p>in three</text:p>
        </text:section><text:section text:name="T" text:style-name="Even"><text:p>in two</text:p></text:section>
        <text:p text:style-name="Restart">page three</text:p>)"};
    RtfWriter out;
    richtext::OdtReader::read(odt.flat(), out);
    const std::string rtf = out.rtf();
    const std::size_t three = at(rtf, "\\cols3\\colsx288\n");
    EXPECT_LT(three, at(rtf, "in three"));
    const std::size_t two = at(rtf, "\\cols2\\colsx432\n", three);
    EXPECT_LT(two, at(rtf, "in two"));
    const std::size_t restart =
        at(rtf, "\\sectd\\sbkpage\\pgwsxn12240\\pgnucrm\\pgnstarts3\\pgnrestart", two);
    EXPECT_LT(restart, at(rtf, "page three"));
}

// A two-by-three pixel PNG in a 2 by 1 inch frame with these placing properties.
std::function<std::string()> placedPicture(std::vector<std::pair<const char *, const char *>> texts,
                                           double x = 0)
{
    return [texts, x] {
        RVNGPropertyList frame = with("svg:x", x);
        frame.insert("svg:y", 0.5);
        for (const auto &[name, value] : texts)
            frame.insert(name, value);
        return write([&](RtfWriter &out) { insertPicture(out, fixtures::png2x3(), frame); });
    };
}

INSTANTIATE_TEST_SUITE_P(
    PlacedPictures, RtfOutput,
    testing::Values(
        Expect{"a picture in the line",
               placedPicture({{"text:anchor-type", "as-char"}}),
               {"\\ql{\\pict\\pngblip"}},
        Expect{
            "a picture at the paragraph, text on both sides",
            placedPicture({{"text:anchor-type", "paragraph"}}, 1.0),
            {"{\\shp{\\*\\shpinst\\shpleft1440\\shptop720\\shpright4320\\shpbottom2160\\shpfhdr0\\shpbxcolumn"
             "\\shpbypara\\shpwr2\\shpwrk0\\shpz0{\\sp{\\sn shapeType}{\\sv 75}}{\\sp{\\sn "
             "dxWrapDistLeft}{\\sv 0}}",
             "{\\sp{\\sn dyWrapDistBottom}{\\sv 0}}{\\sp{\\sn pib}{\\sv {\\pict"}},
        Expect{"text kept at the frame's margins, not at a reader's eighth of an inch",
               [] {
                   RVNGPropertyList frame = with("fo:margin-left", 0.25);
                   frame.insert("fo:margin-bottom", 0.1);
                   frame.insert("text:anchor-type", "paragraph");
                   return write([&](RtfWriter &out) { insertPicture(out, fixtures::png2x3(), frame); });
               },
               {"{\\sp{\\sn dxWrapDistLeft}{\\sv 228600}}{\\sp{\\sn dxWrapDistRight}{\\sv 0}}",
                "{\\sp{\\sn dyWrapDistBottom}{\\sv 91440}}"}},
        Expect{"counted from the right margin, which RTF counts from the page's edge",
               placedPicture({{"text:anchor-type", "char"},
                              {"style:horizontal-rel", "page-end-margin"},
                              {"style:vertical-rel", "page"}},
                             -3.0),
               {"\\shpleft6480\\shptop720\\shpright9360\\shpbottom2160\\shpfhdr0\\shpbxpage\\shpbypage"}},
        Expect{"below the top margin, counted from the page's edge",
               placedPicture({{"text:anchor-type", "char"},
                              {"style:horizontal-rel", "page"},
                              {"style:vertical-rel", "page-content"}},
                             1.0),
               {"\\shpleft1440\\shptop2160\\shpright4320\\shpbottom3600\\shpfhdr0\\shpbxpage\\shpbypage"}},
        Expect{"centred on the page's text, text above and below",
               placedPicture({{"text:anchor-type", "paragraph"},
                              {"style:horizontal-rel", "page-content"},
                              {"style:horizontal-pos", "center"},
                              {"style:vertical-rel", "page-content"},
                              {"style:vertical-pos", "middle"},
                              {"style:wrap", "none"}}),
               {"\\shpleft3240\\shptop7200", "\\shpbxmargin\\shpbypage\\shpwr1\\shpz0",
                "{\\sp{\\sn posh}{\\sv 2}}{\\sp{\\sn pib}"}},
        Expect{"text wanted on its left, where the column leaves too little room, goes above and below",
               placedPicture({{"text:anchor-type", "paragraph"},
                              {"style:horizontal-rel", "page-content"},
                              {"style:wrap", "left"}},
                             0.5),
               {"\\shpbxmargin\\shpbypara\\shpwr1\\shpz0"}},
        Expect{"beside the text column it keeps no text away",
               placedPicture({{"text:anchor-type", "paragraph"},
                              {"style:horizontal-rel", "page-content"},
                              {"style:wrap", "none"}},
                             7.0),
               {"\\shpbxmargin\\shpbypara\\shpwr3\\shpfblwtxt0"}}));

TEST(RtfWriter, EndsAListLabelWhereItsWidthEndsWhenTheParagraphMovesIt)
{
    const auto item = [](std::optional<double> margin, double indent = 2.0) {
        return write([margin, indent](RtfWriter &out) {
            out.closeParagraph();
            out.openOrderedListLevel(with({{"style:num-format", "i"}, {"text:min-label-width", 2.5}}));
            RVNGPropertyList paragraph;
            if (margin) {
                paragraph.insert("fo:margin-left", *margin);
                paragraph.insert("fo:text-indent", indent);
            }
            out.openListElement(paragraph);
            out.insertText("item");
            out.closeListElement();
            out.closeOrderedListLevel();
        });
    };
    // The label starts at -1 + 2 inches and is 2.5 inches wide; the text
    // keeps to where it ends.
    EXPECT_NE(item(-1.0).find("\\ls1\\ilvl0\\ql\\li5040\\fi-3600"), std::string::npos) << item(-1.0);
    // A label that starts half an inch out ends at 2.5 inches, before the text's 3.
    EXPECT_NE(item(0.5, -0.5).find("\\ls1\\ilvl0\\tx3600\\ql\\li4320\\fi-4320"), std::string::npos)
        << item(0.5, -0.5);
    EXPECT_EQ(item(std::nullopt).find("\\tx"), std::string::npos) << "the level's own hanging indent serves";
}

TEST(RtfWriter, FillsTheMarginsWithATableAlignedToThemAndPadsItsCells)
{
    const auto table = [](const char *align) {
        const RVNGPropertyList page =
            with({{"fo:page-width", 8.5}, {"fo:margin-left", 1.0}, {"fo:margin-right", 1.5}});
        return document(
            [align](RtfWriter &out) {
                RVNGPropertyList properties = with("table:align", align);
                librevenge::RVNGPropertyListVector columns;
                for (const double width : {1.0, 2.0})
                    columns.append(with("style:column-width", width));
                properties.insert("librevenge:table-columns", columns);
                out.openTable(properties);
                out.openTableRow({});
                for (int cell = 0; cell < 2; ++cell) {
                    out.openTableCell(with({{"fo:padding-top", 0.05}, {"fo:padding-left", 0.1}}));
                    out.closeTableCell();
                }
                out.closeTableRow();
                out.closeTable();
            },
            page);
    };
    // Six inches between the margins, shared as the columns' widths are.
    const std::string margins = table("margins"), left = table("left");
    at(margins, "\\cellx2880");
    at(margins, "\\cellx8640");
    at(left, "\\cellx4320");
    // The top padding in \clpadl, the left in \clpadt: Word and LibreOffice read them so.
    at(left, "\\clpadfl3\\clpadl72\\clpadft3\\clpadt144\\cellx1440");
}

TEST(RtfWriter, KeepsASectionWithoutHeadersFromShowingThoseBeforeIt)
{
    RtfWriter out;
    out.startDocument({});
    for (const bool withHeader : {true, false, false}) {
        out.openPageSpan({});
        if (withHeader) {
            out.openHeader(with("librevenge:occurrence", "odd"));
            paragraph(out, "head");
            out.closeHeader();
            out.openFooter(with("librevenge:occurrence", "all"));
            paragraph(out, "foot");
            out.closeFooter();
        }
        paragraph(out, withHeader ? "first" : "bare");
        out.closePageSpan();
    }
    out.endDocument();
    const std::string rtf = out.rtf();
    const std::size_t second = at(rtf, "\\sect\n\\sectd");
    const std::size_t third = at(rtf, "\\sect\n\\sectd", second + 1);
    EXPECT_LT(second, at(rtf,
                         "{\\headerr\\pard\\plain\\fs2\\sl-20\\slmult0}\n"
                         "{\\footer\\pard\\plain\\fs2\\sl-20\\slmult0}\n",
                         second));
    EXPECT_LT(at(rtf, "{\\footer\\pard", second), third);
    EXPECT_LT(at(rtf, "\\headery720\\footery720", second), third) << "halfway into the margins";
    EXPECT_EQ(rtf.find("{\\header", third), std::string::npos) << "the bare section before serves";
}

TEST(RtfWriter, EndsAnEmptyParagraphBeforeColumnsWithItsOwnPar)
{
    for (const bool empty : {true, false}) {
        const std::string rtf = document([empty](RtfWriter &out) {
            paragraph(out, "before");
            out.openParagraph({});
            out.openSpan({});
            if (!empty)
                out.insertText("text");
            out.closeSpan();
            out.closeParagraph();
            out.openSection(twoColumns());
            paragraph(out, "in columns");
            out.closeSection();
        });
        // LibreOffice drops an empty paragraph that \sect alone ends.
        at(rtf, empty ? "{}\\par\n\\sect\n" : "{text}\\sect\n");
    }
}

// LibreOffice grows a row to hold a frame anchored in its cell; where the
// cell's top is known (the first row of a table that opens the page), the
// frame goes against the page instead.
TEST(RtfWriter, PlacesAFrameInACellAtThePageTopAgainstThePage)
{
    enum class Before { nothing, paragraph, header };
    const struct {
        Before before;
        const char *expected;
    } cases[] = {
        {Before::nothing, "\\shptop1512\\shpright2880\\shpbottom2952\\shpfhdr0\\shpbxpage\\shpbypage"},
        {Before::paragraph, "\\shptop0\\shpright2880\\shpbottom1440\\shpfhdr0\\shpbxpage\\shpbypara"},
        {Before::header, "\\shpbxpage\\shpbypara"},
    };
    const RVNGPropertyList frame =
        with({{"text:anchor-type", "paragraph"}, {"style:horizontal-rel", "page"}});
    for (const auto &c : cases) {
        const std::string rtf = document(
            [&](RtfWriter &out) {
                if (c.before == Before::header) {
                    out.openHeader({});
                    paragraph(out, "head");
                    out.closeHeader();
                }
                if (c.before == Before::paragraph)
                    paragraph(out, "before");
                out.openTable({});
                for (int row = 0; row < 2; ++row) {
                    out.openTableRow({});
                    out.openTableCell(with("fo:padding", 0.05));
                    out.openParagraph({});
                    insertPicture(out, fixtures::png2x3(), frame, "image/png");
                    out.closeParagraph();
                    out.closeTableCell();
                    out.closeTableRow();
                }
                out.closeTable();
            },
            with("fo:margin-top", 1.0));
        EXPECT_NE(rtf.find("\\shpbypara", at(rtf, c.expected) + 1), std::string::npos)
            << "the second row's top is not known";
    }
}

TEST(RtfWriter, SaysWhatItCouldNotCarry)
{
    namespace loss = richtext::loss;
    const struct {
        const char *why;
        Script script;
        std::vector<std::string> kinds;
    } cases[] = {
        {"plain text", [](RtfWriter &out) { out.insertText("x"); }, {}},
        {"a comment",
         [](RtfWriter &out) {
             out.openComment({});
             paragraph(out, "note");
             out.closeComment();
         },
         {std::string(loss::comments)}},
        {"an equation", [](RtfWriter &out) { out.insertEquation({}); }, {std::string(loss::equations)}},
        {"a picture in no format RTF holds, twice",
         [](RtfWriter &out) {
             const RVNGPropertyList object = with("office:binary-data", "R0lGODlhAQABAAAAACw=");
             out.insertBinaryObject(object);
             out.insertBinaryObject(object);
         },
         {std::string(loss::rtfPictureFormats)}},
        {"a table inside a table",
         [](RtfWriter &out) {
             out.closeParagraph();
             out.openTable({});
             out.openTableRow({});
             out.openTableCell({});
             oneCellTable(out, "inner");
             out.closeTableCell();
             out.closeTableRow();
             out.closeTable();
             out.openParagraph({});
         },
         {std::string(loss::nestedTables)}},
    };
    for (const auto &c : cases) {
        RtfWriter writer;
        run(writer, [&](RtfWriter &out) {
            out.openParagraph({});
            c.script(out);
            out.closeParagraph();
        });
        EXPECT_EQ(writer.losses().kinds(), c.kinds) << c.why;
    }
}

TEST(RtfWriter, PlacesFramesInTheTextAreaLeftByTheHeaderAndFooter)
{
    const struct {
        const char *position;
        const char *words; // a 2 by 1 inch frame, the header 0.5 inch high, the footer 0.25
    } cases[] = {
        {"from-top", "\\shptop2880\\shpright4320\\shpbottom4320"}, // half an inch below the header
        {"bottom", "\\shptop12600\\shpright2880\\shpbottom14040"}, // on the footer's room
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.position);
        at(document([&](RtfWriter &out) {
               for (const bool footer : {false, true}) {
                   const RVNGPropertyList room = with("fo:min-height", footer ? 0.25 : 0.5);
                   footer ? out.openFooter(room) : out.openHeader(room);
                   paragraph(out, "running");
                   footer ? out.closeFooter() : out.closeHeader();
               }
               out.openParagraph({});
               const RVNGPropertyList frame =
                   with({{"svg:y", 0.5},
                         {"text:anchor-type", "char"},
                         {"style:vertical-rel", "page-content"},
                         {"style:vertical-pos", c.position},
                         {"svg:x", std::string(c.position) == "bottom" ? 0.0 : 1.0}});
               insertPicture(out, fixtures::png2x3(), frame);
               out.closeParagraph();
           }),
           c.words);
    }
}

// Without a height of its own a header stands half a centimetre (283 twips) below the margin, and
// an empty one takes no room; one that would end without a paragraph ends with a hairline.
TEST(RtfWriter, GivesAHeaderTheRoomItAsksForAndEndsItWithAParagraph)
{
    enum class Holds { text, table, nothing, emptyParagraph };
    const struct {
        const char *occurrence; // nullptr: none stated
        double minHeight;       // 0: none stated
        Holds holds;
        const char *group;
        const char *margins;
    } cases[] = {
        {nullptr, 0, Holds::text, "{\\header\\pard\\plain\\ql head}", "\\headery1440\\margtsxn1723\n"},
        {nullptr, 0, Holds::table, "\\row\n\\pard\\plain\\fs2\\sl-20\\slmult0}",
         "\\headery1440\\margtsxn1723\n"},
        {nullptr, 0, Holds::nothing, "{\\header\\pard\\plain\\fs2\\sl-20\\slmult0}",
         "\\margtsxn1723\\headery1383\\margtsxn1440\n"},
        // The odd pages keep their margin, a reader's least header standing a millimetre into it.
        {"even", 0, Holds::text, "\\ql head}", "\\headery1383\\margtsxn1440\n"},
        {"all", 0.5, Holds::text, "\\ql head}", "\\headery1440\\margtsxn2160\n"},
        {"odd", 0.25, Holds::text, "\\ql head}", "\\headery1440\\margtsxn1800\n"},
        // An odd pages' header of an empty paragraph only switches ODF's even pages' header on.
        {"odd", 0, Holds::emptyParagraph, "{\\headerr\\pard\\plain\\fs2\\sl-20\\slmult0}",
         "\\headery1383\\margtsxn1440\n"},
        {"all", 0, Holds::emptyParagraph, "{\\header\\pard\\plain\\ql}", "\\headery1440\\margtsxn1723\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.occurrence ? c.occurrence : "-") + " " + std::to_string(c.minHeight) +
                     " " + c.group);
        const std::string rtf = document([&](RtfWriter &out) {
            RVNGPropertyList header;
            if (c.occurrence)
                header.insert("librevenge:occurrence", c.occurrence);
            if (c.minHeight > 0)
                header.insert("fo:min-height", c.minHeight, librevenge::RVNG_INCH);
            out.openHeader(header);
            if (c.holds == Holds::text)
                paragraph(out, "head");
            if (c.holds == Holds::table)
                oneCellTable(out, "cell");
            if (c.holds == Holds::emptyParagraph) {
                out.openParagraph({});
                out.closeParagraph();
            }
            out.closeHeader();
            paragraph(out, "body");
        });
        EXPECT_TRUE(fixtures::balanced(rtf)) << rtf;
        at(rtf, c.group);
        at(rtf, c.margins);
        EXPECT_EQ(rtf.find("\\fs2", rtf.find("body")), std::string::npos) << "the body has none";
    }
    // A margin of 1417.3 twips and the half centimetre are rounded each, as LibreOffice rounds
    // the ODT's: 1417 + 283, where the sum, 1700.8, would take a twip from the page's text.
    const std::string rtf = document(
        [](RtfWriter &out) {
            out.openHeader({});
            paragraph(out, "head");
            out.closeHeader();
            paragraph(out, "body");
        },
        with("fo:margin-top", 1417.3 / 1440));
    at(rtf, "\\headery1417\\margtsxn1700\n");
}

} // namespace
