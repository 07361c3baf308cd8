#include "Wp5Writer.h"

#include "Bytes.h"
#include "CharacterMap.h"
#include "Properties.h"
#include "WpgImage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace richtext::wordperfect {

namespace {

constexpr int fontRecordSize = 86;

// Font names in the 5.1 pool are single bytes: Latin-1, anything else '?'.
std::string latin1(const std::string &utf8)
{
    std::string out;
    for (char32_t c : CharacterMap::decodeUtf8(utf8))
        out += c > 0 && c < 0x100 ? static_cast<char>(c) : '?';
    return out;
}

struct IndexedPacket {
    int type;
    std::string data;
};

// Text for a summary field: ASCII as it is, other characters as WordPerfect's extended-character
// code, anything else as '?'; never more than `room` bytes, and no code cut in half.
std::string summaryText(const std::string &utf8, std::size_t room)
{
    const std::u32string text = CharacterMap::decodeUtf8(utf8);
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        std::string piece;
        std::size_t used = 1;
        if (text[i] >= 0x20 && text[i] < 0x7F) {
            piece = static_cast<char>(text[i]);
        } else if (const auto match = CharacterMap::wp5().find(std::u32string_view(text).substr(i))) {
            piece = {'\xC0', static_cast<char>(match->number), static_cast<char>(match->set), '\xC0'};
            used = match->length;
        } else {
            piece = text[i] == U'\n' || text[i] == U'\t' ? " " : "?";
        }
        if (out.size() + piece.size() > room)
            break;
        out += piece;
        i += used;
    }
    return out;
}

// The document summary packet as WordPerfect 5.1 lays it out: creation date as text (26 with its
// NUL), descriptive name (68, space-padded, no NUL), descriptive type (21 with NUL), then subject,
// author, typist, abstract, account and keywords as NUL-terminated strings of bounded length, and
// the 5.1 marker, the creation date in numbers and the marker again.
std::string summaryPacket(const DocumentSummary &summary)
{
    // SOURCE_DATE_EPOCH (seconds, UTC) stands for the clock, so that the same document makes the
    // same bytes when asked to: in tests, and for anyone who keeps converted files reproducible.
    std::tm local{};
    if (const char *epoch = std::getenv("SOURCE_DATE_EPOCH"); epoch && *epoch) {
        char *end = nullptr;
        const long long seconds = std::strtoll(epoch, &end, 10);
        const std::time_t at = static_cast<std::time_t>(*end == '\0' && seconds >= 0 ? seconds : 0);
        gmtime_r(&at, &local);
    } else {
        const std::time_t now = std::time(nullptr);
        localtime_r(&now, &local);
    }
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%02d-%02d-%02d %02d:%02d%c", local.tm_mday, local.tm_mon + 1,
                  local.tm_year % 100, local.tm_hour % 12 == 0 ? 12 : local.tm_hour % 12, local.tm_min,
                  local.tm_hour < 12 ? 'a' : 'p');
    std::string data = stamp;
    data.resize(25, ' ');
    data += '\0';
    std::string name = summaryText(summary.title, 68);
    name.resize(68, ' ');
    data += name;
    data += std::string(20, ' ') + '\0';
    const std::pair<const std::string *, std::size_t> fields[] = {
        {&summary.subject, 160},     {&summary.author, 60}, {nullptr, 60},
        {&summary.description, 780}, {nullptr, 160},        {&summary.keywords, 160},
    };
    for (const auto &[value, room] : fields) {
        if (value)
            data += summaryText(*value, room);
        data += '\0';
    }
    put8(data, 0xFF);
    put16(data, static_cast<unsigned>(local.tm_year + 1900));
    put8(data, static_cast<unsigned>(local.tm_mon + 1));
    put8(data, static_cast<unsigned>(local.tm_mday));
    put8(data, static_cast<unsigned>(local.tm_hour));
    put8(data, static_cast<unsigned>(local.tm_min));
    data.append(4, '\0');
    put8(data, 0xFF);
    return data;
}

} // namespace

