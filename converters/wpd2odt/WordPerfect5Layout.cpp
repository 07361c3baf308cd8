#include "WordPerfect5Layout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

constexpr double unitsPerInch = 1200.0;
constexpr unsigned char boxGroup = 0xDA;
// Subgroups: figure, table, text and user boxes, equations, then the two kinds of line.
constexpr unsigned char figureBox = 0x00;
constexpr unsigned char horizontalLine = 0x05;
constexpr unsigned char verticalLine = 0x06;
constexpr unsigned char equationContent = 0x08;
constexpr unsigned char textContent = 0x10;
constexpr unsigned char graphicContent = 0x80;

unsigned readU16(const std::vector<unsigned char> &bytes, std::size_t at)
{
    return bytes[at] | (bytes[at + 1] << 8);
}

std::uint32_t readU32(const std::vector<unsigned char> &bytes, std::size_t at)
{
    return readU16(bytes, at) | (static_cast<std::uint32_t>(readU16(bytes, at + 2)) << 16);
}

bool isWordPerfect5(const std::vector<unsigned char> &bytes)
{
    // Prefix: FF "WPC", document pointer, product 1, file type 0x0A, major version 0, and no
    // encryption key.
    return bytes.size() >= 16 && bytes[0] == 0xFF && bytes[1] == 'W' && bytes[2] == 'P' && bytes[3] == 'C' &&
           bytes[8] == 1 && bytes[9] == 0x0A && bytes[10] == 0 && bytes[12] == 0 && bytes[13] == 0;
}

bool near(double a, double b)
{
    return std::fabs(a - b) < 0.001;
}

constexpr unsigned char definitionGroup = 0xD2;
constexpr unsigned char tableDefinition = 0x0B;
constexpr unsigned char tableGroup = 0xDC;
constexpr unsigned char rowStart = 0x01;

// A table definition: the previous one (flags, shading, column count, 20 bytes, 5 per column),
// then this one: flags, shading percent, column count, 20 bytes, and the columns' widths.
void readTable(const std::vector<unsigned char> &data, std::vector<WordPerfect5Layout::Table> &tables)
{
    if (data.size() < 4)
        return;
    const std::size_t own = 24 + 5 * static_cast<std::size_t>(readU16(data, 2));
    if (own + 24 > data.size())
        return;
    WordPerfect5Layout::Table table;
    table.shade = std::min<int>(data[own + 1], 100);
    const std::size_t columns = std::min<std::size_t>(readU16(data, own + 2), 32);
    for (std::size_t i = 0; i < columns && own + 24 + 2 * i + 1 < data.size(); ++i)
        table.widths.push_back(readU16(data, own + 24 + 2 * i) / unitsPerInch);
    tables.push_back(std::move(table));
}

// A row: its previous state and its own, each flags (3 where the height follows the text, 1 for a
// fixed height), height and a count byte (0x80 + bytes) before a word per column, where 0x80NN
// repeats the next word NN times.
void readRow(const std::vector<unsigned char> &data, WordPerfect5Layout::Table &table)
{
    if (data.size() < 4)
        return;
    const std::size_t own = 4 + (data[3] & 0x7F);
    if (own + 4 > data.size())
        return;
    const bool fixed = (data[own] & 0x02) == 0;
    table.fixedHeights.push_back(fixed ? readU16(data, own + 1) / unitsPerInch : 0);
    const std::size_t end = std::min(data.size(), own + 4 + (data[own + 3] & 0x7F));
    std::vector<unsigned> words;
    for (std::size_t p = own + 4; p + 1 < end && words.size() < 64; p += 2) {
        const unsigned word = readU16(data, p);
        if ((word & 0xFF00) == 0x8000 && p + 3 < end) {
            words.insert(words.end(), std::min<std::size_t>(word & 0xFF, 64 - words.size()),
                         readU16(data, p + 2));
            p += 2;
        } else {
            words.push_back(word);
        }
    }
    table.rows.push_back(std::move(words));
}

// The padding libodfgen gives every cell, in inches.
constexpr double cellPadding = 0.0382;

// A 5.1 line style as an ODF border and its width in inches; a single line is libwpd's own
// hairline. (Literal text, not formatted numbers: no locale's decimal comma.)
struct Line {
    double width;
    const char *border;
};

