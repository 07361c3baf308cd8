#pragma once

#include <cstdint>
#include <string>

namespace richtext::wordperfect {

// WordPerfect stores every integer little-endian.
inline void put8(std::string &out, unsigned value)
{
    out += static_cast<char>(value & 0xFF);
}
inline void put16(std::string &out, unsigned value)
{
    put8(out, value);
    put8(out, value >> 8);
}
inline void put32(std::string &out, std::uint32_t value)
{
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}
inline void patch32(std::string &out, std::size_t at, std::uint32_t value)
{
    std::string bytes;
    put32(bytes, value);
    out.replace(at, 4, bytes);
}

} // namespace richtext::wordperfect
