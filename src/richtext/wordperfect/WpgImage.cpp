#include "WpgImage.h"

#include "Bytes.h"
#include "SvgImage.h"
#include "SvmImage.h"

#include <gif_lib.h>
#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

namespace richtext::wordperfect {

namespace {

std::optional<Raster> decodePng(std::string_view bytes)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()))
        return std::nullopt;
    image.format = PNG_FORMAT_RGB;
    Raster raster;
    raster.width = static_cast<int>(image.width);
    raster.height = static_cast<int>(image.height);
    if (raster.width <= 0 || raster.height <= 0 || std::size_t(raster.width) * raster.height > 64u << 20) {
        png_image_free(&image);
        return std::nullopt;
    }
    raster.rgb.resize(PNG_IMAGE_SIZE(image));
    const png_color white{255, 255, 255};
    if (!png_image_finish_read(&image, &white, raster.rgb.data(), 0, nullptr)) {
        png_image_free(&image);
        return std::nullopt;
    }
    return raster;
}

struct JpegError {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

void jpegFailed(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JpegError *>(info->err)->jump, 1);
}

void jpegQuiet(j_common_ptr, int) {}

// No C++ object with a destructor lives between setjmp and a longjmp back to it.
// The first image of a GIF, its transparent colour laid over white; an animation shows its first
// frame, as a printed page would.
std::optional<Raster> decodeGif(std::string_view bytes)
{
    struct Source {
        std::string_view rest;
    } source{bytes};
    const InputFunc read = [](GifFileType *gif, GifByteType *into, int wanted) -> int {
        auto &from = static_cast<Source *>(gif->UserData)->rest;
        const std::size_t count =
            std::min<std::size_t>(from.size(), static_cast<std::size_t>(std::max(wanted, 0)));
        std::copy_n(from.data(), count, into);
        from.remove_prefix(count);
        return static_cast<int>(count);
    };
    int error = 0;
    GifFileType *gif = DGifOpen(&source, read, &error);
    if (!gif)
        return std::nullopt;
    std::optional<Raster> result;
    const auto area = static_cast<std::size_t>(std::max(0, gif->SWidth)) *
                      static_cast<std::size_t>(std::max(0, gif->SHeight));
    if (area > 0 && area <= (64u << 20) && DGifSlurp(gif) == GIF_OK && gif->ImageCount > 0) {
        const SavedImage &frame = gif->SavedImages[0];
        const ColorMapObject *colours = frame.ImageDesc.ColorMap ? frame.ImageDesc.ColorMap : gif->SColorMap;
        GraphicsControlBlock control{};
        control.TransparentColor = NO_TRANSPARENT_COLOR;
        DGifSavedExtensionToGCB(gif, 0, &control);
        Raster raster;
        raster.width = gif->SWidth;
        raster.height = gif->SHeight;
        raster.rgb.assign(area * 3, 0xFF);
        const GifImageDesc &place = frame.ImageDesc;
        for (int y = 0; colours && y < place.Height; ++y) {
            for (int x = 0; x < place.Width; ++x) {
                const int px = place.Left + x, py = place.Top + y;
                if (px < 0 || py < 0 || px >= raster.width || py >= raster.height)
                    continue;
                const int index = frame.RasterBits[static_cast<std::size_t>(y) * place.Width + x];
                if (index == control.TransparentColor || index >= colours->ColorCount)
                    continue;
                const GifColorType colour = colours->Colors[index];
                unsigned char *pixel = &raster.rgb[(static_cast<std::size_t>(py) * raster.width + px) * 3];
                pixel[0] = colour.Red;
                pixel[1] = colour.Green;
                pixel[2] = colour.Blue;
            }
        }
        result = std::move(raster);
    }
    DGifCloseFile(gif, &error);
    return result;
}

