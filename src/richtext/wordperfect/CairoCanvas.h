#pragma once

#include "WpgImage.h"

#include <cairo.h>

#include <optional>

namespace richtext::wordperfect {

// A white, opaque cairo image surface that the vector pictures are drawn on, and its pixels once
// drawn. Transparent parts of a drawing end up over white, as on paper.
class CairoCanvas {
public:
    CairoCanvas(int width, int height);
    ~CairoCanvas();
    CairoCanvas(const CairoCanvas &) = delete;
    CairoCanvas &operator=(const CairoCanvas &) = delete;

    // Null when cairo could not make the surface.
    cairo_t *context() const { return cr; }
    int width() const { return w; }
    int height() const { return h; }

    // The pixels as they stand; nothing when cairo failed.
    std::optional<Raster> raster(double pixelsPerInch) const;

private:
    int w = 0;
    int h = 0;
    cairo_surface_t *surface = nullptr;
    cairo_t *cr = nullptr;
};

// The pixel size a drawing of widthInches x heightInches gets at pixelsPerInch, and the scale
// actually used once made smaller to fit maxSide; nothing for sizes that are not positive.
struct CanvasSize {
    int width = 0;
    int height = 0;
    double pixelsPerInch = 0;
};
std::optional<CanvasSize> canvasSizeFor(double widthInches, double heightInches, double pixelsPerInch,
                                        int maxSide);

// Drawings are rendered at a printer's resolution: WordPerfect documents are made to be printed,
// and flat line art stays small once run-length coded.
constexpr double drawingPixelsPerInch = 300;

} // namespace richtext::wordperfect
