#include "RsvgRenderer.h"

#include "SvgImages.h"
#include "UpscaledBitmaps.h"

#include <cairo.h>
#include <librsvg/rsvg.h>

#include <memory>

namespace RsvgRenderer {
namespace {

template <typename T, void (*Free)(T *)> struct Deleter {
    void operator()(T *p) const
    {
        if (p)
            Free(p);
    }
};
void unrefHandle(RsvgHandle *handle)
{
    g_object_unref(handle);
}
using Handle = std::unique_ptr<RsvgHandle, Deleter<RsvgHandle, unrefHandle>>;
using Surface = std::unique_ptr<cairo_surface_t, Deleter<cairo_surface_t, cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, Deleter<cairo_t, cairo_destroy>>;

std::string takeMessage(GError *error, const char *fallback)
{
    std::string message = error && error->message ? error->message : fallback;
    if (error)
        g_error_free(error);
    return message;
}

cairo_status_t appendBytes(void *closure, const unsigned char *data, unsigned int length)
{
    static_cast<std::string *>(closure)->append(reinterpret_cast<const char *>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// A browser draws an <svg> without a viewBox at its own size, unscaled; with
// one, fitted into the box the page gives it.
RsvgRectangle viewportFor(RsvgHandle *handle, int width, int height)
{
    gboolean hasViewBox = FALSE;
    RsvgRectangle viewBox{};
    rsvg_handle_get_intrinsic_dimensions(handle, nullptr, nullptr, nullptr, nullptr, &hasViewBox, &viewBox);
    double ownWidth = 0;
    double ownHeight = 0;
    if (!hasViewBox && rsvg_handle_get_intrinsic_size_in_pixels(handle, &ownWidth, &ownHeight))
        return {0, 0, ownWidth, ownHeight};
    return {0, 0, static_cast<double>(width), static_cast<double>(height)};
}

} // namespace

std::string renderPNG(const std::string &original, int width, int height)
{
    const std::string markup = UpscaledBitmaps::resample(SvgImages::drawMetafiles(original), width, height);
    GError *error = nullptr;
    // No base file: references to other files on disk are never followed.
    Handle handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8 *>(markup.data()), markup.size(), &error));
    if (!handle)
        throw Failure(takeMessage(error, "the SVG could not be read"));
    rsvg_handle_set_dpi(handle.get(), 96);

    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw Failure(cairo_status_to_string(cairo_surface_status(surface.get())));
    Context cr(cairo_create(surface.get()));
    cairo_set_source_rgb(cr.get(), 1, 1, 1);
    cairo_paint(cr.get());
    cairo_rectangle(cr.get(), 0, 0, width, height);
    cairo_clip(cr.get());

    const RsvgRectangle viewport = viewportFor(handle.get(), width, height);
    if (!rsvg_handle_render_document(handle.get(), cr.get(), &viewport, &error))
        throw Failure(takeMessage(error, "the SVG could not be drawn"));
    cr.reset();
    cairo_surface_flush(surface.get());

    std::string png;
    if (cairo_surface_write_to_png_stream(surface.get(), appendBytes, &png) != CAIRO_STATUS_SUCCESS)
        throw Failure("the picture could not be encoded as PNG");
    return png;
}

} // namespace RsvgRenderer
