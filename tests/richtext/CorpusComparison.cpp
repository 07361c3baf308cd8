#include "CorpusComparison.h"

#include "richtext/Utf8.h"

#include <algorithm>
#include <map>

namespace corpus {
namespace {

using richtext::Inline;
using richtext::Paragraph;

bool isSpace(char32_t c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

std::string value(const richtext::Properties &properties, const char *name)
{
    const auto found = properties.find(name);
    return found == properties.end() ? std::string() : found->second;
}

// Bold, italic and underline of a piece as three bits.
int emphasis(const Inline &piece)
{
    const std::string weight = value(piece.style, "fo:font-weight");
    const bool bold = weight == "bold" || std::atoi(weight.c_str()) >= 600;
    const std::string slant = value(piece.style, "fo:font-style");
    const bool italic = slant == "italic" || slant == "oblique";
    const std::string line = value(piece.style, "style:text-underline-style");
    const std::string type = value(piece.style, "style:text-underline-type");
    const bool underline = (!line.empty() && line != "none") && type != "none";
    return (bold ? 1 : 0) | (italic ? 2 : 0) | (underline ? 4 : 0);
}

std::string alignment(const Paragraph &paragraph)
{
    const std::string align = value(paragraph.properties, "fo:text-align");
    if (align.empty() || align == "start" || align == "left")
        return "left";
    if (align == "end" || align == "right")
        return "right";
    return align;
}

struct Character {
    char32_t character;
    int emphasis;
};

std::vector<Character> characters(const std::vector<const Paragraph *> &paragraphs)
{
    std::vector<Character> result;
    for (const Paragraph *paragraph : paragraphs)
        for (const Inline &piece : paragraph->content)
            if (piece.kind == Inline::Kind::text)
                for (const char32_t c : richtext::Utf8::decode(piece.text))
                    if (!isSpace(c) && c != 0xA0)
                        result.push_back({c, emphasis(piece)});
    return result;
}

// Pairs of indices of equal items, in order: the longest common subsequence.
// Inputs here are a few thousand paragraphs, so the quadratic table is fine.
template <typename T>
std::vector<std::pair<std::size_t, std::size_t>> matching(const std::vector<T> &a, const std::vector<T> &b)
{
    const std::size_t n = a.size(), m = b.size();
    std::vector<std::vector<std::uint16_t>> length(n + 1, std::vector<std::uint16_t>(m + 1, 0));
    for (std::size_t i = n; i-- > 0;)
        for (std::size_t j = m; j-- > 0;)
            length[i][j] = a[i] == b[j] ? static_cast<std::uint16_t>(length[i + 1][j + 1] + 1)
                                        : std::max(length[i + 1][j], length[i][j + 1]);
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0, j = 0; i < n && j < m;) {
        if (a[i] == b[j]) {
            pairs.emplace_back(i++, j++);
        } else if (length[i + 1][j] >= length[i][j + 1]) {
            ++i;
        } else {
            ++j;
        }
    }
    return pairs;
}

std::vector<std::string> shapes(const richtext::Document &document)
{
    std::vector<std::string> result;
    for (const richtext::Table *table : document.tables())
        result.push_back(std::to_string(table->rows.size()) + " x " + std::to_string(table->columnCount()));
    return result;
}

} // namespace

double Agreement::characterShare() const
{
    return characters ? double(sameEmphasis) / double(characters) : 1.0;
}

double Agreement::paragraphShare() const
{
    return paragraphs ? double(sameAlignment) / double(paragraphs) : 1.0;
}

Agreement compare(const richtext::Document &expected, const richtext::Document &found)
{
    Agreement agreement;
    const std::vector<Character> want = characters(expected.paragraphs());
    const std::vector<Character> have = characters(found.paragraphs());
    // The texts agree (the text comparison sees to that); where they do not,
    // the characters of the longer text that find no partner count as disagreeing.
    const std::size_t common = std::min(want.size(), have.size());
    std::size_t same = 0;
    bool aligned = true;
    for (std::size_t i = 0; i < common; ++i) {
        aligned = aligned && want[i].character == have[i].character;
        same += want[i].character == have[i].character && want[i].emphasis == have[i].emphasis;
    }
    agreement.characters = std::max(want.size(), have.size());
    agreement.emphasised = static_cast<std::size_t>(
        std::count_if(want.begin(), want.end(), [](const Character &c) { return c.emphasis != 0; }));
    agreement.sameEmphasis = aligned ? same : 0;

    std::vector<std::string> wantTexts, haveTexts;
    for (const Paragraph *paragraph : expected.paragraphs())
        wantTexts.push_back(normalised(paragraph->text()));
    for (const Paragraph *paragraph : found.paragraphs())
        haveTexts.push_back(normalised(paragraph->text()));
    // Empty paragraphs that end a document show nothing: RTF gives one to
    // a last section that is there only to end balanced columns.
    for (std::vector<std::string> *texts : {&wantTexts, &haveTexts})
        while (!texts->empty() && texts->back().empty())
            texts->pop_back();
    agreement.paragraphs = std::max(wantTexts.size(), haveTexts.size());
    const auto pairs = matching(wantTexts, haveTexts);
    for (const auto &[i, j] : pairs)
        agreement.sameAlignment += alignment(*expected.paragraphs()[i]) == alignment(*found.paragraphs()[j]);

    agreement.tablesExpected = shapes(expected);
    agreement.tablesFound = shapes(found);
    agreement.footnotesExpected = expected.notes(Inline::Kind::footnote).size();
    agreement.footnotesFound = found.notes(Inline::Kind::footnote).size();
    agreement.endnotesExpected = expected.notes(Inline::Kind::endnote).size();
    agreement.endnotesFound = found.notes(Inline::Kind::endnote).size();
    return agreement;
}

std::string normalised(const std::string &utf8)
{
    std::string result;
    bool space = false;
    for (const char32_t c : richtext::Utf8::decode(utf8)) {
        if (c == 0xFEFF)
            continue;
        if (isSpace(c)) {
            space = !result.empty();
            continue;
        }
        if (space)
            result += ' ';
        space = false;
        richtext::Utf8::append(result, c);
    }
    return result;
}

std::string macDifference(const std::string &expected, const std::string &found, std::size_t &questionMarks)
{
    questionMarks = 0;
    static const std::u32string lacking =
        U"\u0160\u017D\u0161\u017E\u00A4\u00A6\u00AD\u00B2\u00B3\u00B9\u00BC"
        U"\u00BD\u00BE\u00D0\u00D7\u00DD\u00DE\u00F0\u00FD\u00FE";
    const std::u32string want = richtext::Utf8::decode(expected);
    const std::u32string have = richtext::Utf8::decode(found);
    if (want.size() != have.size())
        return "lengths differ: " + std::to_string(want.size()) + " and " + std::to_string(have.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        if (want[i] == have[i])
            continue;
        if (have[i] == U'?' && lacking.find(want[i]) != std::u32string::npos) {
            ++questionMarks;
            continue;
        }
        std::string context;
        for (std::size_t k = i >= 20 ? i - 20 : 0; k < std::min(want.size(), i + 20); ++k)
            richtext::Utf8::append(context, want[k]);
        return "character " + std::to_string(i) + " differs, near: " + context;
    }
    return {};
}

} // namespace corpus
