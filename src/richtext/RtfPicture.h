#pragma once

#include <librevenge/librevenge.h>

#include <string>

namespace richtext::RtfPicture {

// A {\pict...} group for an image that RTF can carry (PNG, JPEG, EMF), taken
// from the object's data or one of its replacement objects; empty otherwise.
// The frame gives the displayed size; without one the image's own is used.
std::string group(const librevenge::RVNGPropertyList &object, const librevenge::RVNGPropertyList &frame);

// The opening of a text box shape the size of `frame`; its paragraphs and
// three closing braces follow.
std::string textBoxOpening(const librevenge::RVNGPropertyList &frame);

} // namespace richtext::RtfPicture
