#include "render/RTFDowngrade.h"

#include <gtest/gtest.h>

#include <unicode/ucnv.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace {

std::string escape(unsigned byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\'%02x", byte);
    return text;
}

// What ICU's own converters make of a Windows-1252 byte in Mac OS Roman: an
// oracle that shares nothing with our tables.
std::optional<unsigned> icuMacByte(unsigned windowsByte)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, void (*)(UConverter *)> windows(ucnv_open("windows-1252", &status),
                                                                ucnv_close);
    std::unique_ptr<UConverter, void (*)(UConverter *)> mac(ucnv_open("macintosh", &status), ucnv_close);
    ucnv_setToUCallBack(windows.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(mac.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    const char in = static_cast<char>(windowsByte);
    UChar unicode[4];
    const int32_t length = ucnv_toUChars(windows.get(), unicode, 4, &in, 1, &status);
    if (U_FAILURE(status) || length != 1 || unicode[0] == 0xFFFD || unicode[0] == 0x1A)
        return std::nullopt;
    char out[4];
    const int32_t written = ucnv_fromUChars(mac.get(), out, 4, unicode, 1, &status);
    if (U_FAILURE(status) || written != 1)
        return std::nullopt;
    return static_cast<unsigned char>(out[0]);
}

TEST(ClassicRewrite, GivesTheExpectedBytes)
{
    constexpr auto ansi = RTFDowngrade::Charset::ansi;
    constexpr auto mac = RTFDowngrade::Charset::mac;
    const struct {
        const char *why;
        std::string in;
        RTFDowngrade::Charset charset;
        std::string out;
    } rows[] = {
        {"empty input", "", ansi, ""},
        {"a negative cocoartf goes whole", R"(\cocoartf-5 x)", ansi, " x"},
        {"cocoartf needs its number", R"(\cocoartf x)", ansi, R"(\cocoartf x)"},
        {"the delimiting space stays", R"(\pard\pardirnatural \f0)", ansi, R"(\pard \f0)"},
        {"both tab defaults go, none leaves a 'deftab'", R"(\pardeftab720\deftab560 a)", ansi, " a"},
        {"all writer words", "\\cocoatextscaling0\\cocoaplatform1\\partightenfactor0 x", ansi, " x"},
        {"a flat ignorable group goes whole", R"(a{\*\generator x;}b)", ansi, "ab"},
        {"an ignorable group with a nested group stays", R"({\*\listtable{\list\listid1}})", ansi,
         R"({\*\listtable{\list\listid1}})"},
        {"one pass: the inner group goes, the outer stays", R"({\*\a{\*\b}})", ansi, R"({\*\a})"},
        {"an empty {\\*} goes", R"(a{\*}b)", ansi, "ab"},
        {"a flat group may span lines", "{\\*\\x\nline}y", ansi, "y"},
        {"ansi keeps escapes and header", R"({\rtf1\ansi\ansicpg1252 Caf\'e9})", ansi,
         R"({\rtf1\ansi\ansicpg1252 Caf\'e9})"},
        {"escapes below 0x80 stay under mac, their case too", R"(\'41\'7f\'4A)", mac, R"(\'41\'7f\'4A)"},
        {"upper-case digits come out lower-case", R"(\'E9)", mac, R"(\'8e)"},
        {"adjacent escapes both change", R"(\'93\'94)", mac, R"(\'d2\'d3)"},
        {"no code-page character", R"(\'81\'8d\'8f\'90\'9d)", mac, R"(\'3f\'3f\'3f\'3f\'3f)"},
        {"no Mac OS Roman character", R"(\'8a\'bd)", mac, R"(\'3f\'3f)"},
        {"the header becomes \\mac", R"({\rtf1\ansi\ansicpg1252\deff0 x})", mac, R"({\rtf1\mac\deff0 x})"},
        {"a lone \\ansi", R"({\rtf1\ansi x})", mac, R"({\rtf1\mac x})"},
        {"a lone \\ansicpg1252 goes", R"({\rtf1\ansicpg1252 x})", mac, R"({\rtf1 x})"},
        {"a backslash-escaped backslash does not protect an escape (the pattern says so)", R"(\\'e9)", mac,
         R"(\\'8e)"},
        {"not UTF-8: read as Latin-1, written as UTF-8", "caf\xE9", ansi, "caf\xC3\xA9"},
        {"not UTF-8 under mac: the raw byte is text, not an escape", "\xE9\\'e9", mac, "\xC3\xA9\\'8e"},
        {"UTF-8 text passes through", "\xE2\x82\xAC \\cocoartf1", mac, "\xE2\x82\xAC "},
        {"a byte-order mark stays", "\xEF\xBB\xBF{\\rtf1}", ansi, "\xEF\xBB\xBF{\\rtf1}"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(RTFDowngrade::classic(row.in, row.charset), row.out) << row.why;
}

TEST(ClassicMapping, Has103MappedBytes20WithoutMacRomanAnd5WithoutWindows1252)
{
    const std::set<unsigned> noWindows = {0x81, 0x8d, 0x8f, 0x90, 0x9d};
    const std::set<unsigned> noMac = {0x8a, 0x8e, 0x9a, 0x9e, 0xa4, 0xa6, 0xad, 0xb2, 0xb3, 0xb9,
                                      0xbc, 0xbd, 0xbe, 0xd0, 0xd7, 0xdd, 0xde, 0xf0, 0xfd, 0xfe};
    std::set<std::string> mappedTo;
    int questionMarks = 0;
    for (unsigned byte = 0x80; byte <= 0xff; ++byte) {
        const std::string out = RTFDowngrade::classic(escape(byte), RTFDowngrade::Charset::mac);
        EXPECT_EQ(RTFDowngrade::classic(escape(byte), RTFDowngrade::Charset::ansi), escape(byte))
            << "ansi keeps it";
        if (out == "\\'3f") {
            ++questionMarks;
            EXPECT_TRUE(noWindows.count(byte) || noMac.count(byte)) << std::hex << byte;
            continue;
        }
        mappedTo.insert(out);
        const std::optional<unsigned> icu = icuMacByte(byte);
        ASSERT_TRUE(icu) << "ICU maps what we do not: " << std::hex << byte;
        EXPECT_EQ(out, escape(*icu)) << "disagrees with ICU for " << std::hex << byte;
    }
    EXPECT_EQ(mappedTo.size(), 103u) << "each mapped byte has its own Mac OS Roman byte";
    EXPECT_EQ(questionMarks, 25);
    for (unsigned byte : noMac)
        EXPECT_FALSE(icuMacByte(byte)) << "ICU too lacks " << std::hex << byte;
}

TEST(ClassicRewrite, LargeUnclosedGroupsAreHandledWithoutHarm)
{
    // A million characters of an ignorable group that never closes: nothing to remove.
    std::string rtf = "{\\rtf1{\\*\\x" + std::string(1 << 20, 'a');
    EXPECT_EQ(RTFDowngrade::classic(rtf, RTFDowngrade::Charset::ansi), rtf);
    std::string many;
    for (int i = 0; i < 100000; ++i)
        many += "{\\*\\g" + std::to_string(i) + ";}\\'e9";
    const std::string out = RTFDowngrade::classic(many, RTFDowngrade::Charset::mac);
    EXPECT_EQ(out, [] {
        std::string expected;
        for (int i = 0; i < 100000; ++i)
            expected += "\\'8e";
        return expected;
    }());
}

} // namespace
