// Drawings that become WordPerfect bitmaps: StarView metafiles (LibreOffice's replacement pictures
// for formulas and charts) and SVG, decoded to pixels by decodeRaster.

#include "richtext/wordperfect/Bytes.h"
#include "richtext/wordperfect/WpgImage.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

namespace {

using richtext::wordperfect::decodeRaster;
using richtext::wordperfect::put16;
using richtext::wordperfect::put32;
using richtext::wordperfect::put8;
using richtext::wordperfect::Raster;

unsigned pixelAt(const Raster &raster, int x, int y)
{
    const unsigned char *p = &raster.rgb[(std::size_t(y) * raster.width + x) * 3];
    return unsigned(p[0]) << 16 | unsigned(p[1]) << 8 | p[2];
}

int countPixels(const Raster &raster, const std::function<bool(int x, int y, unsigned rgb)> &wanted)
{
    int count = 0;
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x)
            count += wanted(x, y, pixelAt(raster, x, y));
    return count;
}

bool greenish(unsigned rgb)
{
    return (rgb >> 8 & 0xFF) > 90 && (rgb >> 16) < 60 && (rgb & 0xFF) < 60;
}

// A StarView metafile written field by field, as LibreOffice writes one.
class Metafile {
public:
    Metafile &action(int type, int version, const std::string &body)
    {
        put16(actions, type);
        put16(actions, version);
        put32(actions, static_cast<std::uint32_t>(body.size()));
        actions += body;
        ++count;
        return *this;
    }
    Metafile &color(int type, unsigned rgb, bool set = true)
    {
        std::string body;
        put32(body, rgb);
        put8(body, set);
        return action(type, 1, body);
    }
    // Bytes of a metafile width x height in mapUnit (hundredths of a millimetre) in size.
    std::string bytes(int width, int height, int mapUnit = 0) const
    {
        std::string header;
        put32(header, 0); // no compression
        header += mapMode(mapUnit);
        put32(header, static_cast<std::uint32_t>(width));
        put32(header, static_cast<std::uint32_t>(height));
        put32(header, count);
        std::string file = "VCLMTF";
        put16(file, 1);
        put32(file, static_cast<std::uint32_t>(header.size()));
        return file + header + actions;
    }

    // Version 1 of a plain map mode: the unit, origin (0, 0), scales 1/1.
    static std::string mapMode(int unit)
    {
        std::string map;
        put16(map, unit);
        put32(map, 0);
        put32(map, 0);
        for (int i = 0; i < 4; ++i)
            put32(map, 1);
        put8(map, 1); // simple
        std::string block;
        put16(block, 1);
        put32(block, static_cast<std::uint32_t>(map.size()));
        return block + map;
    }

private:
    std::string actions;
    std::uint32_t count = 0;
};

std::string points(std::initializer_list<std::pair<int, int>> list)
{
    std::string out;
    put16(out, static_cast<unsigned>(list.size()));
    for (const auto &[x, y] : list) {
        put32(out, static_cast<std::uint32_t>(x));
        put32(out, static_cast<std::uint32_t>(y));
    }
    return out;
}

std::string font(const std::string &family, int height, int weight)
{
    std::string body;
    put16(body, static_cast<unsigned>(family.size()));
    body += family;
    put16(body, 0); // style name
    put32(body, 0); // width
    put32(body, height);
    put16(body, 0xFFFF); // UTF-16 text
    for (int field : {0, 0, weight, 0, 0, 0, 0, 0, 0})
        put16(body, field);
    body += std::string(4, '\0'); // word line, outline, shadow, kerning
    std::string font;
    put16(font, 1);
    put32(font, static_cast<std::uint32_t>(body.size()));
    return font + body;
}

// Version 2 text actions: the position, the text in UTF-16 (as the font says), the action's own
// fields, then the text again in UTF-16.
std::string text(int x, int y, const std::u16string &characters, const std::string &fields)
{
    std::string body;
    put32(body, x);
    put32(body, y);
    put32(body, static_cast<std::uint32_t>(characters.size()));
    for (char16_t c : characters)
        put16(body, c);
    body += fields;
    put16(body, static_cast<unsigned>(characters.size()));
    for (char16_t c : characters)
        put16(body, c);
    return body;
}

// The whole text: from index 0, its length.
std::string whole(const std::u16string &characters)
{
    std::string range;
    put16(range, 0);
    put16(range, static_cast<unsigned>(characters.size()));
    return range;
}

enum {
    polylineAction = 109,
    polygonAction = 110,
    textAction = 112,
    textArrayAction = 113,
    stretchTextAction = 114,
    rectAction = 103,
    lineColorAction = 132,
    clipAction = 129,
    fillColorAction = 133,
    textColorAction = 134,
    textAlignAction = 136,
    mapModeAction = 137,
    fontAction = 138,
    pushAction = 139,
    popAction = 140
};

