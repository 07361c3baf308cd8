#pragma once

#include "RtfPicture.h"

#include <librevenge/librevenge.h>

#include <optional>
#include <set>
#include <string>

namespace richtext {

// The page spans of a document as RTF sections: the document's page size
// from the first span, each section's \sectd words and header and footer
// groups, which RTF wants before the section's first text. Column sections
// inside a span become continuous sections with the span's page words.
class RtfSections {
public:
    // A new page span; true when one came before it, so a \sect is owed.
    bool open(const librevenge::RVNGPropertyList &pageSpan);

    // A run of columns (or, with an empty list, one column again) from the next text on.
    void columns(const librevenge::RVNGPropertyList &section);

    // The control word that opens a header or footer group ("\headerl"), or
    // none for a kind RTF has no place for. Adjusts the section's margins and flags.
    std::optional<std::string> headerGroup(const librevenge::RVNGPropertyList &properties, bool footer);
    // The header or footer just opened holds nothing: it takes no room from the text.
    void emptyHeader(bool footer);
    // A finished header or footer group; false when the section's text has
    // begun and the group must be written where it stands.
    bool addHeader(const std::string &group);

    // The section's words, once, when its first text is about to be written;
    // they begin with \sect when they end the section before. Without text to
    // follow, only a span's own first section is started, and the end of
    // balanced columns, which readers balance only before a section break.
    std::optional<std::string> start(bool textFollows = true);

    // \paperw, \margl... and \facingp for the document's header.
    std::string documentWords() const;

    // The current span has a header, which moves its text down by as much as it takes.
    bool hasHeader() const;

    // The current span's page and margins.
    const RtfPicture::PageArea &page() const { return area; }

private:
    std::string paper;
    std::string spanWords;               // the page words of the span
    std::string restart;                 // its page numbers' restart, for its first section only
    std::string columnWords;             // \cols... of the running columns
    std::string headers;                 // the span's header and footer groups
    std::set<std::string> kinds;         // \header, \footerl... that this span has
    std::set<std::string> previousKinds; // and those of the span before
    bool started = false;
    bool continuationOwed = false;
    std::string writtenColumns; // those of the section last written
    bool balanced = false;      // the columns asked for share the text evenly
    bool writtenBalanced = false;
    bool any = false;
    bool facingPages = false;
    RtfPicture::PageArea area;
};

} // namespace richtext
