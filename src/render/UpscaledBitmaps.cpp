#include "UpscaledBitmaps.h"

#include "richtext/Numbers.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace UpscaledBitmaps {
namespace {

constexpr const char *svgNamespace = "http://www.w3.org/2000/svg";

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// A map that only scales and moves, so boxes stay upright boxes.
struct Upright {
    double scaleX = 1;
    double scaleY = 1;
    double moveX = 0;
    double moveY = 0;

    // This map applied after the inner one.
    Upright after(const Upright &inner) const
    {
        return {scaleX * inner.scaleX, scaleY * inner.scaleY, scaleX * inner.moveX + moveX,
                scaleY * inner.moveY + moveY};
    }
    Rect map(const Rect &r) const
    {
        return {r.x * scaleX + moveX, r.y * scaleY + moveY, r.width * scaleX, r.height * scaleY};
    }
};

struct DocFree {
    void operator()(xmlDoc *doc) const { xmlFreeDoc(doc); }
};
struct ObjectUnref {
    void operator()(void *object) const
    {
        if (object)
            g_object_unref(object);
    }
};
using Doc = std::unique_ptr<xmlDoc, DocFree>;
using Pixbuf = std::unique_ptr<GdkPixbuf, ObjectUnref>;

// One enlarged bitmap: its element, its pixels and the box it is fitted into.
struct Candidate {
    xmlNode *node = nullptr;
    xmlAttr *href = nullptr;
    Pixbuf pixels;
    Rect box;             // x, y, width, height in user units
    bool stretch = false; // preserveAspectRatio="none"
    Upright toCanvas;
};

std::string attributeValue(xmlNode *node, const char *name)
{
    xmlChar *value = xmlGetNoNsProp(node, reinterpret_cast<const xmlChar *>(name));
    if (!value)
        return {};
    std::string text(reinterpret_cast<const char *>(value));
    xmlFree(value);
    return text;
}

bool isSvgElement(const xmlNode *node, const char *name)
{
    return node->type == XML_ELEMENT_NODE && node->ns &&
           std::strcmp(reinterpret_cast<const char *>(node->ns->href), svgNamespace) == 0 &&
           std::strcmp(reinterpret_cast<const char *>(node->name), name) == 0;
}

std::vector<double> numbers(const std::string &text)
{
    std::vector<double> found;
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto number = richtext::Numbers::leading(rest);
        if (!number) {
            rest.remove_prefix(1);
            continue;
        }
        found.push_back(number->value);
        rest.remove_prefix(number->length);
    }
    return found;
}

// Translations and scalings keep a box a box; anything else would need the
// bitmap drawn at a slant, which librsvg is left to do.
std::optional<Upright> uprightTransform(const std::string &transform)
{
    Upright map;
    size_t at = 0;
    const auto skip = [&](const char *characters) {
        while (at < transform.size() && std::strchr(characters, transform[at]) && transform[at] != '\0')
            ++at;
    };
    for (skip(" \t\r\n,"); at < transform.size(); skip(" \t\r\n,")) {
        const bool scale = transform.compare(at, 5, "scale") == 0;
        if (!scale && transform.compare(at, 9, "translate") != 0)
            return std::nullopt;
        at += scale ? 5 : 9;
        skip(" \t\r\n");
        const size_t close = transform.find(')', at);
        if (at >= transform.size() || transform[at] != '(' || close == std::string::npos)
            return std::nullopt;
        const std::string arguments = transform.substr(at + 1, close - at - 1);
        if (arguments.find_first_not_of("-+0123456789.eE, \t\r\n") != std::string::npos)
            return std::nullopt;
        const std::vector<double> values = numbers(arguments);
        if (values.empty() || values.size() > 2)
            return std::nullopt;
        const double second = values.size() == 2 ? values[1] : (scale ? values[0] : 0);
        map = map.after(scale ? Upright{values[0], second, 0, 0} : Upright{1, 1, values[0], second});
        at = close + 1;
    }
    return map;
}

