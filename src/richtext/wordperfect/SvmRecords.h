#pragma once

#include "SvmPainter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The structures a StarView metafile is made of, read from its little-endian bytes.
namespace richtext::wordperfect::svm {

// Little-endian fields over a range of bytes. A read past the end yields zero and marks the
// reader failed, so that callers check once, after the fields they wanted.
class Reader {
public:
    explicit Reader(std::string_view bytes = {}) : data(bytes) {}
    bool ok() const { return good; }
    void fail()
    {
        good = false;
        at = data.size();
    }
    // Fails the reader unless n more bytes are there.
    bool need(std::uint64_t n)
    {
        if (good && n <= data.size() - at)
            return true;
        fail();
        return false;
    }
    // A failed part fails its whole.
    void check(const Reader &part)
    {
        if (!part.ok())
            fail();
    }
    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int16_t i16() { return static_cast<std::int16_t>(u16()); }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    std::string_view bytes(std::uint64_t n)
    {
        if (!need(n))
            return {};
        const std::string_view out = data.substr(at, n);
        at += n;
        return out;
    }

private:
    std::uint64_t number(int size)
    {
        std::uint64_t value = 0;
        const std::string_view raw = bytes(size);
        for (std::size_t i = raw.size(); i-- > 0;)
            value = value << 8 | static_cast<unsigned char>(raw[i]);
        return value;
    }

    std::string_view data;
    std::size_t at = 0;
    bool good = true;
};

// Whatever may grow starts with its version and length, so that a reader skips what it does not
// know.
struct Versioned {
    int version = 0;
    Reader body;
};

Versioned versioned(Reader &in);

// StarView's number for UTF-16 text.
constexpr int unicodeCharset = 0xFFFF;

Point point(Reader &in);
// Nothing for StarView's empty rectangle.
std::optional<Rect> rect(Reader &in);
// 0xTTRRGGBB, where TT is the transparency.
Color color(Reader &in);
// A colour and whether it is used at all.
std::optional<Color> colorIfSet(Reader &in);
// Gradients keep their colours as a name or as 16-bit channels.
Color namedColor(Reader &in);
MapMode mapMode(Reader &in);
Polygon simplePolygon(Reader &in);
// A polygon with a flag for each point, which marks Bézier control points.
Polygon flaggedPolygon(Reader &in);
PolyPolygon polyPolygon(Reader &in);
// Later versions repeat the polygons that have curves, with their flags.
void replaceCurved(Reader &in, PolyPolygon &polygons);
LineStyle lineInfo(Reader &in);
// 8-bit text in the given encoding, or UTF-16 for unicodeCharset.
std::u16string byteString(Reader &in, int charset);
// Since version 2, text actions end with their text again in UTF-16, which is the one to use.
std::u16string unicodeString(Reader &in);
// A font's name, 8-bit text, as UTF-8.
std::string name(Reader &in);

} // namespace richtext::wordperfect::svm