bool decodeJpegInto(std::string_view bytes, Raster &raster)
{
    jpeg_decompress_struct info;
    JpegError error;
    info.err = jpeg_std_error(&error.manager);
    error.manager.error_exit = jpegFailed;
    error.manager.emit_message = jpegQuiet;
    if (setjmp(error.jump)) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char *>(bytes.data()),
                 static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_RGB;
    jpeg_start_decompress(&info);
    if (info.output_components != 3 || std::size_t(info.output_width) * info.output_height > 64u << 20) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    raster.width = static_cast<int>(info.output_width);
    raster.height = static_cast<int>(info.output_height);
    raster.rgb.resize(std::size_t(raster.width) * raster.height * 3);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = raster.rgb.data() + std::size_t(info.output_scanline) * raster.width * 3;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return true;
}

Raster scaledToFit(const Raster &raster, int maxSide)
{
    const int longest = std::max(raster.width, raster.height);
    if (longest <= maxSide)
        return raster;
    Raster small;
    small.width = std::max(1, static_cast<int>(static_cast<long long>(raster.width) * maxSide / longest));
    small.height = std::max(1, static_cast<int>(static_cast<long long>(raster.height) * maxSide / longest));
    small.rgb.resize(std::size_t(small.width) * small.height * 3);
    for (int y = 0; y < small.height; ++y) {
        const int sy = static_cast<int>(static_cast<long long>(y) * raster.height / small.height);
        for (int x = 0; x < small.width; ++x) {
            const int sx = static_cast<int>(static_cast<long long>(x) * raster.width / small.width);
            std::copy_n(&raster.rgb[(std::size_t(sy) * raster.width + sx) * 3], 3,
                        &small.rgb[(std::size_t(y) * small.width + x) * 3]);
        }
    }
    return small;
}

// 256 colours: a 6x6x6 cube and a 40-step grey ramp. A 4x4 ordered dither keeps photographs
// from banding; the grey ramp keeps text and line art neutral.
constexpr int cubeSteps = 6;
constexpr int greyBase = cubeSteps * cubeSteps * cubeSteps;
constexpr int greySteps = 256 - greyBase;

unsigned char paletteIndex(const unsigned char *rgb, int x, int y)
{
    static const int bayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    const int lo = std::min({rgb[0], rgb[1], rgb[2]});
    const int hi = std::max({rgb[0], rgb[1], rgb[2]});
    const int threshold = bayer[y & 3][x & 3];
    if (hi - lo < 10) {
        const int grey = (rgb[0] + rgb[1] + rgb[2]) / 3;
        const int scaled = grey * (greySteps - 1) * 16 + threshold * 255;
        return static_cast<unsigned char>(greyBase + std::min(greySteps - 1, scaled / (255 * 16)));
    }
    int index = 0;
    for (int c = 0; c < 3; ++c) {
        const int scaled = rgb[c] * (cubeSteps - 1) * 16 + threshold * 255;
        index = index * cubeSteps + std::min(cubeSteps - 1, scaled / (255 * 16));
    }
    return static_cast<unsigned char>(index);
}

// The picture's colours, sorted, when there are no more than a colour map holds.
std::optional<std::vector<std::uint32_t>> exactColours(const Raster &raster)
{
    std::vector<std::uint32_t> colours;
    for (std::size_t i = 0; i + 2 < raster.rgb.size(); i += 3) {
        const std::uint32_t colour =
            std::uint32_t(raster.rgb[i]) << 16 | std::uint32_t(raster.rgb[i + 1]) << 8 | raster.rgb[i + 2];
        const auto at = std::lower_bound(colours.begin(), colours.end(), colour);
        if (at != colours.end() && *at == colour)
            continue;
        if (colours.size() == 256)
            return std::nullopt;
        colours.insert(at, colour);
    }
    return colours;
}

