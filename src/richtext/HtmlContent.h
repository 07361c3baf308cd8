#pragma once

#include "CssStyles.h"
#include "HtmlFormat.h"
#include "HtmlNotes.h"
#include "OdtStyles.h"

#include <librevenge/librevenge.h>
#include <libxml/tree.h>

#include <string>

namespace richtext {

// Walks an HTML body and tells a RVNGTextInterface about it. Text that
// stands outside any paragraph gets one, as a browser would lay it out;
// whitespace collapses as CSS says (none at a paragraph's start or end).
class HtmlContent {
public:
    // `fromLibrevenge`: the HTML is librevenge's, whose markup says more than HTML
    // means: a tab character is a tab, an &nbsp; one explicit space (HtmlReader
    // marks them as U+FDD0), and the line break after every closing tag is no space at all.
    HtmlContent(const CssStyles &sheet, const HtmlNotes &notes, librevenge::RVNGTextInterface &sink,
                bool fromLibrevenge);

    void body(const xmlNode *body);

private:
    // What belongs to one paragraph stream; a note saves and restores it.
    struct State {
        bool paragraphOpen = false;
        bool listElement = false;     // the open paragraph is a list element
        bool listElementOwed = false; // a <li> waits for its first paragraph
        bool spanOpen = false;
        bool pendingSpace = false;
        bool anyText = false;
        OdfProperties spanFormat;
        OdfProperties blockParagraph;
    };

    void children(const xmlNode *parent, const HtmlFormat &format);
    void node(const xmlNode *node, const HtmlFormat &outer);
    void element(const xmlNode *element, const HtmlFormat &outer);
    void block(const xmlNode *element, const HtmlFormat &format);
    void lineBreak(const HtmlFormat &format);
    void characters(const char *text, const HtmlFormat &format);
    void emit(const std::string &text, const HtmlFormat &format);
    void emitText(const std::string &text, const HtmlFormat &format);
    void librevengeCharacters(const char *text, const HtmlFormat &format);
    void ensureParagraph();
    void ensureSpan(const HtmlFormat &format);
    void closeSpan();
    void endParagraph();
    void list(const xmlNode *element, const HtmlFormat &format, bool ordered);
    void listItem(const xmlNode *element, const HtmlFormat &format);
    void table(const xmlNode *element, const HtmlFormat &format);
    void image(const xmlNode *element, const HtmlFormat &format);
    void link(const xmlNode *element, const HtmlFormat &format);
    void note(const std::string &label, const HtmlFormat &format);

    const CssStyles &sheet;
    const HtmlNotes &notes;
    librevenge::RVNGTextInterface &sink;
    OdtStyles noFonts; // fonts are named directly in HTML
    State state;
    bool fromLibrevenge;
    int listDepth = 0;
    int depth = 0;
    int nextListId = 1;
};

} // namespace richtext
