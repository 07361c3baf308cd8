#include "ModelBuilder.h"
#include "Base64.h"

#include "Units.h"

#include <algorithm>

namespace richtext {
namespace {

void flatten(const librevenge::RVNGPropertyList &list, const std::string &prefix, Properties &into)
{
    librevenge::RVNGPropertyList::Iter i(list);
    for (i.rewind(); i.next();) {
        const std::string key = prefix + i.key();
        if (const librevenge::RVNGPropertyListVector *children = i.child()) {
            into[key] = std::to_string(children->count());
            for (unsigned long n = 0; n < children->count(); ++n)
                flatten((*children)[n], key + "/" + std::to_string(n) + "/", into);
        } else if (key != "office:binary-data" && i()) {
            into[key] = i()->getStr().cstr();
        }
    }
}

std::vector<double> columnWidths(const librevenge::RVNGPropertyList &table)
{
    std::vector<double> widths;
    if (const librevenge::RVNGPropertyListVector *columns = table.child("librevenge:table-columns"))
        for (unsigned long n = 0; n < columns->count(); ++n)
            widths.push_back(Units::inches((*columns)[n], "style:column-width").value_or(0));
    return widths;
}

} // namespace

ModelBuilder::ModelBuilder() = default;

Properties ModelBuilder::propertiesOf(const librevenge::RVNGPropertyList &list)
{
    Properties result;
    flatten(list, "", result);
    return result;
}

ModelBuilder::Place &ModelBuilder::place()
{
    if (places.empty())
        openPageSpan({});
    return places.back();
}

Blocks &ModelBuilder::blocks()
{
    return *place().blocks;
}

Paragraph &ModelBuilder::paragraph()
{
    if (!place().paragraph)
        openParagraph({});
    return *place().paragraph;
}

void ModelBuilder::enter(Blocks &into)
{
    places.push_back(Place{&into, nullptr, {}, {}});
}

void ModelBuilder::leave()
{
    // The page span's own place stays: a stray close must not empty the stack.
    if (places.size() > 1)
        places.pop_back();
}

void ModelBuilder::setDocumentMetaData(const librevenge::RVNGPropertyList &propList)
{
    result.metadata = propertiesOf(propList);
}

void ModelBuilder::openPageSpan(const librevenge::RVNGPropertyList &propList)
{
    result.pageSpans.push_back(PageSpan{propertiesOf(propList), {}, {}, {}});
    places.clear();
    tables.clear();
    enter(result.pageSpans.back().blocks);
}

void ModelBuilder::openHeader(const librevenge::RVNGPropertyList &propList)
{
    place();
    auto &list = result.pageSpans.back().headersAndFooters;
    list.push_back(HeaderFooter{
        false, Units::text(propList, "librevenge:occurrence").value_or("all"), propertiesOf(propList), {}});
    enter(list.back().blocks);
}

void ModelBuilder::openFooter(const librevenge::RVNGPropertyList &propList)
{
    openHeader(propList);
    result.pageSpans.back().headersAndFooters.back().footer = true;
}

void ModelBuilder::openAnyParagraph(const librevenge::RVNGPropertyList &propList, int listLevel)
{
    Paragraph paragraph;
    paragraph.properties = propertiesOf(propList);
    if (listLevel > 0) {
        if (const auto restart = Units::integer(propList, "text:start-value"))
            numbering.restartAt(*restart);
        paragraph.listLevel = listLevel;
        paragraph.ordered = numbering.innermost().ordered;
        paragraph.label = numbering.nextLabel();
    }
    blocks().push_back(Block{std::move(paragraph)});
    place().paragraph = &std::get<Paragraph>(blocks().back().value);
}

void ModelBuilder::openParagraph(const librevenge::RVNGPropertyList &propList)
{
    openAnyParagraph(propList, 0);
}

void ModelBuilder::openListElement(const librevenge::RVNGPropertyList &propList)
{
    openAnyParagraph(propList, numbering.depth());
}

void ModelBuilder::closeParagraph()
{
    place().paragraph = nullptr;
}

void ModelBuilder::openSpan(const librevenge::RVNGPropertyList &propList)
{
    place().span = propertiesOf(propList);
}

void ModelBuilder::closeSpan()
{
    place().span.clear();
}

void ModelBuilder::openLink(const librevenge::RVNGPropertyList &propList)
{
    place().link = Units::text(propList, "xlink:href").value_or("");
}

void ModelBuilder::closeLink()
{
    place().link.clear();
}

void ModelBuilder::openSection(const librevenge::RVNGPropertyList &propList)
{
    place();
    result.pageSpans.back().sections.push_back(propertiesOf(propList));
}

Inline &ModelBuilder::append(Inline::Kind kind)
{
    Paragraph &into = paragraph();
    into.content.push_back(Inline{kind, {}, place().span, place().link, {}, {}, nullptr});
    return into.content.back();
}

void ModelBuilder::insertTab()
{
    append(Inline::Kind::tab);
}

void ModelBuilder::insertSpace()
{
    insertText(" ");
}

void ModelBuilder::insertText(const librevenge::RVNGString &text)
{
    Paragraph &into = paragraph();
    // Consecutive text of the same span is one piece, however it was delivered.
    if (!into.content.empty()) {
        Inline &last = into.content.back();
        if (last.kind == Inline::Kind::text && last.style == place().span && last.link == place().link) {
            last.text += text.cstr();
            return;
        }
    }
    append(Inline::Kind::text).text = text.cstr();
}

void ModelBuilder::insertLineBreak()
{
    append(Inline::Kind::lineBreak);
}

void ModelBuilder::insertField(const librevenge::RVNGPropertyList &propList)
{
    Inline &field = append(Inline::Kind::field);
    field.object = propertiesOf(propList);
    field.text = Units::text(propList, "librevenge:field-type").value_or("");
}

void ModelBuilder::openOrderedListLevel(const librevenge::RVNGPropertyList &propList)
{
    numbering.openLevel(propList, true);
}

void ModelBuilder::openUnorderedListLevel(const librevenge::RVNGPropertyList &propList)
{
    numbering.openLevel(propList, false);
}

Inline &ModelBuilder::appendObject(Inline::Kind kind, const librevenge::RVNGPropertyList &propList)
{
    Inline &object = append(kind);
    object.object = frame;
    for (const auto &[key, value] : propertiesOf(propList))
        object.object[key] = value;
    object.content = std::make_shared<Blocks>();
    enter(*object.content);
    return object;
}

void ModelBuilder::openFootnote(const librevenge::RVNGPropertyList &propList)
{
    appendObject(Inline::Kind::footnote, propList);
}

void ModelBuilder::openEndnote(const librevenge::RVNGPropertyList &propList)
{
    appendObject(Inline::Kind::endnote, propList);
}

void ModelBuilder::openComment(const librevenge::RVNGPropertyList &propList)
{
    appendObject(Inline::Kind::comment, propList);
}

void ModelBuilder::openTextBox(const librevenge::RVNGPropertyList &propList)
{
    appendObject(Inline::Kind::textBox, propList);
}

void ModelBuilder::openFrame(const librevenge::RVNGPropertyList &propList)
{
    frame = propertiesOf(propList);
}

void ModelBuilder::insertBinaryObject(const librevenge::RVNGPropertyList &propList)
{
    Inline &image = append(Inline::Kind::image);
    image.object = frame;
    for (const auto &[key, value] : propertiesOf(propList))
        image.object[key] = value;
    if (const librevenge::RVNGProperty *data = propList["office:binary-data"]) {
        const librevenge::RVNGBinaryData bytes = decodeBase64(data->getStr().cstr());
        if (bytes.getDataBuffer())
            image.data.assign(reinterpret_cast<const char *>(bytes.getDataBuffer()), bytes.size());
    }
}

void ModelBuilder::insertEquation(const librevenge::RVNGPropertyList &propList)
{
    Inline &equation = append(Inline::Kind::equation);
    equation.object = propertiesOf(propList);
}

void ModelBuilder::openTable(const librevenge::RVNGPropertyList &propList)
{
    Table table;
    table.properties = propertiesOf(propList);
    table.columnWidths = columnWidths(propList);
    place().paragraph = nullptr;
    blocks().push_back(Block{std::move(table)});
    tables.push_back(OpenTable{&std::get<Table>(blocks().back().value), 0, 0});
}

void ModelBuilder::openTableRow(const librevenge::RVNGPropertyList &propList)
{
    if (tables.empty())
        openTable({});
    tables.back().table->rows.push_back(Row{propertiesOf(propList), {}});
    tables.back().nextColumn = 0;
    tables.back().horizontallyCovered = 0;
}

void ModelBuilder::openTableCell(const librevenge::RVNGPropertyList &propList)
{
    if (tables.empty() || tables.back().table->rows.empty())
        openTableRow({});
    OpenTable &open = tables.back();
    Cell cell;
    cell.properties = propertiesOf(propList);
    cell.row = static_cast<int>(open.table->rows.size()) - 1;
    cell.column = Units::integer(propList, "librevenge:column").value_or(open.nextColumn);
    cell.columnSpan = std::max(1, Units::integer(propList, "table:number-columns-spanned").value_or(1));
    cell.rowSpan = std::max(1, Units::integer(propList, "table:number-rows-spanned").value_or(1));
    open.nextColumn = cell.column + cell.columnSpan;
    open.horizontallyCovered = cell.columnSpan - 1;
    std::vector<Cell> &cells = open.table->rows.back().cells;
    cells.push_back(std::move(cell));
    enter(cells.back().blocks);
}

void ModelBuilder::insertCoveredTableCell(const librevenge::RVNGPropertyList &propList)
{
    if (tables.empty() || tables.back().table->rows.empty())
        openTableRow({});
    OpenTable &open = tables.back();
    Cell cell;
    cell.covered = true;
    cell.row = static_cast<int>(open.table->rows.size()) - 1;
    // Producers differ in whether they list the cells a span covers sideways;
    // those that do list them right after the spanning cell.
    const auto given = Units::integer(propList, "librevenge:column");
    if (given) {
        cell.column = *given;
        open.nextColumn = std::max(open.nextColumn, cell.column + 1);
        open.horizontallyCovered = 0;
    } else if (open.horizontallyCovered > 0) {
        cell.column = open.nextColumn - open.horizontallyCovered--;
    } else {
        cell.column = open.nextColumn++;
    }
    open.table->rows.back().cells.push_back(std::move(cell));
}

void ModelBuilder::closeTable()
{
    if (!tables.empty())
        tables.pop_back();
}

} // namespace richtext