// WordPerfect Graphics record lengths: one byte below 0xFF, else FF and a word, and above 0x7FFF
// FF, the high word with its top bit set, then the low word.
void putLength(std::string &out, std::size_t size)
{
    if (size < 0xFF) {
        put8(out, static_cast<unsigned>(size));
    } else if (size < 0x8000) {
        put8(out, 0xFF);
        put16(out, static_cast<unsigned>(size));
    } else {
        put8(out, 0xFF);
        put16(out, static_cast<unsigned>((size >> 16) | 0x8000));
        put16(out, static_cast<unsigned>(size & 0xFFFF));
    }
}

void putRecord(std::string &out, int type, const std::string &data)
{
    put8(out, static_cast<unsigned>(type));
    putLength(out, data.size());
    out += data;
}

// Run-length coding, a scanline at a time: 80|n b = n times b, n b.. = n literal bytes, 00 n =
// the previous scanline n more times.
void encodeRow(std::string &out, const unsigned char *row, int width)
{
    int i = 0;
    while (i < width) {
        int run = 1;
        while (i + run < width && run < 127 && row[i + run] == row[i])
            ++run;
        if (run >= 3) {
            put8(out, 0x80 | static_cast<unsigned>(run));
            put8(out, row[i]);
            i += run;
            continue;
        }
        int literal = 0;
        while (i + literal < width && literal < 127) {
            const int at = i + literal;
            if (at + 2 < width && row[at] == row[at + 1] && row[at] == row[at + 2])
                break;
            ++literal;
        }
        put8(out, static_cast<unsigned>(literal));
        out.append(reinterpret_cast<const char *>(row + i), literal);
        i += literal;
    }
}

} // namespace

bool isRasterFormat(std::string_view bytes)
{
    return isSvm(bytes) || looksLikeSvg(bytes) || bytes.substr(0, 8) == "\x89PNG\r\n\x1A\n" ||
           bytes.substr(0, 4) == "GIF8" || bytes.substr(0, 3) == "\xFF\xD8\xFF";
}

std::optional<Raster> decodeRaster(std::string_view bytes, int maxSide)
{
    // Drawings are rendered to fit maxSide from the start.
    if (isSvm(bytes))
        return renderSvm(bytes, maxSide);
    if (looksLikeSvg(bytes))
        return renderSvg(bytes, maxSide);
    std::optional<Raster> raster;
    if (bytes.substr(0, 8) == "\x89PNG\r\n\x1A\n") {
        raster = decodePng(bytes);
    } else if (bytes.substr(0, 4) == "GIF8") {
        raster = decodeGif(bytes);
    } else if (bytes.substr(0, 3) == "\xFF\xD8\xFF") {
        Raster jpeg;
        if (decodeJpegInto(bytes, jpeg))
            raster = std::move(jpeg);
    }
    if (!raster)
        return std::nullopt;
    return scaledToFit(*raster, maxSide);
}