void Wp5Writer::function(int code, int sub, const std::string &data)
{
    std::string &o = out();
    const unsigned length = static_cast<unsigned>(data.size()) + 4;
    put8(o, code);
    put8(o, sub);
    put16(o, length);
    o += data;
    put16(o, length);
    put8(o, sub);
    put8(o, code);
}

void Wp5Writer::fixed(int code, const std::string &data)
{
    std::string &o = out();
    put8(o, code);
    o += data;
    put8(o, code);
}

const CharacterMap &Wp5Writer::characters() const
{
    return CharacterMap::wp5();
}

const WordPerfectWriter::OneByteCodes &Wp5Writer::oneByteCodes() const
{
    static constexpr OneByteCodes codes{' ', 0xA0, 0xAC, 0xA9, 0x0A, 0x0C};
    return codes;
}

bool Wp5Writer::writeCharacter(std::u32string_view text, std::size_t &used)
{
    const auto match = CharacterMap::wp5().find(text);
    if (!match)
        return false;
    std::string data;
    put8(data, match->number); // number first, then the set: the reverse of WordPerfect 6
    put8(data, match->set);
    fixed(0xC0, data);
    used = match->length;
    return true;
}

// 5.1 has no line break inside a paragraph: a hard return is what its users typed.
void Wp5Writer::writeLineBreak()
{
    put8(out(), 0x0A);
}

// Tab: its kind in the high bits (as 5.1 files hold them: left 00, decimal 40, right 48, centre C8,
// with 02 for a stop of the tab set), the position the text starts at and the stop's position, both
// from the paper's edge, and the stop's column in tenths of an inch. The dot leader stays in the tab
// set: libwpd drops a tab whose code carries the leader bit (10).
void Wp5Writer::writeTab(const TabStop &stop)
{
    static const int kinds[] = {0x02, 0xCA, 0x4A, 0x42};
    const unsigned position = static_cast<unsigned>(std::clamp(stop.position, 0, 0xFFFE));
    std::string data;
    put8(data, static_cast<unsigned>(kinds[stop.kind & 3]));
    put16(data, position);
    put16(data, position);
    put16(data, position / 120);
    fixed(0xC1, data);
}

void Wp5Writer::writeAttribute(int attribute, bool on)
{
    std::string data;
    put8(data, attribute);
    fixed(on ? 0xC3 : 0xC4, data);
}

int Wp5Writer::fontNumber(const CharacterFormat &format)
{
    // A record per face and size: libwpd reads a size from the record, not from the font change.
    const std::pair<std::string, int> key(format.font, format.size);
    auto found = fontNumbers.find(key);
    if (found == fontNumbers.end() && fonts.size() < 250) {
        fonts.emplace_back(format.font, format.size);
        found = fontNumbers.emplace(key, static_cast<int>(fonts.size()) - 1).first;
    } else if (found == fontNumbers.end()) {
        found = fontNumbers.begin(); // the list is full: an earlier record's size
    }
    return found->second;
}

void Wp5Writer::writeFont(const CharacterFormat &format)
{
    // libwpd reads whole points, cutting off the rest: the nearest whole point, not the one below,
    // keeps the blank lines that space a page (and its text, on average) as tall as they were.
    CharacterFormat rounded = format;
    rounded.size = std::max(50, (format.size + 25) / 50 * 50);
    std::string data(30, '\0');
    data[25] = static_cast<char>(fontNumber(rounded));
    data[28] = static_cast<char>(rounded.size & 0xFF);
    data[29] = static_cast<char>((rounded.size >> 8) & 0xFF);
    function(0xD1, 0x01, data);
}

void Wp5Writer::writeColour(std::uint32_t rgb)
{
    std::string data(3, '\0');
    put8(data, rgb >> 16);
    put8(data, rgb >> 8);
    put8(data, rgb);
    function(0xD1, 0x00, data);
}

