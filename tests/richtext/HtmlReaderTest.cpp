#include "Fixtures.h"

#include "richtext/ReadError.h"

#include <gtest/gtest.h>

using namespace fixtures;
using richtext::Inline;

namespace {

std::string page(const std::string &body, const std::string &style = "")
{
    return "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>T</title><style>" + style +
           "</style></head><body>" + body + "</body></html>";
}

struct Styled {
    const char *why;
    std::string html;
    std::string style; // the style sheet
    std::string property;
    std::string expected; // of the text piece "x"
};

void PrintTo(const Styled &c, std::ostream *out)
{
    *out << c.why;
}

class HtmlFormatting : public testing::TestWithParam<Styled> {};

TEST_P(HtmlFormatting, GivesTheProperty)
{
    const richtext::Document document = readHtml(page(GetParam().html, GetParam().style));
    const Inline *piece = pieceWith(document, "x");
    ASSERT_TRUE(piece) << "no text piece x";
    EXPECT_EQ(property(piece->style, GetParam().property), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    HtmlReader, HtmlFormatting,
    testing::Values(
        Styled{"<b>", "<p><b>x</b></p>", "", "fo:font-weight", "bold"},
        Styled{"<strong> inside <i>", "<p><i><strong>x</strong></i></p>", "", "fo:font-style", "italic"},
        Styled{"<u>", "<p><u>x</u></p>", "", "style:text-underline-style", "solid"},
        Styled{"<strike>", "<p><strike>x</strike></p>", "", "style:text-line-through-style", "solid"},
        Styled{"<sup>", "<p>a<sup>x</sup></p>", "", "style:text-position", "super 58%"},
        Styled{"<sub>", "<p>a<sub>x</sub></p>", "", "style:text-position", "sub 58%"},
        Styled{"<font face>", "<p><font face=\"Arial, sans-serif\">x</font></p>", "", "style:font-name",
               "Arial"},
        Styled{"<font size>", "<p><font size=\"5\">x</font></p>", "", "fo:font-size", "18.0000pt"},
        Styled{"<font size=-1>", "<p><font size=\"-1\">x</font></p>", "", "fo:font-size", "10.0000pt"},
        Styled{"<font color>", "<p><font color=\"red\">x</font></p>", "", "fo:color", "#ff0000"},
        Styled{"inline CSS", "<p><span style=\"font-weight: 700; color: rgb(0, 128, 255)\">x</span></p>", "",
               "fo:color", "#0080ff"},
        Styled{"inline CSS size in px", "<p><span style=\"font-size:16px\">x</span></p>", "", "fo:font-size",
               "12.0000pt"},
        Styled{"a relative size", "<p style=\"font-size:20pt\"><span style=\"font-size:50%\">x</span></p>",
               "", "fo:font-size", "10.0000pt"},
        Styled{"a class rule", "<p><span class=\"loud\">x</span></p>", ".loud { text-decoration: underline }",
               "style:text-underline-type", "single"},
        Styled{"a type.class rule beats a class rule", "<p><span class=\"c\">x</span></p>",
               "span.c { font-style: normal } .c { font-style: italic }", "fo:font-style", "normal"},
        Styled{"inline CSS beats the sheet", "<p><span class=\"c\" style=\"color:#00ff00\">x</span></p>",
               ".c { color: blue }", "fo:color", "#00ff00"},
        Styled{"text-decoration: none undoes <u>",
               "<p><u><span style=\"text-decoration:none\">x</span></u></p>", "",
               "style:text-underline-style", "none"},
        Styled{"a raised relative run is superscript", "<p><span class=\"s\">x</span></p>",
               ".s { font-size: 12pt; vertical-align: baseline; position: relative; top: -0.33em; "
               "font-size:0.58em; }",
               "style:text-position", "super 58%"},
        Styled{"a raised run keeps its size", "<p><span class=\"s\">x</span></p>",
               ".s { font-size: 12pt; position: relative; top: -0.33em; font-size:0.58em; }", "fo:font-size",
               "12.0000pt"},
        Styled{"headings are bold", "<h2>x</h2>", "", "fo:font-weight", "bold"},
        Styled{"complex selectors are not applied", "<p><span>x</span></p>", "p span { font-weight: bold }",
               "fo:font-weight", ""}));

TEST(HtmlReader, ReadsParagraphPropertiesFromCss)
{
    const richtext::Document document = readHtml(
        page("<p class=\"para0\">centred</p><p style=\"margin: 0.1in 0in 0in 0.5in; text-indent: -0.25in; "
             "line-height:150%\">indented</p><div align=\"right\">right</div>",
             ".para0 { text-align:center; }"));
    const auto paragraphs = document.paragraphs();
    ASSERT_EQ(paragraphs.size(), 3u);
    EXPECT_EQ(property(paragraphs[0]->properties, "fo:text-align"), "center");
    EXPECT_EQ(property(paragraphs[1]->properties, "fo:margin-left"), "0.5000in");
    EXPECT_EQ(property(paragraphs[1]->properties, "fo:margin-top"), "0.1000in");
    EXPECT_EQ(property(paragraphs[1]->properties, "fo:text-indent"), "-0.2500in");
    EXPECT_EQ(property(paragraphs[1]->properties, "fo:line-height"), "150.0000%");
    EXPECT_EQ(property(paragraphs[2]->properties, "fo:text-align"), "right");
}

TEST(HtmlReader, CollapsesWhitespaceLikeABrowser)
{
    const richtext::Document document = readHtml(page("\n  <p>  two   words\n and <b>bold</b> end  </p>\n "
                                                      "text outside <br>after break<pre>a  b\n\tc</pre>"));
    EXPECT_EQ(texts(document),
              (std::vector<std::string>{"two words and bold end", "text outside\nafter break", "a  b\n\tc"}));
}

// Pages made for a symbol font hold its codes as plain or private-use characters; other fonts' are
// left alone.
TEST(HtmlReader, ReadsTheCodesOfSymbolFontsAsWhatTheyShow)
{
    const richtext::Document document =
        readHtml(page("<p>a<font face=\"Symbol\">a\uF0E5</font> <span style=\"font-family:'Wingdings'\">"
                      "\u00A7\uF0FC</span> <font face=\"Arial\">a\uF0E5</font></p>"));
    EXPECT_EQ(texts(document), std::vector<std::string>{"a\u03B1\u2211 \u25AA\u2713 a\uF0E5"});
}

TEST(HtmlReader, ReadsListsWithTheirLabels)
{
    const richtext::Document document = readHtml(page(
        "<ol type=\"A\" start=\"3\"><li>one<ul><li>inner</li></ul></li><li><p>two</p><p>more</p></li></ol>"
        "<ol style=\"list-style-type: lower-roman\"><li>roman</li></ol>"));
    std::vector<std::tuple<std::string, int, std::string>> seen;
    for (const richtext::Paragraph *paragraph : document.paragraphs())
        seen.emplace_back(paragraph->text(), paragraph->listLevel, paragraph->label);
    const std::vector<std::tuple<std::string, int, std::string>> expected = {
        {"one", 1, "C."}, {"inner", 2, "\xE2\x97\xA6"}, {"two", 1, "D."}, {"more", 0, ""}, {"roman", 1, "i."},
    };
    EXPECT_EQ(seen, expected);
}

TEST(HtmlReader, ReadsTablesIntoAGrid)
{
    const richtext::Document document =
        readHtml(page("<table><thead><tr><th colspan=\"2\">head</th><td rowspan=\"2\" "
                      "style=\"width:2in\">tall</td></tr></thead>"
                      "<tbody><tr><td width=\"96\">a</td><td "
                      "bgcolor=\"#00ff00\">b<table><tr><td>inner</td></tr></table></td></tr>"
                      "<tr><td>c</td></tr></tbody></table>"));
    const auto tables = document.tables();
    ASSERT_EQ(tables.size(), 2u);
    const richtext::Table &table = *tables[0];
    ASSERT_EQ(table.rows.size(), 3u);
    EXPECT_EQ(table.columnCount(), 3);
    EXPECT_EQ(table.columnWidths, (std::vector<double>{1, 0, 2}));
    EXPECT_EQ(property(table.rows[0].properties, "librevenge:is-header-row"), "true");
    EXPECT_EQ(table.rows[0].cells[0].columnSpan, 2);
    EXPECT_TRUE(table.rows[0].cells[1].covered);
    EXPECT_EQ(table.rows[0].cells[2].rowSpan, 2);
    ASSERT_EQ(table.rows[1].cells.size(), 3u);
    EXPECT_TRUE(table.rows[1].cells[2].covered);
    EXPECT_EQ(property(table.rows[1].cells[1].properties, "fo:background-color"), "#00ff00");
    EXPECT_EQ(table.rows[2].cells.size(), 1u) << "a short row stays short";
    EXPECT_EQ(texts(document), (std::vector<std::string>{"head", "tall", "a", "b", "inner", "c"}));
    const Inline *head = pieceWith(document, "head");
    EXPECT_EQ(property(head->style, "fo:font-weight"), "bold") << "<th> is bold";
}

TEST(HtmlReader, PutsWpd2htmlNotesBackInPlace)
{
    // How librevenge's HTML generator lays out a footnote and an endnote.
    const std::string html = page(
        "<p class=\"para0\"><span class=\"span0\">Text</span>\n<sup id=\"calledF1\"><a "
        "href=\"#dataF1\">F1</a></sup>"
        "<span class=\"span0\"> and</span>\n<sup id=\"calledE1\"><a href=\"#dataE1\">E1</a></sup></p>\n"
        "<hr>\n<p class=\"para0\"><sup id=\"dataF1\"><a href=\"#calledF1\">F1</a></sup><span class=\"span0\">"
        "The note.</span>\n</p>\n<hr>\n<p class=\"para0\"><sup id=\"dataE1\"><a "
        "href=\"#calledE1\">E1</a></sup>"
        "<span class=\"span0\">The end&nbsp;note.\tTabbed\xC2\xA0hard</span>\n</p>\n",
        ".para0 {\n text-align:left;\n}\n.span0 {\n font-size: 12.0000pt;\n}\n");
    const richtext::Document document = readHtml(html);
    EXPECT_EQ(texts(document), (std::vector<std::string>{"Text and"}))
        << "no labels, no note text, no extra spaces";
    const auto footnotes = document.notes(Inline::Kind::footnote);
    ASSERT_EQ(footnotes.size(), 1u);
    EXPECT_EQ(footnotes[0]->content->at(0).paragraph()->text(), "The note.");
    const auto endnotes = document.notes(Inline::Kind::endnote);
    ASSERT_EQ(endnotes.size(), 1u);
    EXPECT_EQ(endnotes[0]->content->at(0).paragraph()->text(), "The end note.\tTabbed\xC2\xA0hard")
        << "librevenge's &nbsp; is an explicit space, its tab a tab; a no-break space of the text stays";
}

TEST(HtmlReader, KeepsOrdinaryNoBreakSpacesAndLinks)
{
    const richtext::Document document = readHtml(page(
        "<p>a&nbsp;b <a href=\"https://example.org/x?a=1&amp;b=2\">link</a> <a name=\"n\">anchor</a></p>"));
    EXPECT_EQ(texts(document), (std::vector<std::string>{"a\xC2\xA0"
                                                         "b link anchor"}));
    const Inline *link = pieceWith(document, "link");
    ASSERT_TRUE(link);
    EXPECT_EQ(link->link, "https://example.org/x?a=1&b=2");
    EXPECT_EQ(pieceWith(document, "anchor")->link, "");
}

TEST(HtmlReader, TakesOnlyPicturesCarriedInside)
{
    // A 1x1 PNG, as a data URI; the second picture would have to be fetched.
    const richtext::Document document = readHtml(
        page("<p><img width=\"96\" height=\"48\" "
             "src=\"data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJ"
             "AAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==\"><img src=\"http://127.0.0.1:9/x.png\">"
             "<script>document.write('no')</script><style>p{}</style>seen</p>"));
    const auto &content = document.paragraphs().at(0)->content;
    int images = 0;
    for (const Inline &piece : content)
        if (piece.kind == Inline::Kind::image) {
            ++images;
            EXPECT_EQ(piece.data.substr(1, 3), "PNG");
            EXPECT_EQ(property(piece.object, "svg:width"), "1.0000in");
        }
    EXPECT_EQ(images, 1);
    EXPECT_EQ(texts(document), (std::vector<std::string>{"seen"}));
}

struct Broken {
    const char *why;
    std::string html;
    std::vector<std::string> text;
};

void PrintTo(const Broken &c, std::ostream *out)
{
    *out << c.why;
}

class HtmlBadInput : public testing::TestWithParam<Broken> {};

TEST_P(HtmlBadInput, IsReadAsABrowserWould)
{
    richtext::Document document;
    ASSERT_NO_THROW(document = readHtml(GetParam().html));
    EXPECT_EQ(texts(document), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    HtmlReader, HtmlBadInput,
    testing::Values(
        Broken{"unclosed elements", "<p>one<p>two<b>bold<i>both", {"one", "twoboldboth"}},
        Broken{"stray closing tags", "</div></span><p>text</p></table>", {"text"}},
        Broken{"no html, head or body", "just text", {"just text"}},
        Broken{"unknown elements", "<p>a <blink>b</blink> <x-y>c</x-y></p>", {"a b c"}},
        Broken{"not UTF-8: read as Windows-1252",
               "<p>caf\xE9 \x93quoted\x94</p>",
               {"caf\xC3\xA9 \xE2\x80\x9Cquoted\xE2\x80\x9D"}},
        Broken{"a hostile colspan",
               "<table><tr><td colspan=\"2000000000\" rowspan=\"99999\">x</td></tr></table>",
               {"x"}},
        Broken{"a cell outside a table", "<td>cell</td>", {"cell"}},

        Broken{"hidden content", "<p>shown<span style=\"display:none\">hidden</span></p>", {"shown"}},
        Broken{"nesting too deep to follow is cut off",
               [] {
                   std::string deep = "<p>shallow</p>";
                   for (int i = 0; i < 5000; ++i)
                       deep += "<div>";
                   return deep + "deep";
               }(),
               {"shallow"}}));

TEST(HtmlBadInput, DeclaredEntitiesAreNeverExpanded)
{
    // Neither a file of this machine nor a billion laughs gets into the document.
    const std::string passwd = "<!DOCTYPE html [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><p>a&x;b</p>";
    const std::string laughs = "<!DOCTYPE html [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;"
                               "&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]><p>&c;</p>";
    for (const std::string &html : {passwd, laughs}) {
        std::string all;
        ASSERT_NO_THROW(for (const std::string &text : texts(readHtml(html))) all += text);
        EXPECT_EQ(all.find("root:"), std::string::npos);
        EXPECT_EQ(all.find("aaaaaaaaaaaaaaaaaaaa"), std::string::npos);
        EXPECT_LT(all.size(), 200u);
    }
}

TEST(HtmlBadInput, NothingToReadIsAnError)
{
    for (const std::string &empty : {std::string(), std::string(" \n\t ")}) {
        try {
            readHtml(empty);
            ADD_FAILURE() << "read an empty document";
        } catch (const richtext::ReadError &error) {
            EXPECT_NE(std::string(error.what()).find("empty"), std::string::npos);
        }
    }
}

} // namespace