std::string wpg1Records(const Raster &raster, int widthWpu, int heightWpu)
{
    widthWpu = std::clamp(widthWpu, 1, 0x7FFF);
    heightWpu = std::clamp(heightWpu, 1, 0x7FFF);
    std::string out;
    std::string start;
    put8(start, 1); // version
    put8(start, 0); // flags
    put16(start, static_cast<unsigned>(widthWpu));
    put16(start, static_cast<unsigned>(heightWpu));
    putRecord(out, 0x0F, start);

    // A picture of at most 256 colours (a diagram, a logo, a screenshot) keeps them exactly; others
    // take the fixed cube and grey ramp, dithered.
    const std::optional<std::vector<std::uint32_t>> exact = exactColours(raster);
    std::string palette;
    put16(palette, 0);
    put16(palette, 256);
    if (exact) {
        for (std::size_t i = 0; i < 256; ++i) {
            const std::uint32_t rgb = i < exact->size() ? (*exact)[i] : 0;
            put8(palette, rgb >> 16);
            put8(palette, rgb >> 8);
            put8(palette, rgb);
        }
    } else {
        for (int i = 0; i < greyBase; ++i) {
            put8(palette, (i / 36) * 51);
            put8(palette, (i / 6 % 6) * 51);
            put8(palette, (i % 6) * 51);
        }
        for (int i = 0; i < greySteps; ++i) {
            const unsigned grey = static_cast<unsigned>(i * 255 / (greySteps - 1));
            put8(palette, grey);
            put8(palette, grey);
            put8(palette, grey);
        }
    }
    putRecord(out, 0x0E, palette);

    // No pen, and a line of no length drawn with it: libwpg hands a bitmap to the drawing with
    // the last style a shape set, and with none LibreOffice outlines the picture.
    std::string pen;
    put8(pen, 0); // line style: none
    put8(pen, 0);
    put16(pen, 0);
    putRecord(out, 0x02, pen);
    putRecord(out, 0x05, std::string(8, '\0'));

    std::string bitmap;
    put16(bitmap, 0); // rotation
    put16(bitmap, 0); // lower-left corner
    put16(bitmap, 0);
    put16(bitmap, static_cast<unsigned>(widthWpu)); // upper-right corner
    put16(bitmap, static_cast<unsigned>(heightWpu));
    put16(bitmap, static_cast<unsigned>(raster.width));
    put16(bitmap, static_cast<unsigned>(raster.height));
    put16(bitmap, 8); // bits per pixel
    // libwpg measures the corners in units of the resolution, WordPerfect in WPU: 1200 suits both.
    put16(bitmap, 1200);
    put16(bitmap, 1200);
    std::vector<unsigned char> previous;
    std::vector<unsigned char> row(static_cast<std::size_t>(raster.width));
    int repeats = 0;
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width; ++x) {
            const unsigned char *rgb = &raster.rgb[(std::size_t(y) * raster.width + x) * 3];
            if (exact) {
                const std::uint32_t colour =
                    std::uint32_t(rgb[0]) << 16 | std::uint32_t(rgb[1]) << 8 | rgb[2];
                row[x] = static_cast<unsigned char>(std::lower_bound(exact->begin(), exact->end(), colour) -
                                                    exact->begin());
            } else {
                row[x] = paletteIndex(rgb, x, y);
            }
        }
        if (row == previous && repeats < 255) {
            ++repeats;
            continue;
        }
        if (repeats) {
            put8(bitmap, 0);
            put8(bitmap, static_cast<unsigned>(repeats));
            repeats = 0;
        }
        encodeRow(bitmap, row.data(), raster.width);
        previous = row;
    }
    if (repeats) {
        put8(bitmap, 0);
        put8(bitmap, static_cast<unsigned>(repeats));
    }
    // libwpg stops decoding one byte before a record's end; a spare byte keeps the last code.
    put8(bitmap, 0);
    putRecord(out, 0x14, bitmap);
    putRecord(out, 0x10, {});
    return out;
}

std::string wpg1File(const Raster &raster, int widthWpu, int heightWpu)
{
    std::string file = "\xFFWPC";
    put32(file, 16);  // records start after this prefix
    put8(file, 1);    // WordPerfect
    put8(file, 0x16); // graphics
    put8(file, 1);    // version 1
    put8(file, 0);
    put16(file, 0); // not encrypted
    put16(file, 0);
    return file + wpg1Records(raster, widthWpu, heightWpu);
}

