// Pictures, paper size and the document summary through odt2wp5's command line, read back by
// libwpd (the box and its graphic) and libwpg (the pixels in the graphic).

#include "OdtFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include "richtext/ModelBuilder.h"
#include "richtext/OdtReader.h"

#include <libwpg/libwpg.h>
#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <png.h>

#include "richtext/Losses.h"

#include <gtest/gtest.h>

#include <cstring>

#include <algorithm>

#include <filesystem>
#include <string>
#include <vector>

namespace {

const richtext::Inline *firstImage(const richtext::Paragraph &paragraph)
{
    for (const richtext::Inline &piece : paragraph.content)
        if (piece.kind == richtext::Inline::Kind::image)
            return &piece;
    return nullptr;
}

std::vector<const richtext::Inline *> imagesOf(const richtext::Document &document)
{
    return wptest::piecesOf(document, richtext::Inline::Kind::image);
}

// A PNG of the given size whose pixel at (x, y) has colour(x, y) as 0xRRGGBB.
template <typename Colour> std::string pngOf(int width, int height, Colour colour)
{
    std::vector<unsigned char> pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const unsigned rgb = colour(x, y);
            pixels.insert(pixels.end(),
                          {static_cast<unsigned char>(rgb >> 16), static_cast<unsigned char>(rgb >> 8),
                           static_cast<unsigned char>(rgb)});
        }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr);
    std::string png(size, '\0');
    png_image_write_to_memory(&image, png.data(), &size, 0, pixels.data(), 0, nullptr);
    png.resize(size);
    return png;
}

// A 4 x 2 PNG: the left half one colour, the right half another (red and blue unless told).
std::string redBluePng(unsigned left = 0xFF0000, unsigned right = 0x0000FF)
{
    return pngOf(4, 2, [&](int x, int) { return x < 2 ? left : right; });
}

