#pragma once

#include <libxml/tree.h>

#include <map>
#include <string>
#include <vector>

namespace richtext {

// wpd2html writes notes, comments and text boxes after the text, each zone
// after an <hr>: the text carries <sup id="calledF1"><a href="#dataF1">, the
// zone <sup id="dataF1"> at the start of the note's first paragraph. This
// finds the zones so that the notes can be put back where they are called.
struct HtmlNotes {
    // "F1", "E2", "C1", "T3" to the nodes that make up that note.
    std::map<std::string, std::vector<const xmlNode *>> bodies;
    // The <hr> where the zones begin; the text ends before it.
    const xmlNode *zonesStart = nullptr;

    static HtmlNotes find(const xmlNode *body);

    // The label of a <sup id="calledF1"> whose note was found; empty otherwise.
    std::string calledLabel(const xmlNode *element) const;
    // Whether `element` is a <sup id="dataF1"> label, which the note's text leaves out.
    static bool isDataLabel(const xmlNode *element);
};

} // namespace richtext
