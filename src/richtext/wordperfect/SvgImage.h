#pragma once

#include "WpgImage.h"

#include <optional>
#include <string_view>

namespace richtext::wordperfect {

// Whether the bytes look like SVG markup: an XML document whose start holds an <svg> element.
bool looksLikeSvg(std::string_view bytes);

// The SVG drawn by librsvg on white at drawingPixelsPerInch of its own size, fitted to maxSide;
// nothing when librsvg cannot read or draw it.
std::optional<Raster> renderSvg(std::string_view bytes, int maxSide);

} // namespace richtext::wordperfect
