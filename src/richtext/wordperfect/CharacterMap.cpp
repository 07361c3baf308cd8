#include "CharacterMap.h"

#include "CharacterTables.h"

#include <algorithm>

namespace richtext::wordperfect {

namespace {

// Japanese kana in full width and the half-width forms (a letter and its voicing mark) that are the
// same letters: libwpd reads WordPerfect 6's Japanese set as the half-width forms and 5.1's as the
// full-width ones, so each version writes the kana the other spells. Derived once from Unicode's
// compatibility decompositions; no Debian library offers the width mapping on its own.
struct KanaWidths {
    char32_t full;
    char32_t half;
    char32_t halfMark; // 0: none
};
constexpr KanaWidths kanaWidths[] = {
    {0x3001, 0xFF64, 0x0000}, {0x3002, 0xFF61, 0x0000}, {0x300C, 0xFF62, 0x0000}, {0x300D, 0xFF63, 0x0000},
    {0x309B, 0xFF9E, 0x0000}, {0x309C, 0xFF9F, 0x0000}, {0x30A1, 0xFF67, 0x0000}, {0x30A2, 0xFF71, 0x0000},
    {0x30A3, 0xFF68, 0x0000}, {0x30A4, 0xFF72, 0x0000}, {0x30A5, 0xFF69, 0x0000}, {0x30A6, 0xFF73, 0x0000},
    {0x30A7, 0xFF6A, 0x0000}, {0x30A8, 0xFF74, 0x0000}, {0x30A9, 0xFF6B, 0x0000}, {0x30AA, 0xFF75, 0x0000},
    {0x30AB, 0xFF76, 0x0000}, {0x30AC, 0xFF76, 0xFF9E}, {0x30AD, 0xFF77, 0x0000}, {0x30AE, 0xFF77, 0xFF9E},
    {0x30AF, 0xFF78, 0x0000}, {0x30B0, 0xFF78, 0xFF9E}, {0x30B1, 0xFF79, 0x0000}, {0x30B2, 0xFF79, 0xFF9E},
    {0x30B3, 0xFF7A, 0x0000}, {0x30B4, 0xFF7A, 0xFF9E}, {0x30B5, 0xFF7B, 0x0000}, {0x30B6, 0xFF7B, 0xFF9E},
    {0x30B7, 0xFF7C, 0x0000}, {0x30B8, 0xFF7C, 0xFF9E}, {0x30B9, 0xFF7D, 0x0000}, {0x30BA, 0xFF7D, 0xFF9E},
    {0x30BB, 0xFF7E, 0x0000}, {0x30BC, 0xFF7E, 0xFF9E}, {0x30BD, 0xFF7F, 0x0000}, {0x30BE, 0xFF7F, 0xFF9E},
    {0x30BF, 0xFF80, 0x0000}, {0x30C0, 0xFF80, 0xFF9E}, {0x30C1, 0xFF81, 0x0000}, {0x30C2, 0xFF81, 0xFF9E},
    {0x30C3, 0xFF6F, 0x0000}, {0x30C4, 0xFF82, 0x0000}, {0x30C5, 0xFF82, 0xFF9E}, {0x30C6, 0xFF83, 0x0000},
    {0x30C7, 0xFF83, 0xFF9E}, {0x30C8, 0xFF84, 0x0000}, {0x30C9, 0xFF84, 0xFF9E}, {0x30CA, 0xFF85, 0x0000},
    {0x30CB, 0xFF86, 0x0000}, {0x30CC, 0xFF87, 0x0000}, {0x30CD, 0xFF88, 0x0000}, {0x30CE, 0xFF89, 0x0000},
    {0x30CF, 0xFF8A, 0x0000}, {0x30D0, 0xFF8A, 0xFF9E}, {0x30D1, 0xFF8A, 0xFF9F}, {0x30D2, 0xFF8B, 0x0000},
    {0x30D3, 0xFF8B, 0xFF9E}, {0x30D4, 0xFF8B, 0xFF9F}, {0x30D5, 0xFF8C, 0x0000}, {0x30D6, 0xFF8C, 0xFF9E},
    {0x30D7, 0xFF8C, 0xFF9F}, {0x30D8, 0xFF8D, 0x0000}, {0x30D9, 0xFF8D, 0xFF9E}, {0x30DA, 0xFF8D, 0xFF9F},
    {0x30DB, 0xFF8E, 0x0000}, {0x30DC, 0xFF8E, 0xFF9E}, {0x30DD, 0xFF8E, 0xFF9F}, {0x30DE, 0xFF8F, 0x0000},
    {0x30DF, 0xFF90, 0x0000}, {0x30E0, 0xFF91, 0x0000}, {0x30E1, 0xFF92, 0x0000}, {0x30E2, 0xFF93, 0x0000},
    {0x30E3, 0xFF6C, 0x0000}, {0x30E4, 0xFF94, 0x0000}, {0x30E5, 0xFF6D, 0x0000}, {0x30E6, 0xFF95, 0x0000},
    {0x30E7, 0xFF6E, 0x0000}, {0x30E8, 0xFF96, 0x0000}, {0x30E9, 0xFF97, 0x0000}, {0x30EA, 0xFF98, 0x0000},
    {0x30EB, 0xFF99, 0x0000}, {0x30EC, 0xFF9A, 0x0000}, {0x30ED, 0xFF9B, 0x0000}, {0x30EF, 0xFF9C, 0x0000},
    {0x30F2, 0xFF66, 0x0000}, {0x30F3, 0xFF9D, 0x0000}, {0x30F4, 0xFF73, 0xFF9E}, {0x30F7, 0xFF9C, 0xFF9E},
    {0x30FA, 0xFF66, 0xFF9E}, {0x30FB, 0xFF65, 0x0000}, {0x30FC, 0xFF70, 0x0000},
};

} // namespace

CharacterMap::CharacterMap(bool wp6)
{
    for (const CharacterEntry &entry : wp6 ? wp6CharacterEntries() : wp5CharacterEntries()) {
        std::u32string text;
        for (char32_t c : entry.text) {
            if (c)
                text += c;
        }
        if (text.empty())
            continue;
        auto &candidates = byFirst[text.front()];
        // Several pairs can read as the same text; the first (lowest set) is the canonical one.
        const bool known = std::any_of(candidates.begin(), candidates.end(),
                                       [&](const Candidate &c) { return c.text == text; });
        if (!known)
            candidates.push_back({std::move(text), entry.set, entry.number});
    }
    for (auto &[first, candidates] : byFirst) {
        std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate &a, const Candidate &b) {
            return a.text.size() > b.text.size();
        });
    }
}