void Wp5Writer::writeParagraphFormat(const ParagraphFormat &from, const ParagraphFormat &to)
{
    std::string data;
    if (from.justification != to.justification) {
        put8(data, from.justification);
        put8(data, to.justification);
        function(0xD0, 0x06, data);
    }
    if (from.lineSpacing != to.lineSpacing) {
        data.clear();
        put16(data, static_cast<unsigned>(from.lineSpacing >> 8)); // 8.8 fixed point
        put16(data, static_cast<unsigned>(to.lineSpacing >> 8));
        function(0xD0, 0x02, data);
    }
    // libwpd loses a header's or note's whole text when it holds a margin code, so indents stay
    // in the document's own text. Nor do they go in a cell: libwpd lays cells out without margins,
    // and takes a margin below the page's for the page's own, moving the tables of the whole page.
    if ((from.leftIndent != to.leftIndent || from.rightIndent != to.rightIndent) && !inSubDocument() &&
        !inTable()) {
        // 5.1 indents whole paragraphs by moving the margins, which are measured from the page edge.
        const PageSetup &page = pageSetup();
        data.clear();
        put16(data, static_cast<unsigned>(std::max(0, page.left + from.leftIndent)));
        put16(data, static_cast<unsigned>(std::max(0, page.right + from.rightIndent)));
        put16(data, static_cast<unsigned>(std::max(0, page.left + to.leftIndent)));
        put16(data, static_cast<unsigned>(std::max(0, page.right + to.rightIndent)));
        function(0xD0, 0x01, data);
    }
    if (from.tabs != to.tabs)
        writeTabSet(to.tabs.empty() ? defaultTabStops(to) : to.tabs); // no stops of its own: WordPerfect's
}

// Tab set: the old and the new 40 stops, each as positions from the page edge (0xFFFF ends
// the list) then alignments two to a byte, and the margin the positions are relative to.
void Wp5Writer::writeTabSet(const std::vector<TabStop> &tabs)
{
    const int margin = pageSetup().left;
    std::string data(100, '\0');
    const std::size_t count = std::min<std::size_t>(tabs.size(), 40);
    for (std::size_t i = 0; i < 40; ++i)
        put16(data,
              i < count ? static_cast<unsigned>(std::clamp(margin + tabs[i].position, 0, 0xFFFE)) : 0xFFFF);
    for (std::size_t i = 0; i < 20; ++i) {
        // Alignment in the low two bits of each half, a dot leader in the third.
        auto type = [&](std::size_t at) {
            return at < count ? tabs[at].kind | (tabs[at].dotLeader ? 4 : 0) : 0;
        };
        const int even = type(2 * i);
        const int odd = type(2 * i + 1);
        put8(data, static_cast<unsigned>((even << 4) | odd));
    }
    put16(data, 0xFFFF); // the old margin
    put16(data, static_cast<unsigned>(margin));
    function(0xD0, 0x04, data);
}

void Wp5Writer::writeParagraphStart(const ParagraphFormat &format)
{
    // 5.1 has no first-line indent of its own: its users typed a tab (or a margin release for a
    // hanging line) at the start of the paragraph, and readers take that tab's position as the indent.
    if (format.firstLine == 0)
        return;
    const int position = pageSetup().left + format.leftIndent + format.firstLine;
    if (position <= 0 || position >= 0xFFFE)
        return;
    if (format.firstLine > 0) {
        writeTab({position, 0, false});
        return;
    }
    std::string data; // margin release back to the hanging line's start
    put8(data, 0x80);
    put16(data, static_cast<unsigned>(position));
    put16(data, static_cast<unsigned>(position));
    put16(data, static_cast<unsigned>(position / 120));
    fixed(0xC1, data);
}

void Wp5Writer::writeSideMargins()
{
    std::string data;
    put16(data, 1200);
    put16(data, 1200);
    put16(data, pageSetup().left);
    put16(data, pageSetup().right);
    function(0xD0, 0x01, data);
}

