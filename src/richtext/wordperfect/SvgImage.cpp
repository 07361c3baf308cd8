// The one place in the writers that talks to librsvg.

#include "SvgImage.h"

#include "CairoCanvas.h"

#include <librsvg/rsvg.h>

#include <memory>

namespace richtext::wordperfect {

namespace {

struct HandleRelease {
    void operator()(RsvgHandle *handle) const { g_object_unref(handle); }
};
using Handle = std::unique_ptr<RsvgHandle, HandleRelease>;

// SVG's own pixels are CSS pixels, 96 to the inch.
constexpr double cssPixelsPerInch = 96;

// The drawing's size in CSS pixels: its width and height, or failing those its viewBox.
bool naturalSize(RsvgHandle *handle, double &width, double &height)
{
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &width, &height) && width > 0 && height > 0)
        return true;
    gboolean hasViewBox = FALSE;
    RsvgRectangle viewBox{};
    rsvg_handle_get_intrinsic_dimensions(handle, nullptr, nullptr, nullptr, nullptr, &hasViewBox, &viewBox);
    if (!hasViewBox || !(viewBox.width > 0) || !(viewBox.height > 0))
        return false;
    width = viewBox.width;
    height = viewBox.height;
    return true;
}

} // namespace

bool looksLikeSvg(std::string_view bytes)
{
    std::string_view head = bytes.substr(0, 4096);
    if (head.substr(0, 3) == "\xEF\xBB\xBF")
        head.remove_prefix(3);
    const auto start = head.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && head[start] == '<' &&
           head.find("<svg") != std::string_view::npos;
}

std::optional<Raster> renderSvg(std::string_view bytes, int maxSide)
{
    GError *error = nullptr;
    // No base file: nothing outside the picture is ever loaded.
    Handle handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8 *>(bytes.data()), bytes.size(), &error));
    if (error)
        g_error_free(error);
    if (!handle)
        return std::nullopt;
    rsvg_handle_set_dpi(handle.get(), cssPixelsPerInch);

    double width = 0;
    double height = 0;
    if (!naturalSize(handle.get(), width, height))
        return std::nullopt;
    const auto size =
        canvasSizeFor(width / cssPixelsPerInch, height / cssPixelsPerInch, drawingPixelsPerInch, maxSide);
    if (!size)
        return std::nullopt;
    CairoCanvas canvas(size->width, size->height);
    if (!canvas.context())
        return std::nullopt;
    // Drawn at its own size in CSS pixels, scaled as a whole: with or without a viewBox it fills the
    // canvas.
    cairo_scale(canvas.context(), size->width / width, size->height / height);
    const RsvgRectangle viewport{0, 0, width, height};
    error = nullptr;
    const bool drawn = rsvg_handle_render_document(handle.get(), canvas.context(), &viewport, &error);
    if (error)
        g_error_free(error);
    if (!drawn)
        return std::nullopt;
    return canvas.raster(size->pixelsPerInch);
}

} // namespace richtext::wordperfect