std::string base64(const std::string &bytes)
{
    librevenge::RVNGBinaryData data(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
    return data.getBase64Data().cstr();
}

// What libwpg draws from a WordPerfect graphic: the bitmap's top-left and top-right pixels, and
// the line style in force when it is drawn (a drawing program outlines the picture with it).
struct Drawn {
    bool bitmap = false;
    unsigned leftPixel = 0, rightPixel = 0; // 0xRRGGBB
    std::string outline;
};

class StyleWatch : public librevenge::RVNGSVGDrawingGenerator {
public:
    using RVNGSVGDrawingGenerator::RVNGSVGDrawingGenerator;
    void setStyle(const librevenge::RVNGPropertyList &style) override
    {
        if (style["draw:stroke"])
            stroke = style["draw:stroke"]->getStr().cstr();
        RVNGSVGDrawingGenerator::setStyle(style);
    }
    void drawGraphicObject(const librevenge::RVNGPropertyList &object) override
    {
        outline = stroke;
        RVNGSVGDrawingGenerator::drawGraphicObject(object);
    }
    std::string stroke, outline;
};

Drawn drawnBy(const std::string &graphic)
{
    librevenge::RVNGStringStream input(reinterpret_cast<const unsigned char *>(graphic.data()),
                                       static_cast<unsigned>(graphic.size()));
    librevenge::RVNGStringVector pages;
    StyleWatch svg(pages, "");
    // WordPerfect 5.1 keeps its graphics without the 16-byte prefix: version 1 records.
    const bool prefixed = graphic.rfind("\xFFWPC", 0) == 0;
    libwpg::WPGraphics::parse(&input, &svg, prefixed ? libwpg::WPG_AUTODETECT : libwpg::WPG_WPG1);
    if (pages.empty())
        return {};
    const std::string page = pages[0].cstr();
    const std::string marker = "data:image/bmp;base64,";
    const auto start = page.find(marker);
    if (start == std::string::npos)
        return {};
    const auto end = page.find('"', start);
    const librevenge::RVNGBinaryData dib(
        librevenge::RVNGString(page.substr(start + marker.size(), end - start - marker.size()).c_str()));
    const unsigned char *bmp = dib.getDataBuffer();
    if (dib.size() < 54 || bmp[0] != 'B' || bmp[1] != 'M' || bmp[28] != 32)
        return {};
    auto u32 = [&](std::size_t at) {
        return unsigned(bmp[at]) | bmp[at + 1] << 8 | bmp[at + 2] << 16 | unsigned(bmp[at + 3]) << 24;
    };
    const unsigned offset = u32(10), width = u32(18), height = u32(22);
    if (dib.size() < offset + std::size_t(width) * height * 4)
        return {};
    // Rows run bottom-up; pixels are blue, green, red, alpha.
    const unsigned char *top = bmp + offset + std::size_t(height - 1) * width * 4;
    auto rgb = [&](unsigned x) {
        return unsigned(top[x * 4 + 2]) << 16 | unsigned(top[x * 4 + 1]) << 8 | top[x * 4];
    };
    return {true, rgb(0), rgb(width - 1), svg.outline};
}

class PicturesAndPages : public wptest::VersionTest {};

std::string pictureBody(const std::string &mime, const std::string &bytes)
{
    return "<text:p>before <draw:frame text:anchor-type=\"as-char\" svg:width=\"2in\" "
           "svg:height=\"1in\"><draw:image"
           " draw:mime-type=\"" +
           mime + "\"><office:binary-data>" + base64(bytes) +
           "</office:binary-data></draw:image></draw:frame> after</text:p>";
}

// A Windows metafile (its header alone) and, when given, another form of the same picture after it.
std::string metafileWithFallback(const std::string &png)
{
    std::string emf(88, '\0');
    emf[0] = 1;
    emf.replace(40, 4, " EMF");
    std::string body = pictureBody("image/x-emf", emf);
    if (!png.empty())
        body.insert(body.find("</draw:frame>"),
                    R"(<draw:image draw:mime-type="image/png"><office:binary-data>)" + base64(png) +
                        "</office:binary-data></draw:image>");
    return body;
}

// Each picture becomes a graphics box in the text where it was anchored, drawn with no outline; one
// of few colours keeps them exactly, none dithered to the nearest of a fixed set, and so does a
// photo of thousands in WordPerfect 6, whose graphics hold 24-bit pixels (5.1's hold 256 colours).
TEST_P(PicturesAndPages, WritesPicturesAsGraphicsBoxesAndCountsTheOthers)
{
    const struct {
        const char *name;
        std::string body;
        bool boxed; // else counted as lost
        unsigned left = 0xFF0000, right = 0x0000FF;
        bool exactIn51 = true;
    } cases[] = {
        {"png of few colours", pictureBody("image/png", redBluePng(0x3A7BD5, 0xF2E6C9)), true, 0x3A7BD5,
         0xF2E6C9},
        {"photo",
         pictureBody("image/png", pngOf(64, 32,
                                        [](int x, int y) {
                                            return x == 0 && y == 0 ? 0x3A7BD5u
                                                   : x == 63 && y == 0
                                                       ? 0xF2E6C9u
                                                       : unsigned(x * 4) << 16 | unsigned(y * 8) << 8 |
                                                             unsigned(x + y);
                                        })),
         true, 0x3A7BD5, 0xF2E6C9, false},
        {"svg",
         pictureBody("image/svg+xml", R"(<svg xmlns="http://www.w3.org/2000/svg" width="4" height="2"><rect
             width="2" height="2" fill="red"/><rect x="2" width="2" height="2" fill="blue"/></svg>)"),
         true},
        // 4x2, left half red, right half blue; the LZW stream clears before every pixel.
        {"gif",
         pictureBody("image/gif", std::string("GIF89a\x04\x00\x02\x00\x81\x00\x00\xFF\x00\x00\x00\x00\xFF"
                                              "\xFF\xFF\xFF\x00\x00\x00\x2C\x00\x00\x00\x00\x04\x00\x02"
                                              "\x00\x00\x02\x07\x04\xC1\x30\x04\xC1\x30\x05\x00\x3B",
                                              46)),
         true},
        {"bmp", pictureBody("image/bmp", "BM\x46\x00\x00\x00"), false},
        // LibreOffice keeps a PNG beside a Windows metafile; the PNG is what can be held.
        {"emf with a png beside it", metafileWithFallback(redBluePng()), true},
        {"emf alone", metafileWithFallback(""), false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ProgramRun run;
        const auto back = convert(wptest::flatOdt("", c.body), &run);
        const auto images = imagesOf(back.document);
        ASSERT_EQ(images.size(), c.boxed ? 1u : 0u);
        EXPECT_EQ(richtext::Losses::fromStderr(run.err).kinds(),
                  c.boxed ? std::vector<std::string>{}
                          : std::vector<std::string>{richtext::loss::pictureFormats.data()})
            << run.err;
        if (!c.boxed)
            continue;
        const richtext::Inline &image = *images.front();
        EXPECT_EQ(wptest::property(image.object, "librevenge:mime-type"), "image/x-wpg");
        EXPECT_EQ(wptest::property(image.object, "svg:width"), "2.0000in");
        EXPECT_EQ(wptest::property(image.object, "svg:height"), "1.0000in");
        const Drawn drawn = drawnBy(image.data);
        ASSERT_TRUE(drawn.bitmap);
        if (wp6() || c.exactIn51) {
            EXPECT_EQ(drawn.leftPixel, c.left);
            EXPECT_EQ(drawn.rightPixel, c.right);
        }
        EXPECT_EQ(drawn.outline, "none");
        const richtext::Paragraph *paragraph = wptest::paragraphWith(back.document, "before");
        ASSERT_NE(paragraph, nullptr);
        EXPECT_EQ(firstImage(*paragraph), &image);
    }
}

// A picture centred on a line of its own stays centred, one in the text stays in its line, one with
// words beside it leaves them where they stand; one that lets no text beside it (a logo above its caption)
// keeps its words below it, on a line of their own.
TEST_P(PicturesAndPages, KeepsAPicturesPlaceAmongItsWords)
{
    const char *centred =
        R"(style:horizontal-pos="center" style:horizontal-rel="paragraph" style:wrap="none")";
    const char *centredBeside =
        R"(style:horizontal-pos="center" style:horizontal-rel="paragraph" style:wrap="dynamic")";
    const char *placed = R"(text:anchor-type="char" svg:x="0in" svg:y="0in")";
    const struct {
        const char *graphic, *frame, *before, *after;
        const char *align, *lines;        // the picture's paragraph's; it and the lines after it
        const char *anchor = "", *x = ""; // where 6 sets it beside its words; empty: not checked
    } cases[] = {
        {centred, R"(text:anchor-type="paragraph")", "", "</text:p><text:p>after", "center", "\nafter"},
        {centred, R"(text:anchor-type="as-char")", "words ", "</text:p><text:p>after", "left",
         "words \nafter"},
        // Small and centred with its paragraph's words beside it: the words stay where they stand.
        {centredBeside, R"(text:anchor-type="paragraph" svg:width="0.5in")", "", "words beside", "left",
         "words beside"},
        {R"(style:wrap="none")", placed, "", "words below", "left", "\nwords below"},
        {R"(style:wrap="parallel")", placed, "", "words below", "left", "words below"},
        // Placed beside its words: where it stood in its paragraph, not the paragraph's first character.
        {R"(style:wrap="parallel")", R"(text:anchor-type="char" svg:x="3in" svg:y="0.25in")", "",
         "words around", "left", "words around", "paragraph", "3.0000in"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.graphic) + " " + c.frame);
        const auto back = convert(wptest::flatOdt(
            wptest::style("fr1", "graphic", c.graphic),
            std::string("<text:p>") + c.before + R"(<draw:frame draw:style-name="fr1" )" + c.frame +
                (std::strstr(c.frame, "svg:width") ? "" : R"( svg:width="2in")") +
                R"( svg:height="1in"><draw:image draw:mime-type="image/png"><office:binary-data>)" +
                base64(redBluePng()) + "</office:binary-data></draw:image></draw:frame>" + c.after +
                "</text:p>"));
        const auto paragraphs = back.document.paragraphs();
        const auto holder =
            std::find_if(paragraphs.begin(), paragraphs.end(),
                         [](const richtext::Paragraph *p) { return firstImage(*p) != nullptr; });
        ASSERT_NE(holder, paragraphs.end());
        EXPECT_EQ(wptest::property((*holder)->properties, "fo:text-align"), c.align);
        std::string lines = (*holder)->text(); // 5.1 ends the picture's line with a return
        for (auto next = holder + 1; next != paragraphs.end(); ++next) {
            lines += "\n" + (*next)->text();
            EXPECT_EQ(wptest::property((*next)->properties, "fo:text-align"), "left");
        }
        EXPECT_EQ(lines, c.lines);
        if (*c.anchor && wp6()) {
            const richtext::Inline *picture = firstImage(**holder);
            EXPECT_EQ(wptest::property(picture->object, "text:anchor-type"), c.anchor);
            EXPECT_EQ(wptest::property(picture->object, "svg:x"), c.x);
        }
    }
}

// A picture bullet is a picture of the level's size in the label's place, then the item's words.
TEST_P(PicturesAndPages, SetsAPictureBulletInItsLabelsPlace)
{
    const auto back = convert(wptest::flatOdt(
        R"(<text:list-style style:name="L"><text:list-level-style-image text:level="1"><office:binary-data>)" +
            base64(redBluePng()) +
            R"(</office:binary-data><style:list-level-properties fo:width="0.2in" fo:height="0.1in"/>
            </text:list-level-style-image></text:list-style>)",
        R"(<text:list text:style-name="L"><text:list-item><text:p>first item</text:p></text:list-item>
        <text:list-item><text:p>second item</text:p></text:list-item></text:list>)"));
    const auto paragraphs = back.document.paragraphs();
    ASSERT_EQ(paragraphs.size(), 2u);
    for (const richtext::Paragraph *paragraph : paragraphs) {
        SCOPED_TRACE(paragraph->text());
        ASSERT_FALSE(paragraph->content.empty());
        const richtext::Inline &label = paragraph->content.front();
        ASSERT_EQ(label.kind, richtext::Inline::Kind::image) << "no bullet character before it";
        EXPECT_EQ(wptest::property(label.object, "svg:width"), "0.2000in");
        EXPECT_EQ(wptest::property(label.object, "svg:height"), "0.1000in");
    }
    EXPECT_EQ(paragraphs[0]->text(), "\tfirst item");
    EXPECT_EQ(paragraphs[1]->text(), "\tsecond item");
}

TEST_P(PicturesAndPages, KeepsThePaperSize)
{
    struct Case {
        const char *width, *height;
        const char *expectWidth, *expectHeight;
    };
    const Case cases[] = {
        {"21cm", "29.7cm", "8.2677in", "11.6929in"},
        {"8.5in", "14in", "8.5000in", "14.0000in"},
        {"21cm", "14.8cm", "8.2677in", "5.8268in"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.width) + " x " + c.height);
        const auto back = convert(wptest::flatOdt(
            std::string(
                R"(<style:page-layout style:name="pm1"><style:page-layout-properties fo:page-width=")") +
                c.width + R"(" fo:page-height=")" + c.height +
                R"(" fo:margin-left="1in" fo:margin-right="1in" fo:margin-top="1in" fo:margin-bottom="1in"/>
                </style:page-layout>)",
            "<text:p>page text</text:p>",
            R"(<style:master-page style:name="Standard" style:page-layout-name="pm1"/>)"));
        ASSERT_FALSE(back.document.pageSpans.empty());
        const auto &page = back.document.pageSpans.front().properties;
        EXPECT_NEAR(std::stod(wptest::property(page, "fo:page-width")), std::stod(c.expectWidth), 0.002);
        EXPECT_NEAR(std::stod(wptest::property(page, "fo:page-height")), std::stod(c.expectHeight), 0.002);
    }
}

