#include "render/RsvgRenderer.h"
#include "render/SvgBitmap.h"
#include "render/SvgImages.h"
#include "render/WmfRenderer.h"

#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwpg/libwpg.h>

#include <gtest/gtest.h>

#include <QByteArray>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace fs = std::filesystem;

namespace {

void put16(std::string &out, int value)
{
    out += char(value & 0xFF);
    out += char((value >> 8) & 0xFF);
}

void put32(std::string &out, long value)
{
    put16(out, int(value & 0xFFFF));
    put16(out, int((value >> 16) & 0xFFFF));
}

void record(std::string &out, int function, std::initializer_list<int> parameters)
{
    put32(out, 3 + long(parameters.size()));
    put16(out, function);
    for (const int parameter : parameters)
        put16(out, parameter);
}

// A metafile 1000 by 500 units whose left half is a black rectangle, with a
// black corner at the right that makes the drawing as wide as that.
std::string halfBlack(bool placeable)
{
    std::string records;
    record(records, 0x020B, {0, 0});           // window origin
    record(records, 0x020C, {500, 1000});      // window extent: height, width
    record(records, 0x02FC, {0, 0, 0, 0});     // a solid black brush
    record(records, 0x012D, {0});              // selected
    record(records, 0x041B, {500, 500, 0, 0}); // rectangle: bottom, right, top, left
    record(records, 0x041B, {20, 1000, 0, 980});
    record(records, 0x0000, {}); // end
    std::string standard;
    put16(standard, 1);
    put16(standard, 9);
    put16(standard, 0x300);
    put32(standard, long(18 + records.size()) / 2);
    put16(standard, 1);
    put32(standard, 7);
    put16(standard, 0);
    if (!placeable)
        return standard + records;
    std::string header("\xD7\xCD\xC6\x9A", 4);
    for (const int value : {0, 0, 0, 1000, 500, 1000})
        put16(header, value);
    put32(header, 0);
    put16(header, 0); // checksum, which readers do not check
    return header + standard + records;
}

QImage image(const std::string &png)
{
    return QImage::fromData(QByteArray::fromStdString(png), "PNG").convertToFormat(QImage::Format_Grayscale8);
}

// The mean darkness (0 white .. 1 black) of a region, in fractions of the image.
double darkness(const QImage &picture, double left, double right)
{
    double sum = 0;
    long count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = int(left * picture.width()); x < int(right * picture.width()); ++x, ++count)
            sum += 1.0 - qGray(picture.pixel(x, y)) / 255.0;
    return count ? sum / count : 0;
}

TEST(WmfRenderer, ShowsTheRectangle)
{
    const std::string placeable = halfBlack(true);
    const std::pair<const char *, std::string> drawings[] = {
        {"a placeable metafile", placeable},
        {"one a byte shorter than its header says", placeable.substr(0, placeable.size() - 1)},
        {"a standard metafile", halfBlack(false)}};
    for (const auto &[why, metafile] : drawings) {
        SCOPED_TRACE(why);
        const std::optional<std::string> png = WmfRenderer::renderPNG(metafile, 200);
        ASSERT_TRUE(png);
        const QImage picture = image(*png);
        EXPECT_EQ(picture.size(), QSize(200, 100));
        EXPECT_GT(darkness(picture, 0.05, 0.45), 0.95);
        EXPECT_LT(darkness(picture, 0.55, 0.95), 0.05);
    }
}

TEST(WmfRenderer, RefusesWhatIsNoMetafile)
{
    for (const std::string &bytes :
         {std::string(), std::string("not a metafile at all, only words"), halfBlack(true).substr(0, 30)})
        EXPECT_FALSE(WmfRenderer::renderPNG(bytes, 200)) << bytes.size() << " bytes";
}

std::string base64(const std::string &bytes)
{
    return QByteArray::fromStdString(bytes).toBase64().toStdString();
}

std::string svgWith(const std::string &href)
{
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
           "width=\"200\" height=\"100\"><image width=\"200\" height=\"100\" xlink:href=\"" +
           href + "\"/></svg>";
}

TEST(SvgImages, DrawsEachMetafileImageAndLeavesTheRest)
{
    const std::string metafile = svgWith("data:image/wmf;base64," + base64(halfBlack(true)));
    const std::string drawn = SvgImages::drawMetafiles(metafile + metafile);
    EXPECT_EQ(drawn.find("image/wmf"), std::string::npos);
    const std::size_t first = drawn.find("data:image/png;base64,");
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(drawn.find("data:image/png;base64,", first + 1), std::string::npos);
    EXPECT_EQ(drawn.substr(drawn.size() - 8), "/></svg>");

    for (const std::string &unchanged :
         {svgWith("data:image/wmf;base64,@@@@"), svgWith("data:image/wmf;base64," + base64("no metafile")),
          svgWith("data:image/png;base64,iVBORw0KGgo=")})
        EXPECT_EQ(SvgImages::drawMetafiles(unchanged), unchanged);
}