// How the root's user units land on the canvas: a viewBox is fitted and
// centred (or stretched); without one, a user unit is a canvas pixel.
std::optional<Upright> rootMapping(xmlNode *root, int canvasWidth, int canvasHeight)
{
    const std::string viewBox = attributeValue(root, "viewBox");
    if (viewBox.empty())
        return Upright{};
    const std::vector<double> box = numbers(viewBox);
    if (box.size() != 4 || !(box[2] > 0) || !(box[3] > 0))
        return std::nullopt;
    const std::string fit = attributeValue(root, "preserveAspectRatio");
    double scaleX = canvasWidth / box[2];
    double scaleY = canvasHeight / box[3];
    if (fit != "none") {
        if (!fit.empty() && fit != "xMidYMid" && fit != "xMidYMid meet")
            return std::nullopt;
        scaleX = scaleY = std::min(scaleX, scaleY);
    }
    return Upright{scaleX, scaleY, (canvasWidth - box[2] * scaleX) / 2 - box[0] * scaleX,
                   (canvasHeight - box[3] * scaleY) / 2 - box[1] * scaleY};
}

// Only images drawn where they stand, in upright boxes, qualify: inside a
// pattern, mask, marker, symbol or nested viewport an image is drawn
// elsewhere, repeatedly or clipped by rules this step does not follow.
std::optional<Upright> placement(xmlNode *image, const Upright &root)
{
    Upright map;
    for (xmlNode *node = image; node && node->type == XML_ELEMENT_NODE; node = node->parent) {
        const bool isRoot = node->parent && node->parent->type == XML_DOCUMENT_NODE;
        if (node != image && !(isRoot && isSvgElement(node, "svg")) && !isSvgElement(node, "g") &&
            !isSvgElement(node, "a") && !isSvgElement(node, "switch"))
            return std::nullopt;
        if (isRoot && node == image)
            return std::nullopt;
        const auto own = uprightTransform(attributeValue(node, "transform"));
        if (!own)
            return std::nullopt;
        map = own->after(map);
    }
    return root.after(map);
}

// A plain number or pixels; other units are left to librsvg.
std::optional<double> userLength(const std::string &text, bool required)
{
    if (text.empty())
        return required ? std::nullopt : std::optional<double>(0);
    const auto number = richtext::Numbers::leading(text);
    if (!number || !std::isfinite(number->value))
        return std::nullopt;
    const std::string rest = text.substr(number->length);
    if (!rest.empty() && rest != "px")
        return std::nullopt;
    return number->value;
}

Pixbuf decodeDataURI(const std::string &uri)
{
    const auto comma = uri.find(',');
    if (uri.rfind("data:", 0) != 0 || comma == std::string::npos)
        return nullptr;
    const std::string header = uri.substr(5, comma - 5);
    // Vector pictures stay vector.
    if (header.find(";base64") == std::string::npos || header.find("svg") != std::string::npos)
        return nullptr;
    gsize length = 0;
    std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(uri.c_str() + comma + 1, &length),
                                                     g_free);
    std::unique_ptr<GdkPixbufLoader, ObjectUnref> loader(gdk_pixbuf_loader_new());
    if (!bytes || length == 0 || !gdk_pixbuf_loader_write(loader.get(), bytes.get(), length, nullptr))
        return nullptr;
    if (!gdk_pixbuf_loader_close(loader.get(), nullptr))
        return nullptr;
    GdkPixbuf *pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!pixbuf || gdk_pixbuf_get_bits_per_sample(pixbuf) != 8 || gdk_pixbuf_get_n_channels(pixbuf) < 3)
        return nullptr;
    return Pixbuf(GDK_PIXBUF(g_object_ref(pixbuf)));
}