const CharacterMap &CharacterMap::wp6()
{
    static const CharacterMap map(true);
    return map;
}

const CharacterMap &CharacterMap::wp5()
{
    static const CharacterMap map(false);
    return map;
}

std::optional<CharacterMap::Match> CharacterMap::find(std::u32string_view text) const
{
    if (text.empty())
        return std::nullopt;
    const auto found = byFirst.find(text.front());
    if (found == byFirst.end())
        return std::nullopt;
    for (const Candidate &candidate : found->second) {
        if (text.substr(0, candidate.text.size()) == candidate.text)
            return Match{candidate.set, candidate.number, candidate.text.size()};
    }
    return std::nullopt;
}

std::u32string CharacterMap::otherWidth(char32_t c)
{
    for (const KanaWidths &kana : kanaWidths) {
        if (kana.full == c)
            return kana.halfMark ? std::u32string{kana.half, kana.halfMark} : std::u32string(1, kana.half);
        if (kana.half == c && !kana.halfMark)
            return std::u32string(1, kana.full);
    }
    return {};
}

bool CharacterMap::holds(std::u32string_view text) const
{
    for (std::size_t i = 0; i < text.size();) {
        const auto match = find(text.substr(i));
        if (!match)
            return false;
        i += match->length;
    }
    return true;
}

std::u32string CharacterMap::decodeUtf8(std::string_view utf8)
{
    std::u32string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const unsigned char lead = static_cast<unsigned char>(utf8[i]);
        const int extra = lead < 0x80   ? 0
                          : lead < 0xC0 ? -1
                          : lead < 0xE0 ? 1
                          : lead < 0xF0 ? 2
                          : lead < 0xF8 ? 3
                                        : -1;
        if (extra < 0 || i + extra >= utf8.size() + (extra == 0 ? 1 : 0)) {
            out += U'\uFFFD'; // a stray or truncated byte
            ++i;
            continue;
        }
        char32_t cp = extra == 0   ? lead
                      : extra == 1 ? (lead & 0x1F)
                      : extra == 2 ? (lead & 0x0F)
                                   : (lead & 0x07);
        bool valid = true;
        for (int k = 1; k <= extra; ++k) {
            const unsigned char next = static_cast<unsigned char>(utf8[i + k]);
            valid = valid && (next & 0xC0) == 0x80;
            cp = (cp << 6) | (next & 0x3F);
        }
        out += valid ? cp : U'\uFFFD';
        i += valid ? extra + 1 : 1;
    }
    return out;
}

} // namespace richtext::wordperfect
