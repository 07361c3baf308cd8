#pragma once

#include "InflateLimits.h"

#include <librevenge/librevenge.h>

#include <string_view>

namespace richtext {

// Reads an OpenDocument text, either a zipped package (.odt) or one flat XML
// document (.fodt, and what `wpd2odt --stdout` writes), and tells `sink`
// about it from setDocumentMetaData to endDocument.
class OdtReader {
public:
    // Throws ReadError with a plain-words reason when the bytes are no
    // OpenDocument text that can be read; nothing reaches `sink` then.
    static void read(std::string_view bytes, librevenge::RVNGTextInterface &sink, InflateLimits limits = {});
};

} // namespace richtext