TEST(SvgImages, AreDrawnWhenTheSvgIsRasterized)
{
    const QImage picture =
        image(RsvgRenderer::renderPNG(svgWith("data:image/wmf;base64," + base64(halfBlack(true))), 200, 100));
    EXPECT_GT(darkness(picture, 0.05, 0.45), 0.9);
    EXPECT_LT(darkness(picture, 0.55, 0.95), 0.1);
}

// A 2 by 2 BMP: red, green / blue, white (rows stored bottom first), of
// 24-bit pixels or of 32-bit ones whose fourth byte is unused.
std::string bitmap(int bits = 24)
{
    const std::string rows = bits == 24 ? std::string("\xFF\0\0\xFF\xFF\xFF\0\0\0\0\xFF\0\xFF\0\0\0", 16)
                                        : std::string("\xFF\0\0\0\xFF\xFF\xFF\0\0\0\xFF\0\0\xFF\0\0", 16);
    std::string bytes = "BM";
    put32(bytes, 14 + 40 + long(rows.size()));
    put32(bytes, 0);
    put32(bytes, 14 + 40);
    put32(bytes, 40);
    put32(bytes, 2);
    put32(bytes, 2);
    put16(bytes, 1);
    put16(bytes, bits);
    for (int i = 0; i < 6; ++i)
        put32(bytes, 0);
    return bytes + rows;
}

TEST(SvgImages, StoreBitmapsAsTheSamePixelsInPng)
{
    for (const int bits : {24, 32}) {
        SCOPED_TRACE(bits);
        const std::string compressed =
            SvgImages::compressBitmaps(svgWith("data:image/bmp;base64," + base64(bitmap(bits))));
        EXPECT_EQ(compressed.find("image/bmp"), std::string::npos);
        const std::size_t data = compressed.find("data:image/png;base64,");
        ASSERT_NE(data, std::string::npos);
        const std::size_t start = data + std::string("data:image/png;base64,").size();
        const QByteArray bytes = QByteArray::fromBase64(
            QByteArray::fromStdString(compressed.substr(start, compressed.find('"', start) - start)));
        EXPECT_EQ(bytes.at(25), 2) << "colour type: RGB, no alpha channel to mask";
        const QImage png = QImage::fromData(bytes, "PNG");
        ASSERT_EQ(png.size(), QSize(2, 2));
        EXPECT_EQ(png.pixel(0, 0), qRgb(255, 0, 0));
        EXPECT_EQ(png.pixel(1, 0), qRgb(0, 255, 0));
        EXPECT_EQ(png.pixel(0, 1), qRgb(0, 0, 255));
        EXPECT_EQ(png.pixel(1, 1), qRgb(255, 255, 255));
    }

    const std::string damaged = svgWith("data:image/bmp;base64," + base64("BM not a bitmap"));
    EXPECT_EQ(SvgImages::compressBitmaps(damaged), damaged);
}

// A WordPerfect 5 graphic whose positioned bitmap has 75 dots per inch: libwpg puts it sixteen
// times too far out, off the drawing; the bitmap comes back to the inch its record gives.
TEST(SvgImages, PutAWordPerfect5BitmapWhereItsRecordSays)
{
    std::string wpg = std::string("\xFFWPC", 4);
    put32(wpg, 16);
    wpg += std::string("\x01\x16\x01\x00", 4) + std::string(4, '\0'); // WordPerfect graphics, version 1
    auto record = [&](int type, const std::string &data) {
        wpg += char(type);
        wpg += char(data.size());
        wpg += data;
    };
    std::string start = std::string("\x01\x00", 2);
    put16(start, 2400); // two inches square
    put16(start, 2400);
    record(0x0F, start);
    std::string bitmap;
    for (const int value : {0, 600, 600, 1800, 1800, 1, 1, 1, 75, 75}) // corners in 1/1200 inch
        put16(bitmap, value);
    bitmap += std::string("\x01\x80", 2); // one white pixel
    record(0x14, bitmap);
    record(0x10, "");

    librevenge::RVNGStringStream input(reinterpret_cast<const unsigned char *>(wpg.data()),
                                       static_cast<unsigned>(wpg.size()));
    librevenge::RVNGStringVector pages;
    librevenge::RVNGSVGDrawingGenerator generator(pages, "");
    ASSERT_TRUE(libwpg::WPGraphics::parse(&input, &generator));
    ASSERT_FALSE(pages.empty());
    const std::string svg = pages[0].cstr();
    ASSERT_NE(svg.find("image x=\"576"), std::string::npos) << "libwpg has changed: " << svg.substr(0, 400);

    const std::string placed = SvgImages::placeWpg1Bitmaps(svg, wpg);
    EXPECT_NE(placed.find("image x=\"36.0000\" y=\"36.0000\" width=\"72.0000\" height=\"72.0000\""),
              std::string::npos)
        << placed.substr(0, 400);
    EXPECT_EQ(SvgImages::placeWpg1Bitmaps(svg, "not a graphic"), svg);
}

