#include "RtfSections.h"

#include "RtfFormat.h"
#include "Units.h"

#include <algorithm>

namespace richtext {
namespace {

// The line above a page's footnotes. Word draws it unasked; LibreOffice only
// for the sections that name it, and leaves their footnotes bare otherwise.
constexpr const char *footnoteSeparator = "{\\ftnsep\\chftnsep}";

// Where a header stands (\headery) and where the text starts (\margtsxn),
// or a footer's the same from the bottom. LibreOffice gives every header at
// least a millimetre from where it stands: one that asks for no room stands
// that far into the margin, and the text starts at the margin all the same.
// Margin and height are rounded to twips each, as LibreOffice rounds an ODF
// page's: a twip more room here or there moves a last line to the next page.
std::string room(bool footer, double margin, double height)
{
    const double at = height > 0 ? margin : std::max(0.0, margin - 1 / 25.4);
    return (footer ? "\\footery" : "\\headery") + std::to_string(RtfFormat::twips(at)) +
           (footer ? "\\margbsxn" : "\\margtsxn") +
           std::to_string(RtfFormat::twips(margin) + RtfFormat::twips(height));
}

} // namespace

bool RtfSections::open(const librevenge::RVNGPropertyList &pageSpan)
{
    const bool follows = any;
    if (!any)
        // The document's own page settings too, for readers that skip a section's.
        paper = RtfFormat::page(pageSpan, false);
    any = true;
    spanWords = RtfFormat::page(pageSpan, true);
    restart = RtfFormat::pageNumberRestart(pageSpan);
    columnWords.clear();
    writtenColumns.clear();
    headers.clear();
    previousKinds.merge(kinds);
    kinds.clear();
    started = false;
    continuationOwed = false;
    area = RtfPicture::PageArea{Units::inches(pageSpan, "fo:page-width").value_or(8.5),
                                Units::inches(pageSpan, "fo:page-height").value_or(11),
                                Units::inches(pageSpan, "fo:margin-left").value_or(1),
                                Units::inches(pageSpan, "fo:margin-right").value_or(1),
                                Units::inches(pageSpan, "fo:margin-top").value_or(1),
                                Units::inches(pageSpan, "fo:margin-bottom").value_or(1)};
    return follows;
}

std::optional<std::string> RtfSections::headerGroup(const librevenge::RVNGPropertyList &properties,
                                                    bool footer)
{
    const std::string occurrence = Units::text(properties, "librevenge:occurrence").value_or("all");
    std::string group = footer ? "\\footer" : "\\header";
    if (occurrence == "odd") {
        group += "r";
    } else if (occurrence == "even" || occurrence == "left") {
        group += "l";
        facingPages = true;
    } else if (occurrence == "first") {
        group += "f";
        spanWords += "\\titlepg";
    } else if (occurrence != "all" && occurrence != "both") {
        return std::nullopt;
    }
    kinds.insert(group);
    // The header sits at the page margin; the text starts below its height
    // and spacing. A header of every page that states no height is half a
    // centimetre high, as ODF readers make it; one of some pages only takes
    // the room of its lines, as the section's margin is every page's.
    const bool everyPage = occurrence == "all" || occurrence == "both";
    const double height =
        Units::inches(properties, "fo:min-height").value_or(everyPage ? 0.5 / 2.54 : 0) +
        Units::inches(properties, footer ? "fo:margin-top" : "fo:margin-bottom").value_or(0);
    const double margin = footer ? area.bottom : area.top;
    (footer ? area.footerRoom : area.headerRoom) = height;
    spanWords += room(footer, margin, height);
    return group;
}

void RtfSections::emptyHeader(bool footer)
{
    // Later words win: these undo the height headerGroup gave it.
    (footer ? area.footerRoom : area.headerRoom) = 0;
    spanWords += room(footer, footer ? area.bottom : area.top, 0);
}

bool RtfSections::addHeader(const std::string &group)
{
    if (started)
        return false;
    headers += group + "\n";
    return true;
}

void RtfSections::columns(const librevenge::RVNGPropertyList &section)
{
    columnWords = RtfFormat::columns(section);
    balanced = Units::text(section, "text:dont-balance-text-columns").value_or("false") != "true";
    // Columns that come and go without text between them change nothing.
    continuationOwed = started && columnWords != writtenColumns;
}

std::optional<std::string> RtfSections::start(bool textFollows)
{
    if (!any)
        return std::nullopt;
    if (!started) {
        started = true;
        // A section without headers shows those of the section before it;
        // groups holding a hairline keep the page as bare as the span wants
        // it. They stand halfway into the margin, where the hairline leaves
        // the text where it was.
        std::string blankWords;
        for (const bool footer : {false, true}) {
            const std::string family = footer ? "\\footer" : "\\header";
            const auto ofFamily = [&](const std::string &kind) { return kind.starts_with(family); };
            if (std::any_of(kinds.begin(), kinds.end(), ofFamily))
                continue;
            bool blanked = false;
            for (const std::string &kind : previousKinds)
                if (ofFamily(kind)) {
                    headers += "{" + kind + RtfFormat::hairline + "}\n";
                    blanked = true;
                }
            if (blanked)
                blankWords += (footer ? "\\footery" : "\\headery") +
                              std::to_string(RtfFormat::twips((footer ? area.bottom : area.top) / 2));
        }
        previousKinds.clear();
        writtenColumns = columnWords;
        writtenBalanced = balanced;
        return "\\sectd\\sbkpage" + spanWords + blankWords + restart + columnWords + "\n" +
               footnoteSeparator + "\n" + headers;
    }
    // Readers balance columns only before a section break, so balanced ones get theirs anyway.
    const bool balanceOwed = !writtenColumns.empty() && writtenBalanced;
    if (!continuationOwed || (!textFollows && !balanceOwed))
        return std::nullopt;
    continuationOwed = false;
    writtenColumns = columnWords;
    writtenBalanced = balanced;
    // \sectd resets every section word: the page's are repeated, and the
    // span's headers carry on without being written again.
    return "\\sect\n\\sectd\\sbknone" + spanWords + columnWords + "\n" + footnoteSeparator + "\n";
}

bool RtfSections::hasHeader() const
{
    return std::any_of(kinds.begin(), kinds.end(),
                       [](const std::string &kind) { return kind.starts_with("\\header"); });
}

std::string RtfSections::documentWords() const
{
    return paper + (facingPages ? "\\facingp" : "");
}

} // namespace richtext