// Define columns, then columns on: the count and each column's left and right edge from the
// paper's left edge (24 pairs), after the definition it replaces. The type sits in the count's top
// bits and newspaper is none of them: WordPerfect 4.2 marks parallel columns with the top bit, and 6
// numbers its types from newspaper 0. Columns off ends a line, so it follows the paragraph's own
// HRt, which libwpd needs to end the paragraph. 5.1 has no balanced columns.
void Wp5Writer::writeColumns(const TextColumns &columns)
{
    const int count = columns.count, gap = columns.gap;
    if (columnsOn) {
        put8(out(), 0xAF);
        columnsOn = false;
    }
    if (count < 2)
        return;
    const PageSetup &page = pageSetup();
    const int area = page.width - page.left - page.right;
    const int width = std::max(1, (area - gap * (count - 1)) / count);
    std::string definition;
    put8(definition, static_cast<unsigned>(count));
    for (int i = 0; i < 24; ++i) {
        const int left = i < count ? page.left + i * (width + gap) : 0;
        put16(definition, static_cast<unsigned>(std::clamp(left, 0, 0xFFFF)));
        put16(definition, static_cast<unsigned>(i < count ? std::clamp(left + width, 0, 0xFFFF) : 0));
    }
    function(0xD2, 0x01, columnDefinition + definition);
    columnDefinition = definition;
    put8(out(), 0x87);
    columnsOn = true;
}

// In columns WordPerfect 5.1 ends a column with a hard page; libwpd, which reads no columns,
// takes it for a page break.
void Wp5Writer::writeColumnBreak()
{
    put8(out(), 0x0C);
}

// A hard page in columns only ends a column: a page break there turns them off for it and on
// again after it.
void Wp5Writer::writePageBreak()
{
    const bool inColumns = columnsOn && !inSubDocument();
    if (inColumns)
        put8(out(), 0xAF);
    put8(out(), 0x0C);
    if (inColumns) {
        function(0xD2, 0x01, columnDefinition + columnDefinition);
        put8(out(), 0x87);
    }
}

void Wp5Writer::writePageSetup()
{
    const PageSetup &page = pageSetup();
    writeSideMargins();
    std::string data;
    put16(data, 1200);
    put16(data, 1200);
    put16(data, page.top);
    put16(data, page.bottom);
    function(0xD0, 0x05, data);
    writePaperSize(page.width, page.height);
}

// Paper size and type: four 47-byte form descriptions (old desired, old effective, new desired,
// new effective: length, width, type, name) and the orientation at 189, as WordPerfect 5.1 lays
// the code out; the printer-specific tail stays zero.
void Wp5Writer::writePaperSize(int width, int height)
{
    std::string data(243, '\0');
    auto form = [&](std::size_t at, int length, int breadth, bool named) {
        data[at] = static_cast<char>(length & 0xFF);
        data[at + 1] = static_cast<char>((length >> 8) & 0xFF);
        data[at + 2] = static_cast<char>(breadth & 0xFF);
        data[at + 3] = static_cast<char>((breadth >> 8) & 0xFF);
        data[at + 4] = 0x01; // standard paper
        if (named) {
            data[at + 5] = 0x08;
            data.replace(at + 6, 8, "Standard");
        }
    };
    form(0, 13200, 10200, false);
    form(47, 13200, 10200, true);
    form(95, height, width, false);
    form(142, height, width, true);
    data[189] = 0; // the size is given as the page stands
    function(0xD0, 0x0B, data);
}

void Wp5Writer::writeImage(const Raster &raster, int widthWpu, int heightWpu)
{
    // A figure box laid out as WordPerfect 5.1 writes one for a retrieved graphic; the graphic
    // itself goes to the graphics packet of the prefix, found by its index there.
    const int index = static_cast<int>(pictures.size());
    pictures.push_back(wpg1Records(raster, widthWpu, heightWpu));
    std::string data(117, '\0');
    auto at16 = [&](std::size_t offset, unsigned value) {
        data[offset] = static_cast<char>(value & 0xFF);
        data[offset + 1] = static_cast<char>((value >> 8) & 0xFF);
    };
    at16(0, static_cast<unsigned>(((index + 1) << 5) | 1)); // box number
    data[2] = 0x06;                                         // anchored to a character, aligned at its top
    data[3] = 0x00;
    at16(4, static_cast<unsigned>(std::min(widthWpu, 0xFFFF)));
    at16(6, static_cast<unsigned>(std::min(heightWpu, 0xFFFF)));
    at16(12, 200); // spacing around the box, as WordPerfect's figure default
    at16(18, 200);
    at16(34, static_cast<unsigned>(std::min(widthWpu, 0x7FFF))); // the graphic's own size
    at16(36, static_cast<unsigned>(std::min(heightWpu, 0x7FFF)));
    at16(40, 100); // scaled 100 % both ways
    at16(42, 100);
    data[48] = static_cast<char>(0x80); // contents: a graphic held in the document
    data[99] = 0x01;
    at16(109, static_cast<unsigned>(index));
    function(0xDA, 0x00, data);
}

