#pragma once

#include <librevenge/librevenge.h>

#include <array>
#include <string_view>

namespace richtext {

// Decoded by hand: librevenge's decoder (boost's iterators) takes a good part
// of a conversion whose document carries pictures, and throws on a character
// outside the alphabet. Line breaks and spaces are skipped; any other
// character outside the alphabet makes the data damaged, and damaged data
// becomes no data.
inline librevenge::RVNGBinaryData decodeBase64(std::string_view base64)
{
    static constexpr std::array<signed char, 256> values = [] {
        std::array<signed char, 256> table{};
        table.fill(-1);
        const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int i = 0; i < 64; ++i)
            table[static_cast<unsigned char>(alphabet[i])] = static_cast<signed char>(i);
        for (const char space : {' ', '\t', '\r', '\n'})
            table[static_cast<unsigned char>(space)] = -2;
        table['='] = -3;
        return table;
    }();
    std::string bytes;
    bytes.reserve(base64.size() / 4 * 3);
    unsigned accumulated = 0;
    int bits = 0;
    bool padding = false;
    for (const char c : base64) {
        const int value = values[static_cast<unsigned char>(c)];
        if (value == -2)
            continue;
        if (value == -3) {
            padding = true;
            continue;
        }
        if (value < 0 || padding)
            return {};
        accumulated = (accumulated << 6) | static_cast<unsigned>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>((accumulated >> bits) & 0xFF);
        }
    }
    return librevenge::RVNGBinaryData(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
}

} // namespace richtext