TEST_P(PicturesAndPages, CorpusPicturesBecomeGraphicsBoxes)
{
    const std::filesystem::path office = std::filesystem::path(QM_CORPUS_DIR) / "office";
    if (!std::filesystem::is_directory(office))
        GTEST_SKIP() << "the shared corpus is not here: " << office;
    // equation.odt's formula comes as LibreOffice's replacement picture, a StarView metafile.
    for (const char *name :
         {"embedded-png.odt", "testODTEmbedded.odt", "demoLibreOfficeImagePasteBug.odt", "equation.odt"}) {
        SCOPED_TRACE(name);
        const std::string path = (office / name).string();
        richtext::ModelBuilder source;
        richtext::OdtReader::read(testing_support::readFile(path), source);
        const std::string destination = scratch.file(std::string("corpus.") + GetParam().extension);
        const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, GetParam().option, path, destination});
        ASSERT_EQ(run.status, 0) << run.err;
        const auto back = wptest::readWordPerfect(testing_support::readFile(destination));
        ASSERT_TRUE(back.ok);
        EXPECT_EQ(imagesOf(back.document).size(), imagesOf(source.document()).size());
        for (const richtext::Inline *image : imagesOf(back.document))
            EXPECT_TRUE(drawnBy(image->data).bitmap);
    }
}

