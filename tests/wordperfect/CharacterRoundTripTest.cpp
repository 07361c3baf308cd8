// Every text that libwpd reads from some WordPerfect character must come back unchanged when our
// writers write it: the character tables are the inverse of libwpd's, for both versions.

#include "WpTestSupport.h"

#include "richtext/wordperfect/WordPerfectWriter.h"

#include <gtest/gtest.h>

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

    const auto writer = WordPerfectWriter::create(GetParam().version);
    writer->startDocument({});
    writer->openPageSpan({});
    std::vector<std::string> written;
    for (const std::string &character : characters) {
        writer->openParagraph({});
        writer->insertText(("[" + character + "]").c_str());
        writer->closeParagraph();
        written.push_back("[" + character + "]");
    }
    writer->closePageSpan();
    writer->endDocument();
    EXPECT_EQ(writer->substitutedCharacters(), 0);

    const wptest::ReadBack back = wptest::readWordPerfect(writer->fileBytes());
    ASSERT_TRUE(back.ok);
    std::vector<std::string> read;
    for (const richtext::Paragraph *paragraph : back.document.paragraphs())
        read.push_back(paragraph->text());
    ASSERT_EQ(read.size(), written.size());
    int wrong = 0;
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (read[i] != written[i] && ++wrong <= 20)
            ADD_FAILURE() << "wrote " << written[i] << ", libwpd read " << read[i];
    }
    EXPECT_EQ(wrong, 0);
}

INSTANTIATE_TEST_SUITE_P(BothVersions, CharacterRoundTrip,
                         ::testing::Values(Version{"wp6", WordPerfectWriter::Version::wp6},
                                           Version{"wp5", WordPerfectWriter::Version::wp5}),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
