#pragma once

// The namespaces of OpenDocument, and the prefixes librevenge gives their properties.
namespace richtext::OdfNames {

inline constexpr const char *office = "urn:oasis:names:tc:opendocument:xmlns:office:1.0";
inline constexpr const char *style = "urn:oasis:names:tc:opendocument:xmlns:style:1.0";
inline constexpr const char *text = "urn:oasis:names:tc:opendocument:xmlns:text:1.0";
inline constexpr const char *table = "urn:oasis:names:tc:opendocument:xmlns:table:1.0";
inline constexpr const char *fo = "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0";
inline constexpr const char *svg = "urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0";
inline constexpr const char *draw = "urn:oasis:names:tc:opendocument:xmlns:drawing:1.0";
inline constexpr const char *xlink = "http://www.w3.org/1999/xlink";
inline constexpr const char *dc = "http://purl.org/dc/elements/1.1/";
inline constexpr const char *meta = "urn:oasis:names:tc:opendocument:xmlns:meta:1.0";
inline constexpr const char *loext = "urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0";
inline constexpr const char *xml = "http://www.w3.org/XML/1998/namespace";
inline constexpr const char *config = "urn:oasis:names:tc:opendocument:xmlns:config:1.0";

// "fo", "style", ... for a namespace URI; nullptr for one we do not read.
const char *prefixOf(const char *nameSpace);

} // namespace richtext::OdfNames
