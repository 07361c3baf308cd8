#include "tools/PandocRtf.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string fonts =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Times;}{\\f1\\fcharset238 Times CE;}"
    "{\\f2\\fcharset2 Symbol;}{\\f3\\fcharset128 MS Gothic;}{\\f4\\fcharset177 David;}"
    "{\\f5\\fcharset0\\cpg1251 Cyr;}}";

std::string body(const std::string &text)
{
    return fonts + text + "}";
}

} // namespace

TEST(PandocRtf, EightBitTextBecomesTheCharacterItsCodePageMeans)
{
    struct Row {
        const char *text;
        const char *expected; // what the body becomes
    };
    const Row rows[] = {
        {"\\'c8", "\\u200 ?"},                                // the document's Windows-1252: È
        {"\\f1 \\'c8l\\'e1nek", "\\f1 \\u268 ?l\\u225 ?nek"}, // Czech font: Článek
        {"{\\f1 \\'c8}\\'c8", "{\\f1 \\u268 ?}\\u200 ?"},     // the font ends with its group
        {"\\f4 \\'e8", "\\f4 \\u1496 ?"}, // Hebrew (iconv holds the letter back for a point)
        {"\\f5 \\'c0", "\\f5 \\u1040 ?"}, // \cpg wins over the character set
        {"\\f3 \\'82\\'a0\\'83A", "\\f3 \\u12354 ?\\u12450 ?"}, // Shift-JIS pairs, the trail escaped or not
        {"\\f1\\plain \\'c8", "\\f1\\plain \\u200 ?"},          // \plain goes back to the default font
        {"\\uc0\\f1 \\'c8", "\\uc0\\f1 \\u268 "},               // no fallback wanted
        {"\\uc2\\f1 \\'c8", "\\uc2\\f1 \\u268 ??"},
        {"\\f1 \xc8", "\\f1 \\u268 ?"}, // a raw byte is text too
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(PandocRtf::prepared(body(row.text)), body(row.expected));
    }
}

TEST(PandocRtf, BytesThatAreNotTextStayAsTheyAre)
{
    const char *const unchanged[] = {
        "\\u268\\'c8 and \\u269 \\'e8",                                  // fallbacks after \uN
        "\\uc2\\u268\\'c8\\'c8",                                         // two of them
        "\\f2 \\'b7",                                                    // a Symbol-font glyph number
        "{\\listlevel{\\leveltext \\'02\\'00.;}{\\levelnumbers\\'01;}}", // list-level numbers
        "{\\pict\\pngblip \\'89}",
        "\\bin3 \xc8\xc9\xca", // binary data
        "\\'zz \\'8",          // broken escapes
        "\\f3 \\'82",          // a lead byte with no trail
        "\\f1 \\'81",          // no character in Windows-1250
    };
    for (const char *text : unchanged) {
        SCOPED_TRACE(text);
        EXPECT_EQ(PandocRtf::prepared(body(text)), body(text));
    }
    EXPECT_EQ(PandocRtf::prepared(
                  body("{\\stylesheet{\\*\\cs16 Aufz\\'e4hlung;}{\\s1 Caf\\u233 ?\xe9\\'3f\\'41\\'3b;}}x")),
              body("{\\stylesheet{\\*\\cs16 Aufz?hlung;}{\\s1 Caf???A?;}}x"))
        << "style names are spelled in ASCII";
    EXPECT_EQ(PandocRtf::prepared("plain \xc8 text"), "plain \xc8 text") << "not RTF";
    EXPECT_EQ(PandocRtf::prepared("{\\rtf1\\ansi\\ansicpg1251 \\'c0"), "{\\rtf1\\ansi\\ansicpg1251 \\u1040 ?")
        << "an unfinished file is rewritten as far as it goes";
}

TEST(PandocRtf, FieldsShowWhatThePageShows)
{
    struct Row {
        const char *field;
        const char *expected;
    };
    const Row rows[] = {
        // a citation, a page number: their result, as plain text
        {"{\\field{\\*\\fldinst { CITATION Kra \\\\l 1033 }}{\\fldrslt {\\b (Kramer)}}}", "{{\\b (Kramer)}}"},
        {"{\\field\\flddirty{\\*\\fldinst PAGE}{\\fldrslt 3}}", "{3}"},
        {"{\\field{\\*\\fldinst PAGE}}", "{}"},
        // a hyperlink keeps its field, with its instruction as plain text
        {"{\\field{\\*\\fldinst {\\rtlch\\fcs0 HYPERLINK \"http://a.org/\\'7ex\"}{{\\*\\datafield "
         "00d0}}}{\\fldrslt {\\ul link}}}",
         "{\\field{\\*\\fldinst {HYPERLINK \"http://a.org/~x\"}}{\\fldrslt {\\ul link}}}"},
        // fields within a result: a table of contents' links and page references
        {"{\\field{\\*\\fldinst TOC}{\\fldrslt {\\field{\\*\\fldinst PAGEREF _Toc1}{\\fldrslt 7}}}}",
         "{{7}}"},
        // contents and index entries, never shown
        {"{\\tc {Chapter One}}{\\tcn\\tcl2 x}{\\xe {entry}}", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.field);
        EXPECT_EQ(PandocRtf::prepared(body(std::string("a ") + row.field + " b")),
                  body(std::string("a ") + row.expected + " b"));
    }
    const std::string unclosed = "{\\rtf1 a {\\field{\\*\\fldinst PAGE}{\\fldrslt 3}";
    EXPECT_EQ(PandocRtf::prepared(unclosed), unclosed);

    std::string deep = "{\\rtf1 ";
    for (int i = 0; i < 50000; ++i)
        deep += "{\\field{\\*\\fldinst PAGE}{\\fldrslt ";
    deep += "innermost" + std::string(100000, '}') + "}";
    const std::string rewritten = PandocRtf::prepared(deep);
    EXPECT_EQ(rewritten.compare(0, 10, "{\\rtf1 {{{"), 0) << "the outer fields show their results";
    EXPECT_NE(rewritten.find("innermost"), std::string::npos)
        << "fields nested past any document's depth stay whole";
}
