#pragma once

#include "CssStyles.h"
#include "OdtStyles.h"

#include <libxml/tree.h>

#include <optional>
#include <string>

namespace richtext {

// The formatting of an HTML element in ODF terms: what its tag means
// (<b>, <h2>, <font size=5>), then its style sheet rules, then its style
// attribute. Text properties inherit to the element's content; of the
// paragraph properties only the alignment does.
struct HtmlFormat {
    OdfProperties text;
    OdfProperties paragraph;
    OdfProperties cell;
    std::string listStyle; // list-style-type, or what a list's type attribute says
    bool hidden = false;
    bool preformatted = false;

    // The format inside `element`, given the format around it.
    static HtmlFormat inside(const xmlNode *element, const HtmlFormat &outer, const CssStyles &sheet);

    // A CSS length in inches ("12px", "0.5in", "2em" against `fontPoints`); none for "auto" or a percentage.
    static std::optional<double> cssInches(const std::string &value, double fontPoints);
    // "#rgb", "#rrggbb", "rgb(1,2,3)" or a colour name as "#rrggbb"; empty when not a colour.
    static std::string cssColour(const std::string &value);
};

} // namespace richtext