namespace {

// A cell's lines and shading in a 5.1 row code, one word per column it covers: line styles in
// three bits each (0 none, 1 single, 2 double…), the top in bits 0-2, the left in 3-5, the bottom
// in 8-10 and the right in 11-13; bit 14 shades the cell at the table's one percentage. This is
// how WordPerfect 5.1 writes them (prn_test5.wp: a double border, single lines inside, a double
// line above a total, its one shaded cell; FormTab5FE.wp: a line given by the cell on its left).
constexpr unsigned shadedCell = 1u << 14;

unsigned cellLines(const CellShape &cell, bool top, bool left, bool bottom, bool right)
{
    auto line = [&](int side) -> unsigned {
        if (!(cell.borders & side))
            return 0;
        return (cell.doubleLines & side) ? 2 : 1;
    };
    unsigned word = 0;
    if (top)
        word |= line(4);
    if (left)
        word |= line(1) << 3;
    if (bottom)
        word |= line(8) << 8;
    if (right)
        word |= line(2) << 11;
    return word;
}

bool shaded(const CellShape &cell)
{
    return cell.fill && *cell.fill != 0xFFFFFF;
}

// WordPerfect 5.1 shades in grey, by percent of black.
int shadePercent(std::uint32_t rgb)
{
    return std::clamp((1000 - lightness(rgb) + 5) / 10, 1, 100);
}

bool isGrey(std::uint32_t rgb)
{
    const int r = (rgb >> 16) & 0xFF, g = (rgb >> 8) & 0xFF, b = rgb & 0xFF;
    return std::max({r, g, b}) - std::min({r, g, b}) <= 8;
}

} // namespace

