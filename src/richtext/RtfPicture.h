#pragma once

#include <librevenge/librevenge.h>

#include <functional>
#include <string>

namespace richtext::RtfPicture {

// Draws an SVG picture as PNG (or JPEG) bytes of about the given size in
// pixels; empty when it cannot. RTF readers take no SVG, and drawing is not
// this library's job.
using SvgPainter = std::function<std::string(const std::string &svg, int width, int height)>;

// A {\pict...} group for an image that RTF can carry (PNG, JPEG, EMF, WMF, and
// SVG when a painter draws it), taken from the object's data or one of its
// replacement objects; empty otherwise. The frame gives the displayed size;
// without one the image's own is used.
std::string group(const librevenge::RVNGPropertyList &object, const librevenge::RVNGPropertyList &frame,
                  const SvgPainter &painter = {});

// Where a page span puts its text, for frames placed against the page.
struct PageArea {
    double width = 8.5;
    double height = 11;
    double left = 1; // margins
    double right = 1;
    double top = 1;
    double bottom = 1;
    // What a header and a footer take from the text area below and above the margins.
    double headerRoom = 0;
    double footerRoom = 0;
};

// A picture group placed as its frame says: a floating shape for a frame
// anchored to the paragraph, character or page, the group itself for one
// that stands in the line as a character.
std::string placed(const std::string &pictureGroup, const librevenge::RVNGPropertyList &frame,
                   const PageArea &page);

// The opening of a text box shape the size of `frame`; its paragraphs and
// three closing braces follow.
std::string textBoxOpening(const librevenge::RVNGPropertyList &frame);

} // namespace richtext::RtfPicture
