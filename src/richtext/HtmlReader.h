#pragma once

#include <librevenge/librevenge.h>

#include <string_view>

namespace richtext {

// Reads HTML, taken as UTF-8, with libxml2's forgiving HTML parser: what
// wpd2html writes (class rules in a style element, notes gathered after the
// text) and ordinary HTML (inline CSS, <b>, <i>, <u>, <font>, lists, tables).
// Nothing outside the document is ever fetched.
class HtmlReader {
public:
    // Throws ReadError only when there is nothing to read; broken markup gives
    // whatever a browser would have made of it.
    static void read(std::string_view bytes, librevenge::RVNGTextInterface &sink);
};

} // namespace richtext
