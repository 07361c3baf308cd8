// Every text that libwpd reads from some WordPerfect character must come back unchanged when our
// writers write it: the character tables are the inverse of libwpd's, for both versions.

#include "WpTestSupport.h"

#include "richtext/wordperfect/WordPerfectWriter.h"

#include <gtest/gtest.h>

#include <clocale>
#include <set>
#include <string>
#include <vector>

namespace {

using richtext::wordperfect::WordPerfectWriter;

void put16(std::string &out, unsigned value)
{
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>(value >> 8);
}

// A hand-made file holding every (set, number) pair between the markers '<' and '>', one per paragraph.
std::string everyPair(bool wp6)
{
    std::string text;
    for (int set = 0; set < 16; ++set) {
        for (int number = 0; number < 256; ++number) {
            const char code = wp6 ? '\xF0' : '\xC0';
            text += '<';
            text += code;
            text += static_cast<char>(number);
            text += static_cast<char>(set);
            text += code;
            text += '>';
            text += wp6 ? '\xCC' : '\x0A';
        }
    }
    std::string file = "\xFFWPC";
    const unsigned start = wp6 ? 0x20E : 16;
    put16(file, start);
    put16(file, 0);
    file += "\x01\x0A";
    file += wp6 ? '\x02' : '\x00';
    file += '\x01';
    put16(file, 0);
    put16(file, wp6 ? 0x200 : 0);
    if (wp6) {
        file.resize(0x200, '\0');
        file += "\x02\x00";
        put16(file, 1);
        file.append(10, '\0');
    }
    return file + text;
}

// The texts libwpd makes of the WordPerfect characters, spaces and unknown pairs left out.
std::set<std::string> libwpdCharacters(bool wp6)
{
    const wptest::ReadBack back = wptest::readWordPerfect(everyPair(wp6));
    std::set<std::string> texts;
    for (const richtext::Paragraph *paragraph : back.document.paragraphs()) {
        const std::string text = paragraph->text();
        if (text.size() < 3 || text.front() != '<' || text.back() != '>')
            continue;
        const std::string inner = text.substr(1, text.size() - 2);
        if (!inner.empty() && inner != " ")
            texts.insert(inner);
    }
    return texts;
}

// Our writer's file of these paragraphs, each of this formatting.
std::unique_ptr<WordPerfectWriter> written(WordPerfectWriter::Version version,
                                           const std::vector<std::string> &texts,
                                           const librevenge::RVNGPropertyList &paragraph = {})
{
    auto writer = WordPerfectWriter::create(version);
    writer->startDocument({});
    writer->openPageSpan({});
    for (const std::string &text : texts) {
        writer->openParagraph(paragraph);
        writer->insertText(text.c_str());
        writer->closeParagraph();
    }
    writer->closePageSpan();
    writer->endDocument();
    return writer;
}

struct Version {
    const char *name;
    WordPerfectWriter::Version version;
};

class CharacterRoundTrip : public ::testing::TestWithParam<Version> {};

TEST_P(CharacterRoundTrip, EveryCharacterLibwpdKnowsComesBack)
{
    const bool wp6 = GetParam().version == WordPerfectWriter::Version::wp6;
    const std::set<std::string> characters = libwpdCharacters(wp6);
    ASSERT_GT(characters.size(), 1000u) << "libwpd's tables looked empty: the probe file is wrong";

    std::vector<std::string> texts;
    for (const std::string &character : characters)
        texts.push_back("[" + character + "]");
    const auto writer = written(GetParam().version, texts);
    EXPECT_TRUE(writer->losses().empty()) << writer->losses().joined();

    const wptest::ReadBack back = wptest::readWordPerfect(writer->fileBytes());
    ASSERT_TRUE(back.ok);
    std::vector<std::string> read;
    for (const richtext::Paragraph *paragraph : back.document.paragraphs())
        read.push_back(paragraph->text());
    ASSERT_EQ(read.size(), texts.size());
    int wrong = 0;
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (read[i] != texts[i] && ++wrong <= 20)
            ADD_FAILURE() << "wrote " << texts[i] << ", libwpd read " << read[i];
    }
    EXPECT_EQ(wrong, 0);
}

