#pragma once

#include "OdtProperties.h"
#include "OdtStyles.h"

#include <librevenge/librevenge.h>
#include <libxml/tree.h>

#include <string>
#include <vector>

namespace richtext {

class OdtContent;

// The text of one paragraph: spans, links, spaces, tabs, breaks, notes,
// fields and frames. Whitespace is collapsed as ODF readers do: a run of
// spaces, tabs and newlines is one space, and none at the paragraph's start.
class OdtInline {
public:
    OdtInline(OdtContent &content, const OdfProperties &paragraphText);

    // The inline content below `parent`, or one inline element itself.
    void walk(const xmlNode *parent);
    void element(const xmlNode *node);
    void finish();
    // A heading's number before its text, then what ODF says follows it ("listtab", "space", "nothing").
    void label(const std::string &text, const std::string &followedBy);
    // A drawing shape or group of them (not a frame).
    static bool isShape(const xmlNode *node);
    // Whether a shape, or a shape in a group, holds words.
    static bool holdsWords(const xmlNode *shape);

private:
    void characters(const char *text);
    void flush();
    void emit(const std::string &text, const OdfProperties &format);
    OdfProperties plainFormat() const;
    void ensureSpan();
    void ensureSpan(const OdfProperties &format);
    void ensureSpanFor(const OdfProperties &format, OdtProperties::Script written);
    void closeSpan();
    void pushStyle(const xmlNode *node);
    void note(const xmlNode *node);
    void deleted(const xmlNode *node);
    void frame(const xmlNode *node);
    void shape(const xmlNode *node);
    librevenge::RVNGPropertyList frameProperties(const xmlNode *node);
    void textBox(const librevenge::RVNGPropertyList &frame, const xmlNode *body);
    bool image(const xmlNode *node, const librevenge::RVNGPropertyList &frame);
    void field(const char *type, const xmlNode *node);

    OdtContent &content;
    std::vector<OdfProperties> formats; // the paragraph's, then each enclosing span's
    std::string pending;
    bool ignoreSpace = true;
    bool spanOpen = false;
    bool spoken = false; // a span has been opened
    OdfProperties openFormat;
    // The script of the characters last written, and whether the paragraph has shown one yet.
    OdtProperties::Script script = OdtProperties::Script::western;
    bool scriptKnown = false;
};

} // namespace richtext
