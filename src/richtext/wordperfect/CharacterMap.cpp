#include "CharacterMap.h"

#include "CharacterTables.h"

#include <algorithm>

namespace richtext::wordperfect {

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
        std::stable_sort(candidates.begin(), candidates.end(),
                         [](const Candidate &a, const Candidate &b) { return a.text.size() > b.text.size(); });
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

std::u32string CharacterMap::decodeUtf8(std::string_view utf8)
{
    std::u32string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const unsigned char lead = static_cast<unsigned char>(utf8[i]);
        const int extra = lead < 0x80 ? 0 : lead < 0xC0 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF8 ? 3 : -1;
        if (extra < 0 || i + extra >= utf8.size() + (extra == 0 ? 1 : 0)) {
            out += U'\uFFFD'; // a stray or truncated byte
            ++i;
            continue;
        }
        char32_t cp = extra == 0 ? lead : extra == 1 ? (lead & 0x1F) : extra == 2 ? (lead & 0x0F) : (lead & 0x07);
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