INSTANTIATE_TEST_SUITE_P(BothVersions, PicturesAndPages, testing::ValuesIn(wptest::versions),
                         wptest::versionName);

// A one-paragraph flat document whose metadata fills every field of a document summary.
std::string withMetadata(const std::string &title)
{
    return Odt{.body = "<text:p>x</text:p>",
               .meta =
                   "<dc:title>" + title +
                   "</dc:title><meta:initial-creator>Ada Lovelace</meta:initial-creator><dc:subject>Finances"
                   "</dc:subject><dc:description>A short summary</dc:description><meta:keyword>money"
                   "</meta:keyword>"}
        .flat();
}

// Only WordPerfect 6 has a document summary libwpd reads.
TEST(WordPerfect6Summary, CarriesTheDocumentMetadata)
{
    testing_support::TempDir scratch;
    const std::string odt = withMetadata("Quarterly Report");
    const std::string destination = scratch.file("summary.wpd");
    ASSERT_EQ(ProgramRun::of({ODT2WP5_PATH, "--wp6", scratch.write("s.fodt", odt), destination}).status, 0);
    const auto back = wptest::readWordPerfect(testing_support::readFile(destination));
    ASSERT_TRUE(back.ok);
    const std::pair<const char *, const char *> expected[] = {
        {"librevenge:descriptive-name", "Quarterly Report"},
        {"meta:initial-creator", "Ada Lovelace"},
        {"dc:subject", "Finances"},
        {"dc:description", "A short summary"},
        {"meta:keyword", "money"}};
    for (const auto &[name, value] : expected)
        EXPECT_EQ(wptest::property(back.document.metadata, name), value) << name;
}

