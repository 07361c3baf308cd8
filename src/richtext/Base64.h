#pragma once

#include <librevenge/librevenge.h>

#include <string>

namespace richtext {

// librevenge decodes base64 with boost, which throws on a character outside
// the alphabet: damaged data becomes no data instead.
inline librevenge::RVNGBinaryData decodeBase64(const std::string &base64)
{
    try {
        return librevenge::RVNGBinaryData(librevenge::RVNGString(base64.c_str()));
    } catch (...) {
        return {};
    }
}

} // namespace richtext
