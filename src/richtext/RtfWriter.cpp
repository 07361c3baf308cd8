#include "RtfWriter.h"

#include "RtfPicture.h"
#include "RtfText.h"
#include "Units.h"
#include "Utf8.h"

#include <algorithm>
#include <cmath>

namespace richtext {

using librevenge::RVNGPropertyList;

RtfWriter::RtfWriter(RtfPicture::SvgPainter painter) : painter(std::move(painter))
{
    containers.push_back(Container{});
}

RtfWriter::~RtfWriter() = default;

RtfWriter::Container &RtfWriter::container()
{
    return containers.back();
}

void RtfWriter::enter(Container::Kind kind)
{
    Container entered;
    entered.kind = kind;
    entered.noteMark = kind == Container::Kind::note;
    containers.push_back(entered);
}

void RtfWriter::leave()
{
    if (container().paragraphOpen)
        closeParagraph();
    if (containers.size() > 1)
        containers.pop_back();
}

bool RtfWriter::atTopLevel() const
{
    return containers.size() == 1 && !output.isAside();
}

void RtfWriter::startSectionIfNeeded(bool textFollows)
{
    if (!atTopLevel())
        return;
    const auto words = sections.start(textFollows);
    if (!words)
        return;
    if (words->starts_with("\\sect\n")) {
        // \sect ends the paragraph before it, and any table; one that ends
        // the text has its \par, so that the last section holds no text. An
        // empty paragraph ended by \sect alone is dropped by LibreOffice,
        // and what follows a table then overlaps it.
        if (!textFollows || container().paragraphEmpty)
            endOwedParagraph();
        container().paragraphEnded = false;
        container().afterTable = false;
    }
    output.raw(*words + "\n");
}

void RtfWriter::endOwedParagraph()
{
    if (!container().paragraphEnded)
        return;
    output.raw("\\par\n");
    container().paragraphEnded = false;
}

void RtfWriter::setDocumentMetaData(const RVNGPropertyList &propList)
{
    const std::pair<const char *, const char *> fields[] = {
        {"dc:title", "\\title"},
        {"dc:subject", "\\subject"},
        {"meta:initial-creator", "\\author"},
        {"meta:keyword", "\\keywords"},
    };
    for (const auto &[name, rtfWord] : fields)
        if (const auto value = Units::text(propList, name); value && !value->empty())
            metadata += std::string("{") + rtfWord + " " + RtfText::escape(*value) + "}";
}

void RtfWriter::openPageSpan(const RVNGPropertyList &propList)
{
    startSectionIfNeeded();
    spanBlank = true;
    if (sections.open(propList) && atTopLevel()) {
        // \sect ends the section's last paragraph itself, and any table.
        container().paragraphEnded = false;
        container().afterTable = false;
        output.raw("\\sect\n");
    }
}

void RtfWriter::closePageSpan()
{
    startSectionIfNeeded(false);
}

void RtfWriter::openSection(const RVNGPropertyList &propList)
{
    // Sections inside cells, notes or headers have no place in RTF: their text flows on.
    if (!atTopLevel())
        return;
    openSections.push_back(propList);
    sections.columns(propList);
}

void RtfWriter::closeSection()
{
    if (!atTopLevel() || openSections.empty())
        return;
    openSections.pop_back();
    sections.columns(openSections.empty() ? RVNGPropertyList() : openSections.back());
}

void RtfWriter::openHeaderOrFooter(const RVNGPropertyList &propList, bool footer)
{
    output.setAside();
    inFooter = footer;
    const std::string occurrence = Units::text(propList, "librevenge:occurrence").value_or("all");
    oddPagesOnly = occurrence == "odd" || occurrence == "right";
    const std::optional<std::string> group = sections.headerGroup(propList, footer);
    if (!group) {
        enter(Container::Kind::ignored);
        return;
    }
    headerWord = *group;
    output.raw("{");
    output.word(*group);
    enter(Container::Kind::header);
}

void RtfWriter::closeHeaderOrFooter()
{
    const bool ignored = container().kind == Container::Kind::ignored;
    // An odd pages' header of empty paragraphs is there so that ODF readers show the even pages'
    // header beside it; WordPerfect's odd pages have none, so it takes no room here.
    if (!ignored && oddPagesOnly && container().anyParagraph && !container().anyContent) {
        Container blank;
        blank.kind = Container::Kind::header;
        container() = blank;
        output.takeAside();
        output.setAside();
        output.raw("{");
        output.word(headerWord);
    }
    // A header that ends with a table, or holds nothing, would get a
    // paragraph of the default size from the reader, and push the text down.
    if (!ignored && (container().afterTable || !container().anyParagraph))
        output.word(RtfFormat::hairline);
    if (!ignored && !container().anyParagraph)
        sections.emptyHeader(inFooter);
    leave();
    if (!ignored)
        output.raw("}");
    const std::string group = output.takeAside();
    if (!ignored && !sections.addHeader(group))
        output.raw(group + "\n");
}

void RtfWriter::beginParagraph(const RVNGPropertyList &propList, const std::string &listWords,
                               const std::string &label)
{
    if (container().paragraphOpen)
        closeParagraph();
    startSectionIfNeeded();
    endOwedParagraph();
    Container &here = container();
    here.afterTable = false;
    here.paragraphOpen = true;
    here.paragraphEmpty = true;
    here.anyParagraph = true;
    here.markFont.clear();
    here.markSize.clear();
    ++here.paragraphs;
    if (atTopLevel())
        spanBlank = false;
    output.word("\\pard\\plain");
    if (here.kind == Container::Kind::cell)
        output.word("\\intbl");
    output.word(listWords);
    output.word(RtfFormat::paragraph(propList, palette));
    if (here.noteMark) {
        here.noteMark = false;
        output.raw("{");
        output.word("\\super\\chftn");
        output.raw("}");
    }
    if (!label.empty()) {
        output.raw("{");
        output.word("\\listtext");
        output.text(RtfText::escape(label));
        output.word("\\tab");
        output.raw("}");
    }
}

void RtfWriter::ensureParagraph(bool content)
{
    if (!container().paragraphOpen)
        beginParagraph({}, {}, {});
    if (content) {
        container().paragraphEmpty = false;
        container().anyContent = true;
    }
}

void RtfWriter::closeParagraph()
{
    while (container().links > 0)
        closeLink();
    if (container().spanOpen)
        closeSpan();
    if (!container().paragraphOpen)
        return;
    // After \plain the first font at 12 points is in effect already.
    const Container &here = container();
    output.word((here.markFont == "\\f0" ? std::string() : here.markFont) +
                (here.markSize == "\\fs24" ? std::string() : here.markSize));
    container().paragraphOpen = false;
    container().paragraphEnded = true;
}

void RtfWriter::openSpan(const RVNGPropertyList &propList)
{
    ensureParagraph(false);
    if (container().spanOpen)
        closeSpan();
    container().spanOpen = true;
    container().spanLinks = container().links;
    if (const auto name = Units::text(propList, "style:font-name"); name && !name->empty())
        container().markFont = "\\f" + std::to_string(palette.font(*name));
    if (const auto size = Units::points(propList, "fo:font-size"); size && *size > 0 && *size < 1638)
        container().markSize = "\\fs" + std::to_string(std::lround(*size * 2));
    output.raw("{");
    output.word(RtfFormat::character(propList, palette));
}

void RtfWriter::closeSpan()
{
    if (!container().spanOpen)
        return;
    // A link opened inside the span ends with it, so the groups stay nested.
    while (container().links > container().spanLinks)
        closeLink();
    container().spanOpen = false;
    output.raw("}");
}

void RtfWriter::openLink(const RVNGPropertyList &propList)
{
    ensureParagraph(false);
    std::string target;
    for (const char c : Units::text(propList, "xlink:href").value_or(""))
        target += c == '"' ? std::string("%22") : c == '\\' ? std::string("%5C") : std::string(1, c);
    output.raw("{");
    output.word("\\field");
    output.raw("{");
    output.word("\\*\\fldinst");
    output.raw("{");
    output.text(RtfText::escape("HYPERLINK \"" + target + "\""));
    output.raw("}}{");
    output.word("\\fldrslt");
    output.raw("{");
    ++container().links;
}

void RtfWriter::closeLink()
{
    if (container().links == 0)
        return;
    if (container().spanOpen && container().spanLinks == container().links)
        closeSpan();
    --container().links;
    output.raw("}}}");
}

void RtfWriter::insertTab()
{
    ensureParagraph();
    output.word("\\tab");
}

void RtfWriter::insertSpace()
{
    ensureParagraph();
    output.documentText(" ");
}

void RtfWriter::insertText(const librevenge::RVNGString &text)
{
    ensureParagraph();
    output.documentText(std::string_view(text.cstr(), static_cast<std::size_t>(text.size())));
}

void RtfWriter::insertLineBreak()
{
    ensureParagraph();
    output.word("\\line");
}

void RtfWriter::insertField(const RVNGPropertyList &propList)
{
    ensureParagraph();
    output.raw(RtfFormat::field(Units::text(propList, "librevenge:field-type").value_or(""),
                                Units::text(propList, "style:num-format").value_or("1")));
}

void RtfWriter::startListLevel(const RVNGPropertyList &propList, bool ordered)
{
    numbering.openLevel(propList, ordered);
    if (numbering.depth() == 1 || currentList == 0)
        currentList = lists.beginList();
    const double labelWidth = Units::inches(propList, "text:min-label-width").value_or(0.25);
    const double indent =
        Units::inches(propList, "text:space-before").value_or(0.25 * (numbering.depth() - 1));
    lists.defineLevel(currentList, numbering.depth() - 1, numbering.innermost(), indent, labelWidth);
    labelWidths.push_back(labelWidth);
    labelIndents.push_back(indent);
}

void RtfWriter::endListLevel()
{
    numbering.closeLevel();
    if (!labelWidths.empty())
        labelWidths.pop_back();
    if (!labelIndents.empty())
        labelIndents.pop_back();
    if (numbering.depth() == 0)
        currentList = 0;
}

void RtfWriter::openListElement(const RVNGPropertyList &propList)
{
    if (numbering.depth() == 0) {
        beginParagraph(propList, {}, {});
        return;
    }
    if (const auto restart = Units::integer(propList, "text:start-value")) {
        numbering.restartAt(*restart);
        currentList = lists.restart(currentList, numbering.depth() - 1, *restart);
    }
    const std::string label = numbering.nextLabel();
    std::string listWords =
        "\\ls" + std::to_string(currentList) + "\\ilvl" + std::to_string(std::min(8, numbering.depth() - 1));
    // A list paragraph's own indents move the level's: its lines stand the
    // label's width in from the margin and the level's indent together, and
    // the label starts the paragraph's first-line indent in from those two.
    // RTF's paragraph indents replace the level's, so they are written whole.
    const auto margin = Units::inches(propList, "fo:margin-left");
    const auto firstLine = Units::inches(propList, "fo:text-indent");
    if ((!margin && !firstLine) || labelWidths.empty()) {
        beginParagraph(propList, listWords, label);
        return;
    }
    const double start = margin.value_or(0) + labelIndents.back();
    const double indent = firstLine.value_or(0);
    const double labelWidth = std::max(0.0, labelWidths.back());
    RVNGPropertyList moved = propList;
    if (indent > 0) {
        // The label would end past the hanging indent, where readers stop the
        // tab after it: the text keeps to the column the first line gives it.
        moved.insert("fo:margin-left", start + indent + labelWidth, librevenge::RVNG_INCH);
        moved.insert("fo:text-indent", -labelWidth, librevenge::RVNG_INCH);
    } else {
        moved.insert("fo:margin-left", start + labelWidth, librevenge::RVNG_INCH);
        moved.insert("fo:text-indent", indent - labelWidth, librevenge::RVNG_INCH);
        // The tab after the label ends at the label's width from its start;
        // readers look for it at the hanging indent, and else take the next
        // default stop.
        if (indent < 0 && labelWidth > 0)
            listWords += RtfFormat::tabStop(start + indent + labelWidth);
    }
    beginParagraph(moved, listWords, label);
}

void RtfWriter::openNote(bool endnote)
{
    ensureParagraph();
    (endnote ? anyEndnote : anyFootnote) = true;
    output.raw("{");
    output.word("\\super\\chftn");
    output.raw("}{");
    output.word(endnote ? "\\footnote\\ftnalt" : "\\footnote");
    enter(Container::Kind::note);
}

void RtfWriter::closeNote()
{
    leave();
    output.raw("}");
}

void RtfWriter::openComment(const RVNGPropertyList &)
{
    // Annotations have no place in classic RTF; their text is left out.
    lost.add(loss::comments);
    output.setAside();
    enter(Container::Kind::ignored);
}

void RtfWriter::closeComment()
{
    leave();
    output.takeAside();
}

void RtfWriter::openTextBox(const RVNGPropertyList &)
{
    ensureParagraph();
    output.raw(RtfPicture::textBoxOpening(frame));
    enter(Container::Kind::textBox);
}

void RtfWriter::closeTextBox()
{
    leave();
    output.raw("}}}");
}

RVNGPropertyList RtfWriter::placing(const RVNGPropertyList &given)
{
    // LibreOffice makes a table row tall enough for a frame anchored in one
    // of its cells, which WordPerfect and ODF let float over the rows. Where
    // the cell's paragraph is known to start, the frame is placed against the
    // page instead.
    const std::string anchor = Units::text(given, "text:anchor-type").value_or("as-char");
    const std::string relation = Units::text(given, "style:vertical-rel").value_or("paragraph");
    if (anchor == "as-char" || (relation != "paragraph" && relation != "paragraph-content") ||
        container().kind != Container::Kind::cell || container().paragraphs > 1 || tables.size() != 1 ||
        flattenedTables > 0 || sections.hasHeader())
        return given;
    const std::optional<double> top = tables.back()->cellTextTop();
    if (!top)
        return given;
    RVNGPropertyList moved = given;
    // Against the page: LibreOffice keeps one placed against the margin in its cell all the same.
    moved.insert("style:vertical-rel", "page");
    moved.insert("svg:y", sections.page().top + *top + Units::inches(given, "svg:y").value_or(0),
                 librevenge::RVNG_INCH);
    return moved;
}

void RtfWriter::insertBinaryObject(const RVNGPropertyList &propList)
{
    const RVNGPropertyList where = placing(frame);
    const std::string picture =
        RtfPicture::placed(RtfPicture::group(propList, frame, painter), where, sections.page());
    if (picture.empty()) {
        lost.add(loss::rtfPictureFormats);
        return;
    }
    ensureParagraph();
    output.raw(picture);
}

void RtfWriter::openTable(const RVNGPropertyList &propList)
{
    // RTF nests tables only through a flat ignorable group that the classic
    // rewriting removes, so a table inside a cell becomes that cell's paragraphs.
    if (!tables.empty() && container().kind == Container::Kind::cell) {
        lost.add(loss::nestedTables);
        ++flattenedTables;
        return;
    }
    if (flattenedTables > 0) {
        ++flattenedTables;
        return;
    }
    if (container().paragraphOpen)
        closeParagraph();
    startSectionIfNeeded();
    endOwedParagraph();
    container().anyParagraph = true; // the table's rows stand for paragraphs here
    if (container().afterTable) {
        // Rows that follow rows are one table to every RTF reader; only a
        // paragraph keeps two tables apart. A one-point one keeps the page as it was.
        output.word(std::string(RtfFormat::hairline) + "\\par");
        output.raw("\n");
    }
    const RtfPicture::PageArea &page = sections.page();
    tables.push_back(std::make_unique<RtfTable>(propList, page.width - page.left - page.right));
    if (atTopLevel()) {
        if (spanBlank)
            tables.back()->setAtPageTop();
        spanBlank = false;
    }
}

void RtfWriter::openTableRow(const RVNGPropertyList &propList)
{
    if (flattenedTables > 0 || tables.empty())
        return;
    tables.back()->beginRow(propList);
    output.setAside();
}

void RtfWriter::openTableCell(const RVNGPropertyList &propList)
{
    if (flattenedTables > 0 || tables.empty())
        return;
    tables.back()->addCell(propList, palette);
    enter(Container::Kind::cell);
}

void RtfWriter::closeTableCell()
{
    if (flattenedTables > 0 || tables.empty() || container().kind != Container::Kind::cell)
        return;
    const bool empty = !container().anyParagraph;
    leave();
    if (empty)
        output.word("\\pard\\plain\\intbl");
    output.word("\\cell");
    output.raw("\n");
}

void RtfWriter::insertCoveredTableCell(const RVNGPropertyList &propList)
{
    if (flattenedTables > 0 || tables.empty())
        return;
    if (tables.back()->addCoveredCell(propList)) {
        output.word("\\pard\\plain\\intbl\\cell");
        output.raw("\n");
    }
}

void RtfWriter::closeTableRow()
{
    if (flattenedTables > 0 || tables.empty() || !output.isAside())
        return;
    const std::string content = output.takeAside();
    output.word(tables.back()->rowDefinition());
    output.raw("\n" + content);
    output.word("\\row");
    output.raw("\n");
}

void RtfWriter::closeTable()
{
    if (flattenedTables > 0) {
        --flattenedTables;
        return;
    }
    if (!tables.empty())
        tables.pop_back();
    container().afterTable = true;
    container().anyContent = true;
}

void RtfWriter::closeContainer()
{
    switch (container().kind) {
    case Container::Kind::note:
        closeNote();
        break;
    case Container::Kind::header:
    case Container::Kind::ignored:
        closeHeaderOrFooter();
        break;
    case Container::Kind::textBox:
        closeTextBox();
        break;
    case Container::Kind::cell:
        closeTableCell();
        break;
    case Container::Kind::body:
        break;
    }
}

void RtfWriter::endDocument()
{
    // A stream that left things open still gives a well-formed document.
    while (containers.size() > 1 || !tables.empty() || flattenedTables > 0) {
        if (containers.size() > 1 && container().kind != Container::Kind::cell) {
            closeContainer();
            continue;
        }
        if (containers.size() > 1)
            closeTableCell();
        if (!tables.empty() && output.isAside())
            closeTableRow();
        closeTable();
    }
    while (output.isAside())
        output.raw(output.takeAside());
    closeParagraph();
    startSectionIfNeeded(false);
    // Every paragraph of the text ends in \par, the last one too: readers
    // drop a final paragraph that is empty and unterminated.
    endOwedParagraph();

    document = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1";
    document += anyEndnote ? "\\fet2\n" : "\n";
    document += palette.fontTable() + "\n" + palette.colourTable() + "\n";
    if (anyFootnote || anyEndnote) {
        // The styles Word sets a note's number in, which LibreOffice gives the
        // number that opens each note's text; it drops the \super written
        // there. Without the ignorable mark, which the classic rewriting
        // removes: readers that know no character style take it for a
        // paragraph style that nothing names.
        document += "{\\stylesheet";
        if (anyFootnote)
            document += "{\\cs1\\additive\\super footnote reference;}";
        if (anyEndnote)
            document += "{\\cs2\\additive\\super endnote reference;}";
        document += "}\n";
    }
    document += lists.tables();
    if (!metadata.empty())
        document += "{\\info" + metadata + "}\n";
    document += sections.documentWords() + "\n";
    document += output.written();
    document += "}\n";
}

} // namespace richtext