void Wp5Writer::writeTableStart(const std::vector<int> &widths, int position, int leftOffset,
                                const std::vector<std::vector<CellShape>> &rows)
{
    const std::size_t columns = std::min<std::size_t>(widths.size(), 32);
    // One grey shades the whole table: the first shaded cell's. Colour, or another grey, is lost.
    int shade = 0;
    for (const std::vector<CellShape> &row : rows) {
        for (const CellShape &cell : row) {
            if (cell.coveredFromAbove || !shaded(cell))
                continue;
            const int percent = shadePercent(*cell.fill);
            if (shade == 0)
                shade = percent;
            if (!isGrey(*cell.fill) || std::abs(percent - shade) > 5)
                lose(loss::cellShading);
        }
    }
    std::string data(24, '\0');                         // the previous definition: none
    put8(data, static_cast<unsigned>(position & 0x07)); // flags: the table's position
    put8(data, static_cast<unsigned>(shade));
    put16(data, static_cast<unsigned>(columns));
    data.append(4, '\0');
    put16(data, 0x53); // gutters: 0.07 in, as WordPerfect sets them
    put16(data, 0x53);
    data.append(10, '\0');
    put16(data, static_cast<unsigned>(std::clamp(leftOffset, 0, 0xFFFF)));
    for (std::size_t i = 0; i < columns; ++i)
        put16(data, static_cast<unsigned>(std::max(1, widths[i])));
    for (std::size_t i = 0; i < columns; ++i)
        put16(data, 0);
    for (std::size_t i = 0; i < columns; ++i)
        put8(data, 0);
    function(0xD2, 0x0B, data);

    // Each row's code: its old state (none), then its own: flags (3 where the height follows the
    // text, 1 for a fixed height, as WordPerfect writes them), the height, and a word per column,
    // each list counted as 0x80 + its bytes. A place a cell above covers takes that cell's sides
    // and shading, its bottom only in the cell's last row.
    std::vector<std::string> &rowCodes = tableRows.emplace_back().codes;
    struct Join {
        int rowsLeft = 0;
        int first = 0, last = 0;
        CellShape cell;
    };
    std::vector<Join> joins(columns);
    for (const std::vector<CellShape> &row : rows) {
        std::vector<unsigned> words;
        for (const CellShape &cell : row) {
            const int at = std::clamp(cell.column, 0, std::max(0, static_cast<int>(columns) - 1));
            if (cell.coveredFromAbove) {
                Join *join = columns > 0 && joins[static_cast<std::size_t>(at)].rowsLeft > 0
                                 ? &joins[static_cast<std::size_t>(at)]
                                 : nullptr;
                if (!join) {
                    words.push_back(0);
                    continue;
                }
                const bool last = --join->rowsLeft == 0;
                words.push_back(cellLines(join->cell, false, at == join->first, last, at == join->last) |
                                (shaded(join->cell) ? shadedCell : 0));
                continue;
            }
            const int last = std::min(static_cast<int>(columns) - 1, at + std::max(1, cell.columnSpan) - 1);
            for (int c = at; c <= last; ++c) {
                words.push_back(cellLines(cell, true, c == at, cell.rowSpan <= 1, c == last) |
                                (shaded(cell) ? shadedCell : 0));
                if (cell.rowSpan > 1)
                    joins[static_cast<std::size_t>(c)] = Join{cell.rowSpan - 1, at, last, cell};
            }
        }
        words.resize(std::min<std::size_t>(words.size(), 63)); // the count byte holds 127 bytes
        // The row's height comes with its first cell that has one (a column left empty has none).
        const auto sized =
            std::find_if(row.begin(), row.end(), [](const CellShape &cell) { return cell.rowHeight > 0; });
        const CellShape first = sized == row.end() ? CellShape{} : *sized;
        const bool fixed = first.rowHeight > 0 && !first.rowAtLeast;
        std::string code;
        put8(code, 0);
        put16(code, 0);
        put8(code, 0x80);
        put8(code, fixed ? 0x01 : 0x03);
        put16(code, static_cast<unsigned>(std::clamp(first.rowHeight, 0, 0xFFFF)));
        put8(code, 0x80 | static_cast<unsigned>(2 * words.size()));
        for (unsigned word : words)
            put16(code, word);
        put16(code, 0);
        rowCodes.push_back(code);
    }
}

void Wp5Writer::writeCell(const CellShape &cell, bool firstInRow)
{
    if (firstInRow) {
        TableRows *rows = tableRows.empty() ? nullptr : &tableRows.back();
        function(0xDC, 0x01,
                 rows && rows->next < rows->codes.size() ? rows->codes[rows->next++] : std::string());
    }
    std::string data;
    put8(data, 0);
    put8(data, std::min(cell.column, 31));
    put8(data, cell.coveredFromAbove ? 0x81 : std::min(cell.columnSpan, 32));
    put8(data, cell.coveredFromAbove ? 1 : std::min(cell.rowSpan, 127));
    data.append(4, '\0');
    put16(data, 0);
    put8(data, 0);
    function(0xDC, 0x00, data);
}

void Wp5Writer::writeTableEnd()
{
    if (!tableRows.empty())
        tableRows.pop_back();
    function(0xDC, 0x02, {});
}

void Wp5Writer::writeNote(bool endnote, int number, const std::string &body, char mark)
{
    std::string data;
    // A note marked with a character of its own: the flag says the number is that character.
    put8(data, mark ? 0x80 : 0);
    put16(data, mark ? static_cast<unsigned char>(mark) : static_cast<unsigned>(number));
    if (endnote) {
        data.append(4, '\0');
    } else {
        put8(data, 0);        // no continuation pages
        data.append(2, '\0'); // line count on the one page
        data.append(9, '\0');
    }
    data += body;
    function(0xD6, endnote ? 0x01 : 0x00, data);
}

