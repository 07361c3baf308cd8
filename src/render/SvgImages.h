#pragma once

#include <string>
#include <string_view>

// The pictures that libwpg embeds in the SVG of a WordPerfect graphic, made
// into what every SVG reader draws well. Both never throw; an image that
// cannot be converted stays as it was.
namespace SvgImages {

// A Windows metafile is kept as an <image> of type image/wmf, which no SVG
// renderer draws: such a graphic would come out blank. Each one is drawn
// through libwmf into a PNG in its place; `undrawn`, when given, counts those
// libwmf could not draw.
std::string drawMetafiles(const std::string &svg, int *undrawn = nullptr);

// Bitmaps come as uncompressed BMP, often a megabyte for a small photo that
// every later step copies and encodes again; each becomes the same pixels as PNG.
std::string compressBitmaps(const std::string &svg);

// libwpg places a WordPerfect 5 graphic's positioned bitmap (record 0x14) by
// dividing its corners, which are in 1/1200 inch, by the bitmap's own dots per
// inch: one of 75 dpi lands sixteen times too far out and too large, off the
// drawing, and the picture is lost. `wpg` is the graphic the SVG was made from;
// its bitmaps are put back where their records say. Other SVGs pass unchanged.
std::string placeWpg1Bitmaps(const std::string &svg, std::string_view wpg);

} // namespace SvgImages
