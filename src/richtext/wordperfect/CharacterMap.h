#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace richtext::wordperfect {

// Unicode to WordPerfect characters: the inverse of what libwpd reads, one map per file version
// (sets 1, 3, 4, 6 and 7 agree between 5.1 and 6; Greek, Hebrew, Cyrillic and iconic do not).
class CharacterMap {
public:
    struct Match {
        int set = 0;
        int number = 0;
        std::size_t length = 0; // code points of the text that the pair stands for
    };

    static const CharacterMap &wp6();
    static const CharacterMap &wp5();

    // The pair for the longest run at the start of text; none when no WordPerfect set holds its
    // first character.
    std::optional<Match> find(std::u32string_view text) const;

    // Whether every character of text has a pair.
    bool holds(std::u32string_view text) const;

    // A kana in the other width, as one or two characters (a half-width letter and its voicing
    // mark); empty for anything else.
    static std::u32string otherWidth(char32_t c);

    static std::u32string decodeUtf8(std::string_view utf8);

private:
    struct Candidate {
        std::u32string text;
        int set;
        int number;
    };
    explicit CharacterMap(bool wp6);

    std::unordered_map<char32_t, std::vector<Candidate>> byFirst;
};

} // namespace richtext::wordperfect