std::optional<Candidate> candidateFor(xmlNode *image, const Upright &root)
{
    const auto toCanvas = placement(image, root);
    if (!toCanvas)
        return std::nullopt;
    for (const char *effect : {"clip-path", "mask", "filter", "style"}) {
        if (!attributeValue(image, effect).empty())
            return std::nullopt;
    }
    Candidate candidate;
    candidate.node = image;
    candidate.toCanvas = *toCanvas;
    for (xmlAttr *attribute = image->properties; attribute; attribute = attribute->next) {
        if (std::strcmp(reinterpret_cast<const char *>(attribute->name), "href") == 0)
            candidate.href = attribute;
    }
    if (!candidate.href)
        return std::nullopt;
    const auto x = userLength(attributeValue(image, "x"), false);
    const auto y = userLength(attributeValue(image, "y"), false);
    const auto width = userLength(attributeValue(image, "width"), true);
    const auto height = userLength(attributeValue(image, "height"), true);
    if (!x || !y || !width || !height || *width <= 0 || *height <= 0)
        return std::nullopt;
    candidate.box = {*x, *y, *width, *height};
    const std::string fit = attributeValue(image, "preserveAspectRatio");
    candidate.stretch = fit == "none";
    if (!candidate.stretch && !fit.empty() && fit != "xMidYMid" && fit != "xMidYMid meet")
        return std::nullopt;

    xmlChar *uri = xmlNodeListGetString(image->doc, candidate.href->children, 1);
    if (!uri)
        return std::nullopt;
    candidate.pixels = decodeDataURI(reinterpret_cast<const char *>(uri));
    xmlFree(uri);
    if (!candidate.pixels)
        return std::nullopt;
    return candidate;
}

void collect(xmlNode *node, const Upright &root, std::vector<Candidate> &found, bool &hasUse)
{
    for (; node; node = node->next) {
        if (isSvgElement(node, "use"))
            hasUse = true;
        if (isSvgElement(node, "image")) {
            if (auto candidate = candidateFor(node, root))
                found.push_back(std::move(*candidate));
        } else if (node->type == XML_ELEMENT_NODE) {
            collect(node->children, root, found, hasUse);
        }
    }
}

std::string serialised(xmlDoc *doc)
{
    xmlChar *text = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(doc, &text, &size, "UTF-8");
    std::string markup(text ? reinterpret_cast<const char *>(text) : "",
                       text ? static_cast<size_t>(size) : 0);
    xmlFree(text);
    return markup;
}

// The box the bitmap fills inside its element's box, in user units.
Rect fitted(const Candidate &candidate)
{
    Rect drawn = candidate.box;
    if (candidate.stretch)
        return drawn;
    const double aspect = static_cast<double>(gdk_pixbuf_get_width(candidate.pixels.get())) /
                          gdk_pixbuf_get_height(candidate.pixels.get());
    if (drawn.width / drawn.height > aspect) {
        drawn.width = drawn.height * aspect;
        drawn.x += (candidate.box.width - drawn.width) / 2;
    } else {
        drawn.height = drawn.width / aspect;
        drawn.y += (candidate.box.height - drawn.height) / 2;
    }
    return drawn;
}

// Premultiplied ARGB words, as cairo and the filter below keep them.
std::vector<uint32_t> premultiplied(GdkPixbuf *pixbuf)
{
    const int width = gdk_pixbuf_get_width(pixbuf);
    const int height = gdk_pixbuf_get_height(pixbuf);
    const int channels = gdk_pixbuf_get_n_channels(pixbuf);
    const int stride = gdk_pixbuf_get_rowstride(pixbuf);
    const guchar *data = gdk_pixbuf_read_pixels(pixbuf);
    std::vector<uint32_t> words(static_cast<size_t>(width) * height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const guchar *p = data + static_cast<ptrdiff_t>(row) * stride + column * channels;
            const uint32_t alpha = channels == 4 ? p[3] : 255;
            const auto scaled = [alpha](uint32_t c) { return (c * alpha + 127) / 255; };
            words[static_cast<size_t>(row) * width + column] =
                alpha << 24 | scaled(p[0]) << 16 | scaled(p[1]) << 8 | scaled(p[2]);
        }
    }
    return words;
}