// An SVG that is nothing but one bitmap is that bitmap; anything more is drawn.
TEST(SvgBitmap, IsTheBitmapOfAnSvgThatHoldsNothingElse)
{
    const auto svg = [](const std::string &inside) {
        return "<?xml version=\"1.0\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
               "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"2in\" height=\"1in\" viewBox=\"0 0 144 "
               "72\">" +
               inside + "</svg>";
    };
    const std::string bmp = "xlink:href=\"data:image/bmp;base64," + base64(bitmap()) + "\"";
    const std::string fills = "<image x=\"0\" y=\"0\" width=\"144.0000\" height=\"72\" ";
    const std::optional<std::string> png = SvgBitmap::lone(svg(fills + bmp + "/>"));
    ASSERT_TRUE(png);
    EXPECT_EQ(QImage::fromData(QByteArray::fromStdString(*png), "PNG").size(), QSize(2, 2));
    static constexpr char start[] = "\xFF\xD8\xFF\xE0 a JPEG as it came";
    const std::string jpeg(start, sizeof start - 1);
    EXPECT_EQ(SvgBitmap::lone(svg(fills + "xlink:href=\"data:image/jpeg;base64," + base64(jpeg) + "\"/>")),
              jpeg);

    for (const std::string &drawn : {svg(fills + bmp + "/><rect width=\"1\" height=\"1\"/>"),
                                     svg(fills + bmp + " transform=\"scale(2)\"/>"),
                                     svg("<image x=\"10\" y=\"0\" width=\"134\" height=\"72\" " + bmp + "/>"),
                                     svg("<g>" + fills + bmp + "/></g>"),
                                     svg("<rect width=\"1\" height=\"1\"/>"), std::string("not svg")})
        EXPECT_FALSE(SvgBitmap::lone(drawn)) << drawn.substr(0, 300);
}

std::optional<std::string> run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput().toStdString();
}

// Grey blocks of 8 by 8 pixels: libwmf's own drawing and ours place the same
// shapes, but anti-aliasing and scaling move edges by a pixel or two.
std::vector<double> blocks(const QImage &picture)
{
    std::vector<double> means;
    for (int by = 0; by + 8 <= picture.height(); by += 8)
        for (int bx = 0; bx + 8 <= picture.width(); bx += 8) {
            double sum = 0;
            for (int y = by; y < by + 8; ++y)
                for (int x = bx; x < bx + 8; ++x)
                    sum += 1.0 - qGray(picture.pixel(x, y)) / 255.0;
            means.push_back(sum / 64);
        }
    return means;
}

// WordPerfect graphics that keep their drawing in an embedded metafile: the
// PNG of the graphic matches libwmf's own drawing of the metafile.
TEST(SvgImages, CorpusGraphicsLookAsLibwmfDrawsThem)
{
    const fs::path corpus = fs::path(QM_SOURCE_DIR) / "../shared/corpus/wpg";
    if (!fs::exists(corpus))
        GTEST_SKIP() << "no corpus at " << corpus;
    if (!fs::exists("/usr/bin/wmf2gd") || !fs::exists("/usr/bin/wpg2svg"))
        GTEST_SKIP() << "wmf2gd or wpg2svg is not installed";
    QTemporaryDir work;
    for (const char *name : {"embedded-keji2001finalrep-10.wpg", "embedded-keji2001finalrep-11.wpg",
                             "embedded-keji2001finalrep-12.wpg"}) {
        SCOPED_TRACE(name);
        const std::optional<std::string> svg =
            run("/usr/bin/wpg2svg", {QString::fromStdString((corpus / name).string())});
        ASSERT_TRUE(svg);
        const std::size_t data = svg->find("data:image/wmf;base64,");
        ASSERT_NE(data, std::string::npos) << "the graphic holds no metafile any more";
        const std::size_t start = data + std::string("data:image/wmf;base64,").size();
        QByteArray metafile = QByteArray::fromBase64(
            QByteArray::fromStdString(svg->substr(start, svg->find('"', start) - start)));
        // libwmf refuses the metafile as stored: it is a byte short.
        metafile.append('\0');
        const QString wmf = work.filePath("figure.wmf");
        const QString reference = work.filePath("figure.png");
        std::ofstream(wmf.toStdString(), std::ios::binary).write(metafile.data(), metafile.size());

        // The graphic's viewBox is 367.38 by 276.12 points: drawn at twice that.
        const QImage ours = image(RsvgRenderer::renderPNG(*svg, 734, 552));
        ASSERT_TRUE(
            run("/usr/bin/wmf2gd", {"--maxwidth=734", "--maxheight=552", "--maxpect", "-o", reference, wmf}));
        QImage theirs = QImage(reference).convertToFormat(QImage::Format_Grayscale8);
        ASSERT_FALSE(theirs.isNull());
        theirs = theirs.scaled(ours.size());

        const std::vector<double> a = blocks(ours);
        const std::vector<double> b = blocks(theirs);
        double ink = 0;
        double difference = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            ink += b[i];
            difference += std::abs(a[i] - b[i]);
        }
        EXPECT_GT(ink / a.size(), 0.01) << "libwmf's drawing is blank";
        // A blank picture differs by all of the ink; line widths alone differ by about a quarter.
        EXPECT_LT(difference / ink, 0.4) << "difference relative to the ink";
    }
}

} // namespace
