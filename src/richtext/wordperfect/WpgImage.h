#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace richtext::wordperfect {

// An image decoded to 8-bit RGB rows, top row first.
struct Raster {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb;
    // The picture's own size is width / pixelsPerInch: a screen's pixels for bitmaps, finer for
    // drawings rendered here.
    double pixelsPerInch = 96;
};

// PNG or JPEG decoded, or a StarView metafile or SVG drawn, transparency laid over white; nothing
// for any other format or for data the decoder refuses. Very large images are scaled down to fit
// maxSide pixels.
std::optional<Raster> decodeRaster(std::string_view bytes, int maxSide = 1600);
// Whether the bytes start as one of the formats decodeRaster takes: when it still gives nothing,
// the picture is damaged rather than in a format it does not know.
bool isRasterFormat(std::string_view bytes);

// The image as WordPerfect Graphics 1 records (start, colour map, 8-bit bitmap, end), the only
// graphics format WordPerfect 5.1 reads and one every later WordPerfect reads too. widthWpu and
// heightWpu are the picture's size in 1/1200 inch. WordPerfect 5.1 stores the records bare in its
// document; a stand-alone or WordPerfect 6 embedded file starts with the 16-byte prefix.
std::string wpg1Records(const Raster &raster, int widthWpu, int heightWpu);
std::string wpg1File(const Raster &raster, int widthWpu, int heightWpu);

// The graphic a WordPerfect 6 document embeds: a picture of at most 256 colours as WordPerfect
// Graphics 1 (its colours kept exactly), one of more as WordPerfect Graphics 2 with 24-bit pixels,
// which version 1 cannot hold without dithering them to 256.
std::string wp6Graphic(const Raster &raster, int widthWpu, int heightWpu);

} // namespace richtext::wordperfect