// The document summary packet of a 5.1 file, found through the chained index blocks; empty if none.
std::string summaryPacketOf(const std::string &file)
{
    auto u16 = [&](std::size_t at) {
        return static_cast<unsigned>(static_cast<unsigned char>(file.at(at))) |
               static_cast<unsigned>(static_cast<unsigned char>(file.at(at + 1))) << 8;
    };
    auto u32 = [&](std::size_t at) { return u16(at) | u16(at + 2) << 16; };
    for (std::size_t block = 16; block != 0 && block + 50 <= file.size(); block = u32(block + 6)) {
        if (u16(block) != 0xFFFB)
            break;
        for (std::size_t entry = block + 10; entry < block + 50; entry += 10)
            if (u16(entry) == 0x01)
                return file.substr(u32(entry + 6), u32(entry + 2));
    }
    return {};
}

// Reads a summary packet by the 5.1 layout: fixed date text, name and type, then NUL-terminated
// fields, the 5.1 marker, the numeric date and the marker again.
struct Summary51 {
    std::string name, type;
    std::vector<std::string> fields;
    bool markers = false;
    int year = 0;
};

Summary51 readSummary51(const std::string &packet)
{
    Summary51 summary;
    if (packet.size() < 26 + 68 + 21 + 12)
        return summary;
    summary.name = packet.substr(26, 68);
    summary.type = packet.substr(94, 21);
    std::size_t at = 115;
    for (int field = 0; field < 6 && at < packet.size(); ++field) {
        const std::size_t end = packet.find('\0', at);
        if (end == std::string::npos)
            return summary;
        summary.fields.push_back(packet.substr(at, end - at));
        at = end + 1;
    }
    summary.markers = packet.size() == at + 12 && static_cast<unsigned char>(packet[at]) == 0xFF &&
                      static_cast<unsigned char>(packet.back()) == 0xFF;
    if (summary.markers)
        summary.year = static_cast<unsigned char>(packet[at + 1]) | static_cast<unsigned char>(packet[at + 2])
                                                                        << 8;
    return summary;
}

