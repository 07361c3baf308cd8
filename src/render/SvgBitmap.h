#pragma once

#include <optional>
#include <string>

// WordPerfect graphics that hold a scanned picture come out of libwpg as an
// SVG whose whole drawing is one bitmap. Where a bitmap will do (RTF takes
// PNG and JPEG), that bitmap is the picture at its own resolution: drawing it
// again would only cost time and sharpness.
namespace SvgBitmap {

// The PNG or JPEG bytes of the one <image> that fills the SVG's viewBox and
// is all it draws, other bitmaps re-encoded as PNG; nothing for any other SVG.
// Never throws.
std::optional<std::string> lone(const std::string &svg);

} // namespace SvgBitmap