Line line(unsigned style)
{
    switch (style) {
    case 0:
        return {0, "0.0in"};
    case 2:
        return {0.0208, "0.0208in double #000000"};
    case 3:
        return {0.0007, "0.0007in dashed #000000"};
    case 4:
        return {0.0007, "0.0007in dotted #000000"};
    case 5:
        return {0.0139, "0.0139in solid #000000"};
    case 6:
        return {0.0278, "0.0278in solid #000000"};
    default:
        return {0.0007, "0.0007in solid #000000"};
    }
}

} // namespace

WordPerfect5Layout::Contents WordPerfect5Layout::read(const std::vector<unsigned char> &bytes)
{
    Contents found;
    if (!isWordPerfect5(bytes))
        return found;
    // A variable-length function is code, subgroup, length, that many bytes ending in the length,
    // subgroup and code again; both ends must agree, so text that happens to hold the code is
    // not taken for a box.
    for (std::size_t at = readU32(bytes, 4); at + 4 <= bytes.size(); ++at) {
        const unsigned char subgroup = at + 1 < bytes.size() ? bytes[at + 1] : 0xFF;
        if ((bytes[at] == definitionGroup && subgroup == tableDefinition) ||
            (bytes[at] == tableGroup && subgroup == rowStart)) {
            const std::size_t end = at + 4 + readU16(bytes, at + 2);
            if (end > bytes.size() || end < at + 8 || bytes[end - 1] != bytes[at] ||
                bytes[end - 2] != subgroup)
                continue;
            const std::vector<unsigned char> data(bytes.begin() + static_cast<std::ptrdiff_t>(at + 4),
                                                  bytes.begin() + static_cast<std::ptrdiff_t>(end - 4));
            if (subgroup == tableDefinition)
                readTable(data, found.tables);
            else if (!found.tables.empty())
                readRow(data, found.tables.back());
            at = end - 1;
            continue;
        }
        if (bytes[at] != boxGroup || subgroup > verticalLine)
            continue;
        const unsigned length = readU16(bytes, at + 2);
        const std::size_t body = at + 4;
        const std::size_t end = body + length;
        if (length < 16 || end > bytes.size() || bytes[end - 1] != boxGroup || bytes[end - 2] != subgroup ||
            readU16(bytes, end - 4) != length)
            continue;
        at = end - 1;
        if (subgroup == horizontalLine || subgroup == verticalLine) {
            found.losses.add(richtext::loss::graphicLines);
            continue;
        }
        if (length < 53)
            continue;
        // Box number, position and type, alignment, width, height, x, y; the content type
        // follows 36 bytes further on.
        const unsigned char content = bytes[body + 48];
        if (content == textContent) {
            found.losses.add(richtext::loss::boxedText);
        } else if (content == equationContent) {
            found.losses.add(richtext::loss::equations);
        } else if (content == graphicContent && subgroup == figureBox) {
            Box box;
            box.paragraphAnchored = (bytes[body + 2] & 0x03) == 0;
            box.fullWidth = (bytes[body + 3] & 0x03) == 3;
            box.width = readU16(bytes, body + 4) / unitsPerInch;
            box.height = readU16(bytes, body + 6) / unitsPerInch;
            box.x = readU16(bytes, body + 8) / unitsPerInch;
            box.y = readU16(bytes, body + 10) / unitsPerInch;
            box.graphicWidth = readU16(bytes, body + 34) / unitsPerInch;
            box.graphicHeight = readU16(bytes, body + 36) / unitsPerInch;
            found.pictures.push_back(box);
        } else if (content == graphicContent) {
            // libwpd reads pictures from figure boxes only.
            found.losses.add(richtext::loss::unreadablePictures);
        }
    }
    return found;
}

void WordPerfect5Layout::openParagraph(const librevenge::RVNGPropertyList &propList)
{
    paragraphTop.reset();
    OdtGenerator::openParagraph(propList);
}