// Characters with WordPerfect codes of their own, and kana that one version's Japanese set holds only
// in the other width: what libwpd reads back, and what the writer says it could not carry.
TEST_P(CharacterRoundTrip, WritesHyphensAndKanaInTheirOwnCodes)
{
    const bool wp6 = GetParam().version == WordPerfectWriter::Version::wp6;
    struct Case {
        const char *text;
        const char *wp6Reads;
        const char *wp5Reads;
        std::string_view wp6Lost; // 5.1 holds them all
    };
    const Case cases[] = {
        {"soft\u00ADhyphen", "soft\u00ADhyphen", "soft\u00ADhyphen", {}},
        {"non\u2011breaking", "non-breaking", "non-breaking", {}}, // WordPerfect's hard hyphen
        {"\u30AB\u30BF\u30AB\u30CA", "\uFF76\uFF80\uFF76\uFF85", "\u30AB\u30BF\u30AB\u30CA", {}},
        {"\u30AC\u30D1", "\uFF76\uFF9E\uFF8A\uFF9F", "\u30AC\u30D1", {}},
        {"\uFF76\uFF9E", "\uFF76\uFF9E", "\u30AB\u309B", {}},
        // Hiragana: 6's set has katakana only, so the same sounds in that script.
        {"\u3072\u3089\u304C\u306A", "\uFF8B\uFF97\uFF76\uFF9E\uFF85", "\u3072\u3089\u304C\u306A",
         richtext::loss::hiraganaAsKatakana},
        {"\u6F22\u5B57", "??", "??", richtext::loss::charactersWordPerfect},
    };
    for (const Case &c : cases) {
        const auto writer = written(GetParam().version, {c.text});
        const std::string_view lost =
            wp6 || c.wp6Lost == richtext::loss::charactersWordPerfect ? c.wp6Lost : "";
        EXPECT_EQ(writer->losses().joined(), lost) << c.text;
        const wptest::ReadBack back = wptest::readWordPerfect(writer->fileBytes());
        ASSERT_TRUE(back.ok);
        ASSERT_EQ(back.document.paragraphs().size(), 1u) << c.text;
        EXPECT_EQ(back.document.paragraphs()[0]->text(), wp6 ? c.wp6Reads : c.wp5Reads) << c.text;
    }
}

// Lengths in librevenge's text ("0.5000in") mean the same in a locale whose decimal mark is a comma,
// as the desktop application's is once Qt has set the user's locale.
TEST_P(CharacterRoundTrip, ReadsLengthsTheSameInAnyLocale)
{
    const auto indentIn = [&](const char *locale) -> std::string {
        const std::string saved = std::setlocale(LC_ALL, nullptr);
        if (!std::setlocale(LC_ALL, locale))
            return "no locale";
        librevenge::RVNGPropertyList paragraph;
        paragraph.insert("fo:margin-left", 0.5, librevenge::RVNG_INCH);
        paragraph.insert("fo:text-indent", 0.25, librevenge::RVNG_INCH);
        const auto writer = written(GetParam().version, {"indented"}, paragraph);
        std::setlocale(LC_ALL, saved.c_str());
        const wptest::ReadBack back = wptest::readWordPerfect(writer->fileBytes());
        const richtext::Paragraph *read = wptest::paragraphWith(back.document, "indented");
        return read ? wptest::property(read->properties, "fo:text-indent") : "not read";
    };
    const std::string german = indentIn("de_DE.UTF-8");
    if (german == "no locale")
        GTEST_SKIP() << "the de_DE.UTF-8 locale is not installed";
    EXPECT_EQ(german, indentIn("C"));
    EXPECT_EQ(german, "0.2500in");
}

INSTANTIATE_TEST_SUITE_P(BothVersions, CharacterRoundTrip,
                         ::testing::Values(Version{"wp6", WordPerfectWriter::Version::wp6},
                                           Version{"wp5", WordPerfectWriter::Version::wp5}),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
