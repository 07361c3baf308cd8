#include "CairoCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace richtext::wordperfect {

CairoCanvas::CairoCanvas(int width, int height) : w(width), h(height)
{
    surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS)
        return;
    cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
}

CairoCanvas::~CairoCanvas()
{
    if (cr)
        cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

std::optional<Raster> CairoCanvas::raster(double pixelsPerInch) const
{
    if (!cr)
        return std::nullopt;
    cairo_surface_flush(surface);
    const unsigned char *data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    if (!data)
        return std::nullopt;
    Raster raster;
    raster.width = w;
    raster.height = h;
    raster.pixelsPerInch = pixelsPerInch;
    raster.rgb.resize(std::size_t(w) * h * 3);
    unsigned char *out = raster.rgb.data();
    for (int y = 0; y < h; ++y) {
        // RGB24 keeps each pixel in a native-endian 32-bit word, the top byte unused.
        const auto *row = reinterpret_cast<const std::uint32_t *>(data + std::size_t(y) * stride);
        for (int x = 0; x < w; ++x) {
            *out++ = static_cast<unsigned char>(row[x] >> 16);
            *out++ = static_cast<unsigned char>(row[x] >> 8);
            *out++ = static_cast<unsigned char>(row[x]);
        }
    }
    return raster;
}

std::optional<CanvasSize> canvasSizeFor(double widthInches, double heightInches, double pixelsPerInch,
                                        int maxSide)
{
    if (!(widthInches > 0) || !(heightInches > 0) || !std::isfinite(widthInches) ||
        !std::isfinite(heightInches) || maxSide < 1)
        return std::nullopt;
    const double longest = std::max(widthInches, heightInches) * pixelsPerInch;
    if (longest > maxSide)
        pixelsPerInch *= maxSide / longest;
    CanvasSize size;
    size.pixelsPerInch = pixelsPerInch;
    size.width = std::clamp(static_cast<int>(std::lround(widthInches * pixelsPerInch)), 1, maxSide);
    size.height = std::clamp(static_cast<int>(std::lround(heightInches * pixelsPerInch)), 1, maxSide);
    return size;
}

} // namespace richtext::wordperfect
