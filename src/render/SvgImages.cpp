#include "SvgImages.h"

#include "WmfRenderer.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <librevenge/librevenge.h>

#include <charconv>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace SvgImages {
namespace {

// About 200 dots per inch for a picture five inches wide: libwmf draws
// without anti-aliasing, so it is drawn finer than it is shown.
constexpr unsigned drawingSide = 1024;

using Converter = std::function<std::optional<std::string>(std::string_view bytes)>;

std::optional<std::string> pngUri(std::string_view base64, const Converter &convert)
{
    try {
        const librevenge::RVNGBinaryData data(librevenge::RVNGString(std::string(base64).c_str()));
        if (!data.getDataBuffer())
            return std::nullopt;
        const std::optional<std::string> png =
            convert(std::string_view(reinterpret_cast<const char *>(data.getDataBuffer()), data.size()));
        if (!png)
            return std::nullopt;
        const librevenge::RVNGBinaryData pngData(reinterpret_cast<const unsigned char *>(png->data()),
                                                 png->size());
        return "data:image/png;base64," + std::string(pngData.getBase64Data().cstr());
    } catch (...) {
        // librevenge's base64 decoder throws on characters outside the alphabet.
        return std::nullopt;
    }
}

// Every data URI that starts with one of the prefixes, converted to PNG where the converter can.
std::string replaced(const std::string &svg, std::initializer_list<std::string_view> prefixes,
                     const Converter &convert, int *unconverted = nullptr)
{
    std::string result;
    std::size_t from = 0;
    while (true) {
        std::size_t at = std::string::npos;
        std::string_view prefix;
        for (const std::string_view candidate : prefixes)
            if (const std::size_t found = svg.find(candidate, from); found < at) {
                at = found;
                prefix = candidate;
            }
        const std::size_t end = at == std::string::npos ? at : svg.find_first_of("\"'", at);
        if (end == std::string::npos)
            break;
        const std::string_view data =
            std::string_view(svg).substr(at + prefix.size(), end - at - prefix.size());
        result.append(svg, from, at - from);
        if (const std::optional<std::string> uri = pngUri(data, convert))
            result += *uri;
        else {
            result.append(svg, at, end - at);
            if (unconverted)
                ++*unconverted;
        }
        from = end;
    }
    result.append(svg, from, std::string::npos);
    return result;
}

struct Unref {
    void operator()(void *object) const { g_object_unref(object); }
};

// 32-bit BMPs load with an alpha channel that is opaque throughout; without
// it the PNG is smaller and readers need no mask. Null when the alpha counts.
GdkPixbuf *withoutAlpha(GdkPixbuf *pixbuf)
{
    if (!gdk_pixbuf_get_has_alpha(pixbuf) || gdk_pixbuf_get_bits_per_sample(pixbuf) != 8 ||
        gdk_pixbuf_get_n_channels(pixbuf) != 4)
        return nullptr;
    const int width = gdk_pixbuf_get_width(pixbuf);
    const int height = gdk_pixbuf_get_height(pixbuf);
    const int stride = gdk_pixbuf_get_rowstride(pixbuf);
    const guchar *pixels = gdk_pixbuf_read_pixels(pixbuf);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (pixels[y * stride + x * 4 + 3] != 255)
                return nullptr;
    GdkPixbuf *opaque = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
    if (!opaque)
        return nullptr;
    guchar *target = gdk_pixbuf_get_pixels(opaque);
    const int targetStride = gdk_pixbuf_get_rowstride(opaque);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                target[y * targetStride + x * 3 + channel] = pixels[y * stride + x * 4 + channel];
    return opaque;
}

std::optional<std::string> bitmapAsPng(std::string_view bytes)
{
    std::unique_ptr<GdkPixbufLoader, Unref> loader(gdk_pixbuf_loader_new_with_type("bmp", nullptr));
    if (!loader || !gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar *>(bytes.data()),
                                            bytes.size(), nullptr))
        return std::nullopt;
    if (!gdk_pixbuf_loader_close(loader.get(), nullptr))
        return std::nullopt;
    GdkPixbuf *pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!pixbuf)
        return std::nullopt;
    std::unique_ptr<GdkPixbuf, Unref> opaque(withoutAlpha(pixbuf));
    gchar *png = nullptr;
    gsize size = 0;
    if (!gdk_pixbuf_save_to_buffer(opaque ? opaque.get() : pixbuf, &png, &size, "png", nullptr, nullptr))
        return std::nullopt;
    std::string result(png, size);
    g_free(png);
    return result;
}

