#pragma once

#include "richtext/Losses.h"

#include <libodfgen/libodfgen.hxx>

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

// Places WordPerfect 5 figure boxes where WordPerfect put them.
//
// For a box anchored to a paragraph libwpd reads the box's vertical position codes as if the box
// were anchored to the page: most become "full page" (the whole text area high, centred on it),
// and it adds WordPerfect's own left edge of the box to the position it derives from the box's
// alignment, which puts right-aligned and centred boxes beside or off the page. The box record
// keeps WordPerfect's size and its position on the page, so the generator takes those instead.
// (libwpd's own frames for page and character boxes pass unchanged.)
class WordPerfect5Boxes : public OdtGenerator {
public:
    struct Box {
        double width = 0; // inches
        double height = 0;
        double x = 0; // left edge from the page's left edge
        double y = 0; // top edge from the page's top edge
        bool paragraphAnchored = false;
        bool fullWidth = false;
        // The graphic's own size: WordPerfect fits it into the box, keeping its proportions,
        // centred.
        double graphicWidth = 0;
        double graphicHeight = 0;
    };

    struct Contents {
        // The graphic figure boxes, in the order of the text.
        std::vector<Box> pictures;
        // What the boxes hold that libwpd passes over: equations, text (text, table and user
        // boxes, captions) and the graphic lines WordPerfect draws as boxes of their own.
        richtext::Losses losses;
    };

    // The boxes of a WordPerfect 5 document; none for other versions and for encrypted
    // documents, whose records cannot be read as they stand.
    static Contents read(const std::vector<unsigned char> &document);

    explicit WordPerfect5Boxes(std::vector<Box> boxes) : boxes(std::move(boxes)) {}

    void openParagraph(const librevenge::RVNGPropertyList &propList) override;
    void openFrame(const librevenge::RVNGPropertyList &propList) override;

private:
    std::vector<Box> boxes;
    std::size_t next = 0;
    // Where WordPerfect had the first box of the open paragraph.
    std::optional<double> paragraphTop;
};