// One axis of the sampling: the two source pixels and the weight, in
// sixteenths, of the second, for a canvas pixel centre.
struct Tap {
    int first;
    int second;
    uint32_t weight;
};
Tap tapFor(double centre, double start, double length, int sourceLength)
{
    const double position = (centre - start) * sourceLength / length;
    const int64_t fixed = static_cast<int64_t>(std::floor(position * 65536)) - 32768;
    const auto clamped = [sourceLength](int64_t i) {
        return static_cast<int>(std::clamp<int64_t>(i, 0, sourceLength - 1));
    };
    return {clamped(fixed >> 16), clamped((fixed + 65536) >> 16), static_cast<uint32_t>((fixed >> 12) & 0xF)};
}

// Bilinear with weights in sixteenths, two channels at a time.
uint32_t blend(uint32_t a00, uint32_t a01, uint32_t a10, uint32_t a11, uint32_t x, uint32_t y)
{
    constexpr uint32_t mask = 0xFF00FF;
    const uint32_t xy = x * y;
    uint32_t lo = 0;
    uint32_t hi = 0;
    const auto add = [&](uint32_t pixel, uint32_t scale) {
        lo += (pixel & mask) * scale;
        hi += ((pixel >> 8) & mask) * scale;
    };
    add(a00, 256 - 16 * y - 16 * x + xy);
    add(a01, 16 * x - xy);
    add(a10, 16 * y - xy);
    add(a11, xy);
    return ((lo >> 8) & mask) | (hi & ~mask);
}

// Writes one premultiplied word as RGB or RGBA bytes; returns the next pixel.
guchar *unpremultiplied(uint32_t word, guchar *pixel, bool hasAlpha)
{
    const uint32_t alpha = word >> 24;
    const auto channel = [alpha](uint32_t c) {
        return static_cast<guchar>(
            alpha == 255 || alpha == 0 ? c : std::min<uint32_t>(255, (c * 255 + alpha / 2) / alpha));
    };
    *pixel++ = channel(word >> 16 & 0xFF);
    *pixel++ = channel(word >> 8 & 0xFF);
    *pixel++ = channel(word & 0xFF);
    if (hasAlpha)
        *pixel++ = static_cast<guchar>(alpha);
    return pixel;
}

std::string number(double value)
{
    return richtext::Numbers::shortest(value);
}

void setAttribute(xmlNode *node, const char *name, const std::string &value)
{
    xmlSetProp(node, reinterpret_cast<const xmlChar *>(name),
               reinterpret_cast<const xmlChar *>(value.c_str()));
}