TEST(WordPerfect51Summary, IsLaidOutAsRealFilesHaveIt)
{
    // A document WordPerfect 5.1 itself saved shows the layout the writer follows.
    const std::filesystem::path sample = std::filesystem::path(QM_CORPUS_DIR) / "wp" / "SANYIG01.C3P";
    if (std::filesystem::exists(sample)) {
        const Summary51 real = readSummary51(summaryPacketOf(testing_support::readFile(sample.string())));
        EXPECT_TRUE(real.markers);
        EXPECT_EQ(real.type, std::string("pecha 01") + std::string(12, ' ') + '\0');
        EXPECT_EQ(real.year, 1994);
    }

    testing_support::TempDir scratch;
    const std::string odt = withMetadata("Quarterly R\u00E9port");
    const std::string destination = scratch.file("summary.wp5");
    ASSERT_EQ(ProgramRun::of({ODT2WP5_PATH, "--wp5", scratch.write("s.fodt", odt), destination}).status, 0);
    const std::string file = testing_support::readFile(destination);
    EXPECT_TRUE(wptest::readWordPerfect(file).ok) << "libwpd still reads the file";
    const Summary51 ours = readSummary51(summaryPacketOf(file));
    EXPECT_TRUE(ours.markers);
    EXPECT_EQ(ours.name.substr(0, 11), "Quarterly R");
    EXPECT_EQ(ours.name[11], '\xC0') << "é as a WordPerfect character code, C0 number set C0";
    EXPECT_EQ(ours.name.substr(14, 5), "\xC0port");
    EXPECT_EQ(ours.name.find_first_not_of(' ', 21), std::string::npos) << "padded with spaces";
    EXPECT_EQ(ours.fields,
              (std::vector<std::string>{"Finances", "Ada Lovelace", "", "A short summary", "", "money"}));
    // The tests' runs stand SOURCE_DATE_EPOCH (2000-01-01 00:00 UTC) for the clock.
    EXPECT_EQ(ours.year, 2000);
    EXPECT_EQ(summaryPacketOf(file).substr(0, 15), "01-01-00 12:00a");
}

} // namespace