void Wp5Writer::writeHeaderFooter(bool footer, const std::string &occurrence, const std::string &body)
{
    std::string data(7, '\0');
    put8(data, occurrence == "odd" ? 2 : occurrence == "even" ? 4 : 1);
    data.append(10, '\0');
    // libwpd takes a header without a body for no header at all; an empty one is one empty line.
    data += body.empty() ? std::string(1, '\x0A') : body;
    function(0xD5, (footer ? 2 : 0) + (occurrence == "even" ? 1 : 0), data);
}

// ^B is 5.1's page number in a header or footer; libwpd reads it as nothing.
void Wp5Writer::writePageNumber()
{
    put8(out(), 0x02);
}

std::string Wp5Writer::assemble(const std::string &document)
{
    if (fonts.empty())
        fonts.emplace_back("Times New Roman", 600);
    std::string pool;
    std::string list;
    for (const auto &[name, size] : fonts) {
        std::string record(fontRecordSize, '\0');
        record[18] = static_cast<char>(pool.size() & 0xFF);
        record[19] = static_cast<char>((pool.size() >> 8) & 0xFF);
        record[47] = static_cast<char>(size & 0xFF);
        record[48] = static_cast<char>((size >> 8) & 0xFF);
        record[49] = 0x50; // proportional
        list += record;
        pool += latin1(name);
        pool += '\0';
    }
    // Document flags as real files carry them: needs formatting, quality, redline '|', screen width.
    const unsigned char flags[] = {0x08, 0x33, 0x7C, 0x00, 0x78, 0x00, 0x00, 0x00,
                                   0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    std::string graphics;
    put16(graphics, static_cast<unsigned>(pictures.size()));
    for (const std::string &picture : pictures)
        put32(graphics, static_cast<std::uint32_t>(picture.size()));
    for (const std::string &picture : pictures)
        graphics += picture;
    std::vector<IndexedPacket> packets = {
        {0x06, std::string(reinterpret_cast<const char *>(flags), sizeof flags)},
        {0x07, pool},
        {0x0F, list},
        {0x08, graphics},
    };
    if (!summary().empty())
        packets.push_back({0x01, summaryPacket(summary())});

    // Index blocks of four entries each, chained, each followed by the data of its own packets, as
    // WordPerfect lays them out: readers take a packet whose data lies past the next block for a
    // damaged one. Unused entries in the last block stay zero.
    const std::size_t blocks = (packets.size() + 3) / 4;
    std::string prefix;
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::size_t first = 4 * block;
        const std::size_t last = std::min(packets.size(), first + 4);
        auto at = static_cast<std::uint32_t>(16 + prefix.size() + 50);
        std::uint32_t next = at;
        for (std::size_t slot = first; slot < last; ++slot)
            next += static_cast<std::uint32_t>(packets[slot].data.size());
        put16(prefix, 0xFFFB);
        put16(prefix, 5);
        put16(prefix, 50);
        put32(prefix, block + 1 < blocks ? next : 0);
        for (std::size_t slot = first; slot < first + 4; ++slot) {
            const bool used = slot < last;
            put16(prefix, used ? static_cast<unsigned>(packets[slot].type) : 0);
            put32(prefix, used ? static_cast<std::uint32_t>(packets[slot].data.size()) : 0);
            put32(prefix, used ? at : 0);
            if (used)
                at += static_cast<std::uint32_t>(packets[slot].data.size());
        }
        for (std::size_t slot = first; slot < last; ++slot)
            prefix += packets[slot].data;
    }
    std::string file = "\xFFWPC";
    put32(file, static_cast<std::uint32_t>(16 + prefix.size()));
    put8(file, 1);    // WordPerfect
    put8(file, 0x0A); // document
    put8(file, 0);    // 5.x
    put8(file, 1);    // 5.1
    put16(file, 0);   // not encrypted
    put16(file, 0);
    file += prefix;
    file += document;
    return file;
}

} // namespace richtext::wordperfect