// 1 x 0.5 inch: a thick red line along the top, clipped short, a blue square, an olive square drawn after a
// pushed fill colour is popped, a black square placed in millimetres, and a green "H" on a baseline.
std::string drawing()
{
    Metafile svm;
    std::string lineInfo;
    put16(lineInfo, 1);   // solid
    put32(lineInfo, 100); // a millimetre wide
    std::string thickLine = points({{100, 100}, {2440, 100}});
    put16(thickLine, 1);
    put32(thickLine, static_cast<std::uint32_t>(lineInfo.size()));
    thickLine += lineInfo;
    std::string clip;
    for (int side : {0, 0, 2000, 1270})
        put32(clip, side);
    svm.action(pushAction, 1, std::string("\x20\x00", 2)).action(clipAction, 1, clip);
    svm.color(lineColorAction, 0xFF0000).action(polylineAction, 2, thickLine).action(popAction, 1, {});
    svm.color(lineColorAction, 0, false).color(fillColorAction, 0x808000);
    std::string push;
    put16(push, 0x2); // the fill colour
    svm.action(pushAction, 1, push).color(fillColorAction, 0x0000FF);
    svm.action(polygonAction, 1, points({{200, 400}, {1000, 400}, {1000, 1100}, {200, 1100}}));
    svm.action(popAction, 1, {});
    svm.action(300, 7, "unknown to us");
    svm.action(polygonAction, 1, points({{1100, 400}, {1400, 400}, {1400, 1100}, {1100, 1100}}));
    const int millimetres = 2;
    svm.action(pushAction, 1, std::string("\x10\x00", 2))
        .action(mapModeAction, 1, Metafile::mapMode(millimetres));
    svm.color(fillColorAction, 0x000000);
    std::string square;
    for (int side : {21, 2, 23, 4}) // 21..23 mm across, 2..4 mm down
        put32(square, side);
    svm.action(rectAction, 1, square).action(popAction, 1, {});
    svm.action(fontAction, 1, font("DejaVu Sans", 600, 8)).color(textColorAction, 0x008000);
    svm.action(textAlignAction, 1, std::string("\x01\x00", 2));
    svm.action(textAction, 2, text(1600, 1100, u"H", whole(u"H")));
    return svm.bytes(2540, 1270);
}

TEST(SvmPicture, DrawsLinesShapesAndTextInTheirColoursAtPrinterResolution)
{
    const auto raster = decodeRaster(drawing());
    ASSERT_TRUE(raster);
    EXPECT_EQ(raster->width, 300);
    EXPECT_EQ(raster->height, 150);
    EXPECT_DOUBLE_EQ(raster->pixelsPerInch, 300);
    // Hundredths of a millimetre to pixels: n * 300 / 2540.
    EXPECT_EQ(pixelAt(*raster, 150, 12), 0xFF0000u); // inside the thick line
    EXPECT_EQ(pixelAt(*raster, 150, 30), 0xFFFFFFu); // below it, on white
    EXPECT_EQ(pixelAt(*raster, 250, 12), 0xFFFFFFu); // past the clip at 20 mm (236 px)
    EXPECT_EQ(pixelAt(*raster, 70, 90), 0x0000FFu);  // the blue square
    EXPECT_EQ(pixelAt(*raster, 148, 90), 0x808000u); // olive again after the pop
    EXPECT_EQ(pixelAt(*raster, 260, 35), 0x000000u); // 22 mm, 3 mm in
    EXPECT_EQ(pixelAt(*raster, 260, 60), 0xFFFFFFu); // below it
    EXPECT_EQ(pixelAt(*raster, 290, 145), 0xFFFFFFu);

    // The "H" stands on its baseline (130 px) right of 1600 (189 px), about 6 mm (70 px) tall.
    const int green = countPixels(*raster, [](int, int, unsigned rgb) { return greenish(rgb); });
    EXPECT_GT(green, 300);
    EXPECT_EQ(
        countPixels(*raster, [](int x, int y,
                                unsigned rgb) { return greenish(rgb) && (x < 185 || y > 131 || y < 70); }),
        0);
}

TEST(SvmPicture, DamagedOrForeignBytesGiveNoPicture)
{
    const std::string good = drawing();
    ASSERT_TRUE(decodeRaster(good));
    std::string longAction = good;
    longAction.replace(good.size() - text(1600, 1100, u"H", whole(u"H")).size() - 4, 4, "\xF0\xFF\xFF\x0F",
                       4);
    std::string moreActions = good;
    const std::size_t countAt = 6 + 6 + 4 + 6 + 27 + 8;
    moreActions[countAt] = static_cast<char>(moreActions[countAt] + 1);
    std::string tooManyPoints =
        Metafile().action(polygonAction, 1, points({{0, 0}, {10, 10}})).bytes(100, 100);
    tooManyPoints[tooManyPoints.size() - 18] = '\xFF';

    const std::pair<const char *, std::string> cases[] = {
        {"an action longer than the file", longAction},
        {"more actions counted than there are", moreActions},
        {"a polygon with more points than bytes", tooManyPoints},
        {"no size", Metafile().bytes(0, 100)},
        {"a negative size", Metafile().bytes(100, -5)},
        {"a map unit StarView does not have", Metafile().bytes(100, 100, 99)},
        {"garbage after the signature", "VCLMTF" + std::string(200, '\x7F')},
    };
    for (const auto &[name, bytes] : cases) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(decodeRaster(bytes));
    }
    // Every shorter piece, down to the signature alone, lacks an action it counts.
    for (std::size_t size = 0; size < good.size(); ++size)
        ASSERT_FALSE(decodeRaster(good.substr(0, size))) << size;
    // Damage anywhere, and huge claimed sizes, still give a picture within bounds or none.
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::string damaged = good;
        for (int flips = 0; flips < 4; ++flips)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        if (const auto raster = decodeRaster(damaged, 400)) {
            EXPECT_LE(std::max(raster->width, raster->height), 400);
            EXPECT_EQ(raster->rgb.size(), std::size_t(raster->width) * raster->height * 3);
        }
    }
}