void WordPerfect5Layout::openFrame(const librevenge::RVNGPropertyList &propList)
{
    const librevenge::RVNGProperty *anchor = propList["text:anchor-type"];
    const librevenge::RVNGProperty *width = propList["svg:width"];
    if (next >= boxes.size() || !anchor || anchor->getStr() != "paragraph" || !width) {
        OdtGenerator::openFrame(propList);
        return;
    }
    // The frames come in the order of the boxes; a box libwpd left out (one in a table's
    // structure, say) is passed over by its width.
    std::size_t match = next;
    while (match < boxes.size() && !boxes[match].fullWidth && !near(boxes[match].width, width->getDouble()))
        ++match;
    if (match == boxes.size()) {
        OdtGenerator::openFrame(propList);
        return;
    }
    next = match + 1;
    const Box &box = boxes[match];
    if (!box.paragraphAnchored) {
        OdtGenerator::openFrame(propList);
        return;
    }
    librevenge::RVNGPropertyList placed(propList);
    // The frame takes the graphic as WordPerfect showed it in the box: as large as fits, in its own
    // proportions, centred (a drawing stretched to a full-width box is what libwpd gives). A
    // full-width box beside another box is narrower than the text: WordPerfect recorded the
    // width and place it gave it, and only a box without them spans the text.
    const bool spansText = box.fullWidth && box.width <= 0;
    const double boxWidth = spansText ? width->getDouble() : box.width;
    double shownWidth = boxWidth, shownHeight = box.height;
    // (A box WordPerfect sized to its graphic keeps its recorded size, rounding and all.)
    if (box.graphicWidth > 0 && box.graphicHeight > 0 && boxWidth > 0 && box.height > 0 &&
        std::abs(boxWidth / box.height - box.graphicWidth / box.graphicHeight) >
            0.01 * box.graphicWidth / box.graphicHeight) {
        const double scale = std::min(boxWidth / box.graphicWidth, box.height / box.graphicHeight);
        shownWidth = box.graphicWidth * scale;
        shownHeight = box.graphicHeight * scale;
    }
    placed.insert("svg:width", shownWidth, librevenge::RVNG_INCH);
    placed.insert("svg:height", shownHeight, librevenge::RVNG_INCH);
    // WordPerfect keeps where it last laid the box out on the page, and lines fall differently
    // here; a paragraph box hangs from its paragraph, the first at its top (WordPerfect's
    // default offset) and the others as far below it as WordPerfect had them.
    if (!paragraphTop)
        paragraphTop = box.y;
    placed.insert("style:vertical-rel", "paragraph");
    placed.insert("style:vertical-pos", "from-top");
    placed.insert("svg:y", std::max(0.0, box.y - *paragraphTop + (box.height - shownHeight) / 2),
                  librevenge::RVNG_INCH);
    if (spansText) {
        placed.insert("style:horizontal-rel", "paragraph");
        placed.insert("style:horizontal-pos", "center");
        placed.remove("svg:x");
    } else {
        placed.insert("style:horizontal-rel", "page");
        placed.insert("style:horizontal-pos", "from-left");
        placed.insert("svg:x", box.x + (box.width - shownWidth) / 2, librevenge::RVNG_INCH);
    }
    OdtGenerator::openFrame(placed);
}

void WordPerfect5Layout::openTable(const librevenge::RVNGPropertyList &propList)
{
    // The tables come in the order of their definitions, but a header's come again on each page
    // style: a table is known by its columns' widths.
    table = nullptr;
    row = 0;
    std::vector<double> widths;
    if (const librevenge::RVNGPropertyListVector *columns = propList.child("librevenge:table-columns")) {
        for (unsigned long i = 0; i < columns->count(); ++i) {
            const librevenge::RVNGProperty *width = (*columns)[i]["style:column-width"];
            widths.push_back(width ? width->getDouble() : 0);
        }
    }
    auto matches = [&](const Table &candidate) {
        return candidate.widths.size() == widths.size() &&
               std::equal(widths.begin(), widths.end(), candidate.widths.begin(),
                          [](double a, double b) { return std::fabs(a - b) < 0.002; });
    };
    for (std::size_t i : {nextTable, std::size_t{0}}) {
        const auto found = std::find_if(
            tables.begin() + static_cast<std::ptrdiff_t>(std::min(i, tables.size())), tables.end(), matches);
        if (found != tables.end()) {
            table = &*found;
            nextTable = static_cast<std::size_t>(found - tables.begin()) + 1;
            break;
        }
    }
    OdtGenerator::openTable(propList);
}

