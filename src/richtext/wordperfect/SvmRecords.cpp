#include "SvmRecords.h"

#include "richtext/Utf8.h"

namespace richtext::wordperfect::svm {

namespace {

constexpr int utf8Charset = 76;

void appendUtf16(std::u16string &out, char32_t c)
{
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

// 8-bit text in UTF-8 when it is valid UTF-8 or says so, else in Latin-1: LibreOffice writes its
// system's encoding, which is UTF-8 on today's systems.
std::u16string decode8(std::string_view bytes, int charset)
{
    std::u16string out;
    if (charset == utf8Charset || Utf8::isValid(bytes)) {
        for (char32_t c : Utf8::decode(bytes))
            appendUtf16(out, c);
    } else {
        for (char c : bytes)
            out += static_cast<char16_t>(static_cast<unsigned char>(c));
    }
    return out;
}

std::u16string utf16(Reader &in, std::uint64_t length)
{
    std::u16string out;
    if (!in.need(length * 2))
        return out;
    for (std::uint64_t i = 0; i < length; ++i)
        out += static_cast<char16_t>(in.u16());
    return out;
}

std::string utf8(std::u16string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t c = text[i];
        const bool pair =
            c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        if (pair) {
            Utf8::append(out, 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00));
        } else {
            // A lone surrogate has no UTF-8 form, and cairo refuses text that is not UTF-8.
            Utf8::append(out, c >= 0xD800 && c < 0xE000 ? U'\uFFFD' : c);
        }
    }
    return out;
}

} // namespace

Versioned versioned(Reader &in)
{
    const int version = in.u16();
    const std::uint32_t length = in.u32();
    const std::string_view body = in.bytes(length);
    Versioned out{version, Reader(body)};
    if (!in.ok())
        out.body.fail();
    return out;
}

Point point(Reader &in)
{
    const double x = in.i32();
    return {x, double(in.i32())};
}

std::optional<Rect> rect(Reader &in)
{
    const Point topLeft = point(in);
    const Point bottomRight = point(in);
    if (bottomRight.x == -32767 || bottomRight.y == -32767) // the empty rectangle
        return std::nullopt;
    return Rect{topLeft.x, topLeft.y, bottomRight.x, bottomRight.y};
}

Color color(Reader &in)
{
    const std::uint32_t value = in.u32();
    return {(value >> 16 & 0xFF) / 255.0, (value >> 8 & 0xFF) / 255.0, (value & 0xFF) / 255.0,
            1 - (value >> 24) / 255.0};
}

std::optional<Color> colorIfSet(Reader &in)
{
    const Color c = color(in);
    return in.u8() ? std::optional(c) : std::nullopt;
}

Color namedColor(Reader &in)
{
    static const std::uint32_t named[] = {0x000000, 0x000080, 0x008000, 0x008080, 0x800000, 0x800080,
                                          0x808000, 0x808080, 0xC0C0C0, 0x0000FF, 0x00FF00, 0x00FFFF,
                                          0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
    const int name = in.u16();
    if (name & 0x8000) {
        const double red = in.u16() / 65535.0;
        const double green = in.u16() / 65535.0;
        return {red, green, in.u16() / 65535.0, 1};
    }
    const std::uint32_t rgb = name < 16 ? named[name] : 0;
    return {(rgb >> 16) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, 1};
}

MapMode mapMode(Reader &in)
{
    Versioned block = versioned(in);
    Reader &body = block.body;
    MapMode mode;
    mode.unit = body.u16();
    const Point origin = point(body);
    const double numeratorX = body.i32(), denominatorX = body.i32();
    const double numeratorY = body.i32(), denominatorY = body.i32();
    const bool simple = body.u8();
    in.check(body);
    // Like LibreOffice, a scale that is no number (or turns the picture upside down) is ignored.
    if (simple || denominatorX == 0 || denominatorY == 0 || numeratorY / denominatorY < 0)
        return mode;
    mode.originX = origin.x;
    mode.originY = origin.y;
    mode.scaleX = numeratorX / denominatorX;
    mode.scaleY = numeratorY / denominatorY;
    return mode;
}

Polygon simplePolygon(Reader &in)
{
    const unsigned count = in.u16();
    Polygon polygon;
    if (!in.need(std::uint64_t(count) * 8))
        return polygon;
    polygon.resize(count);
    for (PathPoint &p : polygon)
        p.at = point(in);
    return polygon;
}

Polygon flaggedPolygon(Reader &in)
{
    Versioned block = versioned(in);
    Polygon polygon = simplePolygon(block.body);
    if (block.body.u8()) {
        const std::string_view flags = block.body.bytes(polygon.size());
        for (std::size_t i = 0; i < flags.size(); ++i)
            polygon[i].control = flags[i] == 2;
    }
    in.check(block.body);
    return polygon;
}

PolyPolygon polyPolygon(Reader &in)
{
    const unsigned count = in.u16();
    PolyPolygon polygons;
    if (!in.need(std::uint64_t(count) * 2))
        return polygons;
    for (unsigned i = 0; i < count && in.ok(); ++i)
        polygons.push_back(simplePolygon(in));
    return polygons;
}

void replaceCurved(Reader &in, PolyPolygon &polygons)
{
    const unsigned count = in.u16();
    for (unsigned i = 0; i < count && in.ok(); ++i) {
        const unsigned index = in.u16();
        Polygon curved = flaggedPolygon(in);
        if (index < polygons.size())
            polygons[index] = std::move(curved);
    }
}

LineStyle lineInfo(Reader &in)
{
    Versioned block = versioned(in);
    Reader &body = block.body;
    LineStyle style;
    const int kind = body.u16(); // 0 none, 1 solid, 2 dashed
    style.width = body.i32();
    style.visible = kind != 0;
    if (block.version >= 2 && kind == 2) {
        const int dashes = body.u16();
        const double dashLength = body.i32();
        body.u16(); // dots
        const double dotLength = body.i32();
        style.dashed = true;
        style.dash = dashes ? dashLength : dotLength;
        style.gap = body.i32();
    }
    in.check(body);
    return style;
}

std::u16string byteString(Reader &in, int charset)
{
    if (charset == unicodeCharset)
        return utf16(in, in.u32());
    return decode8(in.bytes(in.u16()), charset);
}

std::u16string unicodeString(Reader &in)
{
    return utf16(in, in.u16());
}

std::string name(Reader &in)
{
    return utf8(decode8(in.bytes(in.u16()), 0));
}

} // namespace richtext::wordperfect::svm