// Replaces the candidate's bitmap by one covering exactly the canvas pixels
// whose centres the drawn box holds, so librsvg copies it pixel for pixel.
void resampleOnto(Candidate &candidate, int canvasWidth, int canvasHeight)
{
    const Upright &map = candidate.toCanvas;
    const Rect device = map.map(fitted(candidate));
    // Mirrored, flattened or unbounded drawings are left to librsvg.
    const bool finite = std::isfinite(device.x) && std::isfinite(device.y) && std::isfinite(device.width) &&
                        std::isfinite(device.height) && std::isfinite(map.scaleX) &&
                        std::isfinite(map.scaleY);
    if (!finite || !(map.scaleX > 0 && map.scaleY > 0 && device.width > 0 && device.height > 0))
        return;
    const int sourceWidth = gdk_pixbuf_get_width(candidate.pixels.get());
    const int sourceHeight = gdk_pixbuf_get_height(candidate.pixels.get());
    // Reductions are drawn with other filters (mipmaps) by web engines.
    if (!(device.width >= sourceWidth && device.height >= sourceHeight))
        return;
    // A canvas pixel is the bitmap's when its centre lies inside the box.
    const auto edge = [](double at, int limit) {
        return static_cast<int>(std::clamp(std::floor(at + 0.5), 0.0, static_cast<double>(limit)));
    };
    const int left = edge(device.x, canvasWidth);
    const int top = edge(device.y, canvasHeight);
    const int right = edge(device.x + device.width, canvasWidth);
    const int bottom = edge(device.y + device.height, canvasHeight);
    // Past 2^24 pixels the result would rarely stay under librsvg's limit
    // below, and would cost a second canvas-sized buffer to find out.
    if (right <= left || bottom <= top || static_cast<double>(right - left) * (bottom - top) > 16777216.0)
        return;

    const int width = right - left;
    const int height = bottom - top;
    const bool hasAlpha = gdk_pixbuf_get_has_alpha(candidate.pixels.get());
    Pixbuf out(gdk_pixbuf_new(GDK_COLORSPACE_RGB, hasAlpha, 8, width, height));
    if (!out)
        return;
    const std::vector<uint32_t> source = premultiplied(candidate.pixels.get());
    std::vector<Tap> columns;
    for (int x = left; x < right; ++x)
        columns.push_back(tapFor(x + 0.5, device.x, device.width, sourceWidth));
    guchar *data = gdk_pixbuf_get_pixels(out.get());
    const int stride = gdk_pixbuf_get_rowstride(out.get());
    for (int y = top; y < bottom; ++y) {
        const Tap row = tapFor(y + 0.5, device.y, device.height, sourceHeight);
        const uint32_t *upper = source.data() + static_cast<size_t>(row.first) * sourceWidth;
        const uint32_t *lower = source.data() + static_cast<size_t>(row.second) * sourceWidth;
        guchar *pixel = data + static_cast<ptrdiff_t>(y - top) * stride;
        for (const Tap &column : columns) {
            const uint32_t word = blend(upper[column.first], upper[column.second], lower[column.first],
                                        lower[column.second], column.weight, row.weight);
            pixel = unpremultiplied(word, pixel, hasAlpha);
        }
    }
    // The fastest deflate: librsvg reads it straight back, and deflating a
    // canvas-sized photograph hard costs more than all the drawing.
    gchar *bytes = nullptr;
    gsize size = 0;
    if (!gdk_pixbuf_save_to_buffer(out.get(), &bytes, &size, "png", nullptr, "compression", "1", nullptr))
        return;
    const std::string png(bytes, size);
    g_free(bytes);
    // librsvg's XML parser refuses attribute values past 10 MB, and with them
    // the whole drawing: a bitmap that large is left as it was.
    if (png.size() / 3 * 4 > 9'000'000)
        return;
    std::unique_ptr<gchar, decltype(&g_free)> base64(
        g_base64_encode(reinterpret_cast<const guchar *>(png.data()), png.size()), g_free);

    xmlSetNsProp(
        candidate.node, candidate.href->ns, candidate.href->name,
        reinterpret_cast<const xmlChar *>((std::string("data:image/png;base64,") + base64.get()).c_str()));
    setAttribute(candidate.node, "x", number((left - map.moveX) / map.scaleX));
    setAttribute(candidate.node, "y", number((top - map.moveY) / map.scaleY));
    setAttribute(candidate.node, "width", number((right - left) / map.scaleX));
    setAttribute(candidate.node, "height", number((bottom - top) / map.scaleY));
    setAttribute(candidate.node, "preserveAspectRatio", "none");
}

} // namespace

std::string resample(const std::string &markup, int canvasWidth, int canvasHeight)
{
    if (markup.find("<image") == std::string::npos || markup.size() > INT32_MAX)
        return markup;
    Doc doc(xmlReadMemory(markup.data(), static_cast<int>(markup.size()), nullptr, nullptr,
                          XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    xmlNode *root = doc ? xmlDocGetRootElement(doc.get()) : nullptr;
    if (!root || !isSvgElement(root, "svg"))
        return markup;
    const auto mapping = rootMapping(root, canvasWidth, canvasHeight);
    if (!mapping)
        return markup;
    std::vector<Candidate> candidates;
    bool hasUse = false;
    collect(root, *mapping, candidates, hasUse);
    // A <use> may draw an image a second time elsewhere, from the same pixels.
    if (candidates.empty() || hasUse)
        return markup;
    for (Candidate &candidate : candidates)
        resampleOnto(candidate, canvasWidth, canvasHeight);
    return serialised(doc.get());
}

} // namespace UpscaledBitmaps
