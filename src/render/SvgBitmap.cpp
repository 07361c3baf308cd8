#include "SvgBitmap.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace SvgBitmap {
namespace {

struct DocFree {
    void operator()(xmlDoc *doc) const { xmlFreeDoc(doc); }
};
struct ObjectUnref {
    void operator()(void *object) const { g_object_unref(object); }
};

std::string attribute(const xmlNode *node, const char *name)
{
    for (const xmlAttr *attribute = node->properties; attribute; attribute = attribute->next)
        if (std::strcmp(reinterpret_cast<const char *>(attribute->name), name) == 0 && attribute->children &&
            attribute->children->content)
            return reinterpret_cast<const char *>(attribute->children->content);
    return {};
}

// Plain user-space numbers only ("12.5"); units or percentages mean no.
std::optional<double> number(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::vector<double> numbers(const std::string &list)
{
    std::vector<double> values;
    std::size_t from = 0;
    while (from < list.size()) {
        const std::size_t end = list.find_first_of(" ,", from);
        const std::string_view piece = std::string_view(list).substr(from, end - from);
        if (!piece.empty()) {
            const auto value = number(piece);
            if (!value)
                return {};
            values.push_back(*value);
        }
        if (end == std::string::npos)
            break;
        from = end + 1;
    }
    return values;
}

const xmlNode *onlyElement(const xmlNode *parent)
{
    const xmlNode *only = nullptr;
    for (const xmlNode *child = parent->children; child; child = child->next) {
        if (child->type == XML_TEXT_NODE || child->type == XML_COMMENT_NODE)
            continue;
        if (child->type != XML_ELEMENT_NODE || only)
            return nullptr;
        only = child;
    }
    return only;
}

bool fillsViewBox(const xmlNode *image, const std::vector<double> &viewBox)
{
    const auto x = number(attribute(image, "x").empty() ? "0" : attribute(image, "x"));
    const auto y = number(attribute(image, "y").empty() ? "0" : attribute(image, "y"));
    const auto width = number(attribute(image, "width"));
    const auto height = number(attribute(image, "height"));
    const auto near = [](double a, double b) { return std::abs(a - b) <= 1e-3 * std::max(1.0, std::abs(b)); };
    return x && y && width && height && near(*x, viewBox[0]) && near(*y, viewBox[1]) &&
           near(*width, viewBox[2]) && near(*height, viewBox[3]);
}

std::optional<std::string> asPngOrJpeg(const std::string &uri)
{
    const std::size_t comma = uri.find(',');
    if (!uri.starts_with("data:") || comma == std::string::npos ||
        uri.substr(0, comma).find(";base64") == std::string::npos)
        return std::nullopt;
    gsize length = 0;
    std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(uri.c_str() + comma + 1, &length),
                                                     g_free);
    if (!bytes || length < 8)
        return std::nullopt;
    const std::string_view data(reinterpret_cast<const char *>(bytes.get()), length);
    if (data.starts_with("\x89PNG") || data.starts_with("\xFF\xD8\xFF"))
        return std::string(data);
    std::unique_ptr<GdkPixbufLoader, ObjectUnref> loader(gdk_pixbuf_loader_new());
    if (!gdk_pixbuf_loader_write(loader.get(), bytes.get(), length, nullptr) ||
        !gdk_pixbuf_loader_close(loader.get(), nullptr))
        return std::nullopt;
    GdkPixbuf *pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    gchar *png = nullptr;
    gsize size = 0;
    // Light compression: the picture is written once, and time counts more than bytes here.
    if (!pixbuf ||
        !gdk_pixbuf_save_to_buffer(pixbuf, &png, &size, "png", nullptr, "compression", "1", nullptr))
        return std::nullopt;
    std::string result(png, size);
    g_free(png);
    return result;
}

} // namespace

std::optional<std::string> lone(const std::string &svg)
{
    if (svg.find("<image") == std::string::npos)
        return std::nullopt;
    std::unique_ptr<xmlDoc, DocFree> doc(
        xmlReadMemory(svg.data(), static_cast<int>(svg.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    const xmlNode *root = doc ? xmlDocGetRootElement(doc.get()) : nullptr;
    if (!root || std::strcmp(reinterpret_cast<const char *>(root->name), "svg") != 0)
        return std::nullopt;
    const std::vector<double> viewBox = numbers(attribute(root, "viewBox"));
    const xmlNode *image = onlyElement(root);
    if (viewBox.size() != 4 || !image ||
        std::strcmp(reinterpret_cast<const char *>(image->name), "image") != 0)
        return std::nullopt;
    for (const char *effect :
         {"transform", "clip-path", "mask", "filter", "style", "opacity", "preserveAspectRatio"})
        if (!attribute(image, effect).empty())
            return std::nullopt;
    if (!fillsViewBox(image, viewBox))
        return std::nullopt;
    return asPngOrJpeg(attribute(image, "href"));
}

} // namespace SvgBitmap