void WordPerfect5Layout::openTableRow(const librevenge::RVNGPropertyList &propList)
{
    ++row;
    // libwpd reads no 5.1 row height; a fixed one holds what fits, as in WordPerfect.
    if (table && row <= table->fixedHeights.size() && table->fixedHeights[row - 1] > 0) {
        librevenge::RVNGPropertyList fixed(propList);
        fixed.remove("style:min-row-height");
        fixed.insert("style:row-height", table->fixedHeights[row - 1], librevenge::RVNG_INCH);
        OdtGenerator::openTableRow(fixed);
        return;
    }
    OdtGenerator::openTableRow(propList);
}

void WordPerfect5Layout::openTableCell(const librevenge::RVNGPropertyList &propList)
{
    const librevenge::RVNGProperty *row = propList["librevenge:row"];
    const librevenge::RVNGProperty *column = propList["librevenge:column"];
    if (!table || !row || !column || row->getInt() < 0 || column->getInt() < 0 ||
        static_cast<std::size_t>(row->getInt()) >= table->rows.size()) {
        OdtGenerator::openTableCell(propList);
        return;
    }
    const int r = row->getInt(), c = column->getInt();
    const librevenge::RVNGProperty *columnSpan = propList["table:number-columns-spanned"];
    const librevenge::RVNGProperty *rowSpan = propList["table:number-rows-spanned"];
    const int columns = std::max(1, columnSpan ? columnSpan->getInt() : 1);
    const int rows = std::max(1, rowSpan ? rowSpan->getInt() : 1);
    // An edge between two cells is drawn once, by the cell below or to the right of it: its own
    // line there, or else the one the other cell gives that edge. (Both drawn, two double lines
    // would show as four.)
    auto word = [&](int atRow, int atColumn) -> unsigned {
        if (atRow < 0 || atColumn < 0 || static_cast<std::size_t>(atRow) >= table->rows.size())
            return 0;
        const std::vector<unsigned> &words = table->rows[static_cast<std::size_t>(atRow)];
        return static_cast<std::size_t>(atColumn) < words.size() ? words[static_cast<std::size_t>(atColumn)]
                                                                 : 0;
    };
    auto side = [](unsigned word, int shift) { return (word >> shift) & 7; };
    const int lastRow = r + rows - 1, lastColumn = c + columns - 1;
    const unsigned top = side(word(r, c), 0) ? side(word(r, c), 0) : side(word(r - 1, c), 8);
    const unsigned left = side(word(r, c), 3) ? side(word(r, c), 3) : side(word(r, c - 1), 11);
    const bool cellBelow = static_cast<std::size_t>(lastRow) + 1 < table->rows.size();
    const bool cellBeside =
        static_cast<std::size_t>(lastColumn) + 1 < table->rows[static_cast<std::size_t>(r)].size();
    const unsigned bottom = cellBelow ? 0 : side(word(lastRow, c), 8);
    const unsigned right = cellBeside ? 0 : side(word(r, lastColumn), 11);
    librevenge::RVNGPropertyList cell(propList);
    for (const auto &[name, style] :
         {std::pair{"top", top}, {"left", left}, {"bottom", bottom}, {"right", right}}) {
        cell.insert((std::string("fo:border-") + name).c_str(), line(style).border);
        // Two hairlines a hairline apart, or a reader draws one thick line.
        if (style == 2)
            cell.insert((std::string("style:border-line-width-") + name).c_str(),
                        "0.0069in 0.0069in 0.0069in");
        // WordPerfect draws a line inside the cell's margin; the cell grows by none of it.
        cell.insert((std::string("fo:padding-") + name).c_str(),
                    std::max(0.0, cellPadding - (line(style).width - line(1).width)), librevenge::RVNG_INCH);
    }
    if ((word(r, c) & 0x4000) && table->shade > 0) {
        const int grey = 255 * (100 - table->shade) / 100;
        char colour[8];
        std::snprintf(colour, sizeof colour, "#%02x%02x%02x", grey, grey, grey);
        cell.insert("fo:background-color", colour);
    }
    OdtGenerator::openTableCell(cell);
}