TEST(SvmPicture, PlacesCharactersByTheirAdvancesAndStretchesText)
{
    Metafile svm;
    svm.action(fontAction, 1, font("DejaVu Sans", 400, 8)).color(textColorAction, 0x008000);
    svm.action(textAlignAction, 1, std::string("\x01\x00", 2));
    // The second I starts 18 mm after the first.
    std::string spaced = whole(u"II");
    put32(spaced, 1);
    put32(spaced, 1800);
    svm.action(textArrayAction, 2, text(100, 500, u"II", spaced));
    // Two H stretched over 20 mm.
    std::string width;
    put32(width, 2000);
    svm.action(stretchTextAction, 2, text(100, 1200, u"HH", width + whole(u"HH")));
    const auto raster = decodeRaster(svm.bytes(2540, 1270));
    ASSERT_TRUE(raster);

    // In pixels the I start at 12 and 224, the H end near 248.
    const auto greenWhere = [&](int fromX, int toX, int fromY, int toY) {
        return countPixels(*raster, [&](int x, int y, unsigned rgb) {
            return greenish(rgb) && x >= fromX && x < toX && y >= fromY && y < toY;
        });
    };
    EXPECT_GT(greenWhere(10, 45, 0, 75), 50);
    EXPECT_EQ(greenWhere(60, 215, 0, 75), 0);
    EXPECT_GT(greenWhere(224, 260, 0, 75), 50);
    EXPECT_GT(greenWhere(10, 40, 75, 150), 50);
    EXPECT_GT(greenWhere(215, 250, 75, 150), 50);
    EXPECT_EQ(greenWhere(250, 300, 75, 150), 0);
}

const char *redAndBlue = R"(<?xml version="1.0"?>
<svg xmlns="http://www.w3.org/2000/svg" width="2in" height="1in" viewBox="0 0 200 100">
  <rect x="0" y="0" width="100" height="100" fill="#FF0000"/>
  <circle cx="150" cy="50" r="40" fill="#0000FF" fill-opacity="0.5"/>
</svg>)";

TEST(SvgPicture, RendersAtItsOwnSizeWithTransparencyOverWhite)
{
    const auto raster = decodeRaster(redAndBlue);
    ASSERT_TRUE(raster);
    EXPECT_EQ(raster->width, 600);
    EXPECT_EQ(raster->height, 300);
    EXPECT_DOUBLE_EQ(raster->pixelsPerInch, 300);
    EXPECT_EQ(pixelAt(*raster, 150, 150), 0xFF0000u);
    EXPECT_EQ(pixelAt(*raster, 450, 150), 0x7F7FFFu); // half-transparent blue over white
    EXPECT_EQ(pixelAt(*raster, 590, 10), 0xFFFFFFu);

    // Too large for maxSide: smaller in pixels, the same in inches.
    const std::string poster = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"20in\" height=\"10in\">"
                               "<rect width=\"100%\" height=\"100%\" fill=\"#00FF00\"/></svg>";
    const auto fitted = decodeRaster(poster, 1000);
    ASSERT_TRUE(fitted);
    EXPECT_EQ(fitted->width, 1000);
    EXPECT_EQ(fitted->height, 500);
    EXPECT_DOUBLE_EQ(fitted->width / fitted->pixelsPerInch, 20);
    EXPECT_EQ(pixelAt(*fitted, 999, 499), 0x00FF00u);
}

TEST(SvgPicture, DamagedOrSizelessMarkupGivesNoPicture)
{
    const std::string markup = redAndBlue;
    const std::pair<const char *, std::string> cases[] = {
        {"cut short", markup.substr(0, markup.size() / 2)},
        {"not XML", "<svg <<< >>> &&&"},
        {"neither size nor viewBox",
         "<svg xmlns=\"http://www.w3.org/2000/svg\"><rect width=\"5\" height=\"5\"/></svg>"},
        {"other markup", "<html><body>no picture</body></html>"},
        {"an empty viewBox", "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 0 0\"/>"},
    };
    for (const auto &[name, bytes] : cases) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(decodeRaster(bytes));
    }
}

} // namespace