namespace {

// WordPerfect Graphics 2 records: a class byte (unused by readers), the type, the count of records
// it holds (none here), then the length as in version 1.
void putRecord2(std::string &out, int type, const std::string &data)
{
    put8(out, 0);
    put8(out, static_cast<unsigned>(type));
    put8(out, 0);
    putLength(out, data.size());
    out += data;
}

// 24-bit pixels run-length coded three bytes at a time: 7D 03 sets the unit, 80|n p = n+1 times p,
// n p.. = n+1 literal pixels. Counts stop short of the codes 7D-7F and FD-FF, which mean other
// things.
std::string trueColourRuns(const Raster &raster)
{
    std::string out = "\x7D\x03";
    const std::size_t pixels = std::size_t(raster.width) * raster.height;
    auto same = [&](std::size_t a, std::size_t b) {
        return std::equal(&raster.rgb[a * 3], &raster.rgb[a * 3 + 3], &raster.rgb[b * 3]);
    };
    auto pixel = [&](std::size_t at) { out.append(reinterpret_cast<const char *>(&raster.rgb[at * 3]), 3); };
    constexpr std::size_t longest = 125;
    std::size_t at = 0;
    while (at < pixels) {
        std::size_t run = 1;
        while (at + run < pixels && run < longest && same(at, at + run))
            ++run;
        if (run > 1) {
            put8(out, static_cast<unsigned>(0x80 | (run - 1)));
            pixel(at);
            at += run;
            continue;
        }
        std::size_t literal = 1;
        while (at + literal < pixels && literal < longest &&
               !(at + literal + 1 < pixels && same(at + literal, at + literal + 1)))
            ++literal;
        put8(out, static_cast<unsigned>(literal - 1));
        for (std::size_t i = 0; i < literal; ++i)
            pixel(at + i);
        at += literal;
    }
    return out;
}

std::string wpg2TrueColourFile(const Raster &raster, int widthWpu, int heightWpu)
{
    std::string file = "\xFFWPC";
    put32(file, 16);
    put8(file, 1);    // WordPerfect
    put8(file, 0x16); // graphics
    put8(file, 2);    // version 2
    put8(file, 0);
    put16(file, 0);
    put16(file, 0);

    std::string start;
    put16(start, 1200); // units per inch, across and down
    put16(start, 1200);
    put8(start, 0);               // 16-bit coordinates
    for (int i = 0; i < 2; ++i) { // the viewport, then the image's own extent
        put16(start, 0);
        put16(start, 0);
        put16(start, static_cast<unsigned>(widthWpu));
        put16(start, static_cast<unsigned>(heightWpu));
    }
    putRecord2(file, 0x01, start);

    // A line of no length, neither framed nor filled: as in version 1, the bitmap is drawn with the
    // style the last shape set, and with none LibreOffice outlines it.
    std::string line;
    put16(line, 0); // not framed, not filled
    put16(line, 2);
    line.append(8, '\0');
    putRecord2(file, 0x15, line);

    std::string bitmap;
    put16(bitmap, 0); // no rotation, scaling or other object attributes
    put16(bitmap, 0);
    put16(bitmap, 0);
    put16(bitmap, static_cast<unsigned>(widthWpu));
    put16(bitmap, static_cast<unsigned>(heightWpu));
    put16(bitmap, static_cast<unsigned>(std::lround(raster.pixelsPerInch)));
    put16(bitmap, static_cast<unsigned>(std::lround(raster.pixelsPerInch)));
    putRecord2(file, 0x1B, bitmap);

    std::string data;
    put16(data, static_cast<unsigned>(raster.width));
    put16(data, static_cast<unsigned>(raster.height));
    put8(data, 8); // 24-bit RGB
    put8(data, 1); // run-length coded
    data += trueColourRuns(raster);
    putRecord2(file, 0x0E, data);
    putRecord2(file, 0x02, {});
    return file;
}

} // namespace

std::string wp6Graphic(const Raster &raster, int widthWpu, int heightWpu)
{
    widthWpu = std::clamp(widthWpu, 1, 0x7FFF);
    heightWpu = std::clamp(heightWpu, 1, 0x7FFF);
    if (exactColours(raster) || raster.width > 0xFFFF || raster.height > 0xFFFF)
        return wpg1File(raster, widthWpu, heightWpu);
    return wpg2TrueColourFile(raster, widthWpu, heightWpu);
}

} // namespace richtext::wordperfect
