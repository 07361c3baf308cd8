#include "render/SVGRasterizer.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

// The natural-size rules on arbitrary markup: they must never crash, and
// whatever they return must be a size the bitmap bound can judge.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string markup(reinterpret_cast<const char *>(data), size);
    const SVGRasterizer::Size natural = SVGRasterizer::naturalSize(markup);
    if (!(natural.width > 0) || !(natural.height > 0))
        __builtin_trap(); // the rules only ever give positive sizes
    (void)SVGRasterizer::scaledToPixels(natural);
    (void)SVGRasterizer::lengthInPoints(markup);
    return 0;
}