unsigned u16At(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8;
}

// The bitmaps of a WPG 1 graphic in the order libwpg draws them, with the dots per inch of each
// positioned one (record 0x14); none for the unpositioned kind (0x0B), which libwpg sizes rightly.
std::vector<std::optional<std::pair<int, int>>> wpg1Bitmaps(std::string_view wpg)
{
    std::vector<std::optional<std::pair<int, int>>> bitmaps;
    std::size_t at = 0;
    if (wpg.size() >= 16 && wpg.substr(0, 4) == "\xFFWPC") {
        if (wpg[10] != 1) // a WPG 2 graphic places its bitmaps itself
            return bitmaps;
        at = u16At(wpg, 4) | std::size_t(u16At(wpg, 6)) << 16;
    }
    while (at + 2 <= wpg.size()) {
        const unsigned type = static_cast<unsigned char>(wpg[at]);
        std::size_t length = static_cast<unsigned char>(wpg[at + 1]);
        at += 2;
        if (length == 0xFF) {
            if (at + 2 > wpg.size())
                break;
            length = u16At(wpg, at);
            at += 2;
            if (length & 0x8000) {
                if (at + 2 > wpg.size())
                    break;
                length = (length & 0x7FFF) << 16 | u16At(wpg, at);
                at += 2;
            }
        }
        if (length > wpg.size() - at || type == 0x10)
            break;
        if (type == 0x0B) {
            bitmaps.emplace_back();
        } else if (type == 0x14 && length >= 20) {
            bitmaps.emplace_back(std::pair(static_cast<std::int16_t>(u16At(wpg, at + 16)),
                                           static_cast<std::int16_t>(u16At(wpg, at + 18))));
        }
        at += length;
    }
    return bitmaps;
}

// The attribute's number in `element` multiplied by `factor`, written back in its place.
void scaleAttribute(std::string &element, std::string_view name, double factor)
{
    const std::string key = " " + std::string(name) + "=\"";
    const std::size_t start = element.find(key);
    if (start == std::string::npos)
        return;
    const std::size_t from = start + key.size();
    const std::size_t end = element.find('"', from);
    double value = 0;
    if (end == std::string::npos ||
        std::from_chars(element.data() + from, element.data() + end, value).ptr != element.data() + end)
        return;
    char number[32];
    const auto written =
        std::to_chars(number, number + sizeof number, value * factor, std::chars_format::fixed, 4);
    element.replace(from, end - from, std::string(number, written.ptr));
}

} // namespace

std::string placeWpg1Bitmaps(const std::string &svg, std::string_view wpg)
{
    if (svg.find("data:image/bmp;base64,") == std::string::npos)
        return svg;
    const auto bitmaps = wpg1Bitmaps(wpg);
    std::string result;
    std::size_t from = 0, next = 0;
    while (next < bitmaps.size()) {
        const std::size_t at = svg.find("image x=\"", from);
        if (at == std::string::npos)
            break;
        const std::size_t href = svg.find("href=\"", at);
        if (href == std::string::npos)
            break;
        result.append(svg, from, at - from);
        std::string element = svg.substr(at, href - at);
        from = href;
        if (svg.compare(href + 6, 22, "data:image/bmp;base64,") != 0) {
            result += element;
            continue;
        }
        if (const auto &dpi = bitmaps[next++]; dpi && dpi->first > 0 && dpi->second > 0) {
            element = " " + element; // every attribute after a space
            for (const char *name : {"x", "width"})
                scaleAttribute(element, name, dpi->first / 1200.0);
            for (const char *name : {"y", "height"})
                scaleAttribute(element, name, dpi->second / 1200.0);
            element.erase(0, 1);
        }
        result += element;
    }
    result.append(svg, from, std::string::npos);
    return result;
}

std::string drawMetafiles(const std::string &svg, int *undrawn)
{
    if (svg.find("wmf;base64,") == std::string::npos)
        return svg;
    return replaced(
        svg, {"data:image/wmf;base64,", "data:image/x-wmf;base64,"},
        [](std::string_view metafile) { return WmfRenderer::renderPNG(metafile, drawingSide); }, undrawn);
}

std::string compressBitmaps(const std::string &svg)
{
    if (svg.find("bmp;base64,") == std::string::npos)
        return svg;
    return replaced(svg, {"data:image/bmp;base64,", "data:image/x-ms-bmp;base64,"}, bitmapAsPng);
}

} // namespace SvgImages
