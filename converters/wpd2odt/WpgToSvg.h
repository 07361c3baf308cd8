#pragma once

#include "richtext/Losses.h"

namespace librevenge {
class RVNGBinaryData;
}

// Converts an embedded WordPerfect graphic to SVG through libwpg, keeping the graphic as it is
// when libwpg cannot read it. Its signature is libodfgen's OdfEmbeddedImage, so it is registered
// with OdtGenerator for "image/x-wpg".
class WpgToSvg {
public:
    static bool convert(const librevenge::RVNGBinaryData &wpg, librevenge::RVNGBinaryData &svg);

    // What the conversions since the last call could not carry. libodfgen
    // takes a plain function, so the record is kept per thread.
    static richtext::Losses takeLosses();
};
