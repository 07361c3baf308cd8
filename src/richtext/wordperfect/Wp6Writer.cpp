#include "Wp6Writer.h"

#include <algorithm>

#include "Bytes.h"
#include "CharacterMap.h"
#include "WpgImage.h"

namespace richtext::wordperfect {

namespace {

// Known metrics and classification of the faces real WordPerfect describes most; any other
// TrueType face gets the serif values, which only guide WordPerfect's substitution.
struct FaceData {
    const char *name;
    unsigned metrics[5];
    unsigned family;
    unsigned general;
    unsigned classification;
};
constexpr FaceData serifFace{"Times New Roman", {40, 7894, 4035, 2105, 0}, 0x0911, 0x1B, 1};
constexpr FaceData sansFace{"Arial", {44, 8070, 4210, 1929, 0}, 0x4116, 0x17, 8};

bool looksSans(const std::string &name)
{
    for (const char *word :
         {"Arial", "Helvetica", "Sans", "Liberation Sans", "Verdana", "Tahoma", "Calibri"}) {
        if (name.find(word) != std::string::npos)
            return true;
    }
    return false;
}

// A WordPerfect 6 string: one word per character, low byte the number, high byte the set.
void putWpString(std::string &out, std::u32string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const char32_t c = text[i];
        if (c < 0x80) {
            put16(out, c);
            ++i;
        } else if (const auto match = CharacterMap::wp6().find(text.substr(i))) {
            put16(out, (match->set << 8) | match->number);
            i += match->length;
        } else {
            put16(out, '?');
            ++i;
        }
    }
}

// The extended document summary: one group per field, each u16 group size, u16 field tag, u16
// flags, the tag's name (empty) and the value as WordPerfect strings ending in a zero word.
std::string documentSummaryData(const DocumentSummary &summary)
{
    const std::pair<int, const std::string *> fields[] = {
        {17, &summary.title},      {5, &summary.author},    {46, &summary.subject},
        {1, &summary.description}, {26, &summary.keywords},
    };
    std::string data;
    for (const auto &[tag, value] : fields) {
        if (value->empty())
            continue;
        std::string group;
        put16(group, static_cast<unsigned>(tag));
        put16(group, 0);
        put16(group, 0); // no name: WordPerfect names its fields itself
        putWpString(group, CharacterMap::decodeUtf8(*value));
        put16(group, 0);
        put16(data, static_cast<unsigned>(group.size() + 2));
        data += group;
    }
    return data;
}

std::string fontDescriptor(const std::string &name)
{
    const FaceData &face = looksSans(name) ? sansFace : serifFace;
    std::string data;
    for (unsigned metric : face.metrics)
        put16(data, metric);
    put16(data, face.family);
    put8(data, 0);    // scripting system
    put8(data, 0);    // primary character set
    put8(data, 0);    // width
    put8(data, 0x5A); // weight: regular
    put8(data, 0);    // attributes
    put8(data, face.general);
    put8(data, face.classification);
    put8(data, 0);    // fill
    put8(data, 0x8B); // TrueType
    put8(data, 0x14); // described by the .DRS
    std::string names;
    putWpString(names, CharacterMap::decodeUtf8(name));
    put16(names, 0);
    putWpString(names, U"Regular");
    put16(names, 0);
    put16(names, 0); // no prefix
    put16(names, 0); // no extension
    put16(data, static_cast<unsigned>(names.size()));
    return data + names;
}

// A cell's colour: red, green, blue and the shading, here always full.
void putShadedColour(std::string &data, std::uint32_t rgb)
{
    put8(data, rgb >> 16);
    put8(data, rgb >> 8);
    put8(data, rgb);
    put8(data, 100);
}

} // namespace

void Wp6Writer::function(int code, int sub, const std::string &data, int pid)
{
    const unsigned size = 1 + 1 + 2 + 1 + (pid ? 3 : 0) + 2 + static_cast<unsigned>(data.size()) + 2 + 1;
    std::string &o = out();
    put8(o, code);
    put8(o, sub);
    put16(o, size);
    put8(o, pid ? 0x80 : 0);
    if (pid) {
        put8(o, 1);
        put16(o, pid);
    }
    put16(o, static_cast<unsigned>(data.size()));
    o += data;
    put16(o, size);
    put8(o, code);
}

int Wp6Writer::addPacket(int type, int flags, std::string data)
{
    packets.push_back({type, flags, 0, std::move(data)});
    return static_cast<int>(packets.size());
}

int Wp6Writer::fontPid(const std::string &name)
{
    auto found = fontPids.find(name);
    if (found == fontPids.end())
        found = fontPids.emplace(name, addPacket(0x55, 0x00, fontDescriptor(name))).first;
    return found->second;
}

int Wp6Writer::textPacket(const std::string &body)
{
    std::string data;
    put16(data, 1);  // one text block
    put32(data, 10); // where it starts, from the packet's start
    put32(data, static_cast<std::uint32_t>(body.size()));
    data += body;
    const int pid = addPacket(0x08, 0x02, std::move(data));
    packets[pid - 1].uses = 1;
    return pid;
}

const CharacterMap &Wp6Writer::characters() const
{
    return CharacterMap::wp6();
}

const WordPerfectWriter::OneByteCodes &Wp6Writer::oneByteCodes() const
{
    // A space is 0x80: 0x20 would read as a compact accented letter.
    static constexpr OneByteCodes codes{0x80, 0x81, 0x82, 0x84, 0xCC, 0xC7};
    return codes;
}

bool Wp6Writer::writeCharacter(std::u32string_view text, std::size_t &used)
{
    const auto match = CharacterMap::wp6().find(text);
    if (!match)
        return false;
    std::string &o = out();
    put8(o, 0xF0);
    put8(o, match->number);
    put8(o, match->set);
    put8(o, 0xF0);
    used = match->length;
    return true;
}

void Wp6Writer::writeLineBreak()
{
    // A deletable soft end of line marked "does not end the paragraph": WordPerfect's line break.
    std::string data;
    put16(data, 0);
    put8(data, 0x8D);
    function(0xD0, 0x14, data);
}

// Tab: the kind in the high five bits (left 02, centre 0A, right 12, decimal 1A), "as the tab set
// says" in bit 0 and a dot leader in bit 1. The position it reaches, from the paper's edge, is the
// function's deletable data, as WordPerfect writes it (wp2latex drops a tab that has it otherwise).
void Wp6Writer::writeTab(const TabStop &stop)
{
    static const int kinds[] = {0x02, 0x0A, 0x12, 0x1A};
    constexpr unsigned size = 12;
    std::string &o = out();
    put8(o, 0xE0);
    put8(o, static_cast<unsigned>((kinds[stop.kind & 3] << 3) | 1 | (stop.dotLeader ? 2 : 0)));
    put16(o, size);
    put8(o, 0);  // flags
    put16(o, 0); // no non-deletable data
    put16(o, static_cast<unsigned>(std::clamp(stop.position, 0, 0xFFFE)));
    put16(o, size);
    put8(o, 0xE0);
}

void Wp6Writer::writeAttribute(int attribute, bool on)
{
    std::string &o = out();
    const int code = on ? 0xF2 : 0xF3;
    put8(o, code);
    put8(o, attribute);
    put8(o, code);
}

void Wp6Writer::writeFont(const CharacterFormat &format)
{
    if (initialFont.empty()) {
        initialFont = format.font;
        initialSize = format.size;
    }
    const int pid = fontPid(format.font);
    packets[pid - 1].uses += 2;
    std::string face;
    put16(face, 0);
    put16(face, 0);
    put16(face, 0);
    put16(face, format.size);
    function(0xD4, 0x1A, face, pid);
    std::string size;
    put16(size, format.size);
    function(0xD4, 0x1B, size, pid);
}

void Wp6Writer::writeColour(std::uint32_t rgb)
{
    std::string data;
    put8(data, rgb >> 16);
    put8(data, rgb >> 8);
    put8(data, rgb);
    put8(data, 100); // shading: full colour
    function(0xD4, 0x18, data);
}

// Highlight on carries its colour; off ends whichever is on.
void Wp6Writer::writeHighlight(std::optional<std::uint32_t> rgb)
{
    std::string &o = out();
    const int code = rgb ? 0xFB : 0xFC;
    const std::uint32_t colour = rgb.value_or(0);
    put8(o, code);
    put8(o, colour >> 16);
    put8(o, colour >> 8);
    put8(o, colour);
    put8(o, 100); // shading: full colour
    put8(o, code);
}

void Wp6Writer::writeParagraphFormat(const ParagraphFormat &from, const ParagraphFormat &to)
{
    std::string data;
    if (from.justification != to.justification) {
        put8(data, to.justification);
        function(0xD3, 0x05, data);
    }
    if (from.lineSpacing != to.lineSpacing) {
        data.clear();
        put32(data, static_cast<std::uint32_t>(to.lineSpacing));
        function(0xD3, 0x01, data);
    }
    const std::pair<int, int> margins[] = {{0x0C, to.leftIndent - from.leftIndent},
                                           {0x0D, to.rightIndent - from.rightIndent},
                                           {0x0B, to.firstLine - from.firstLine}};
    const int values[] = {to.leftIndent, to.rightIndent, to.firstLine};
    for (int i = 0; i < 3; ++i) {
        if (margins[i].second == 0)
            continue;
        data.clear();
        put16(data, static_cast<unsigned>(static_cast<std::int16_t>(values[i])));
        function(0xD3, margins[i].first, data);
    }
    if (from.tabs != to.tabs) {
        // No stops of its own: WordPerfect's, which an empty set would take away.
        const std::vector<TabStop> &tabs = to.tabs.empty() ? defaultTabStops(to) : to.tabs;
        data.clear();
        // Stops fixed on the paper (wp2latex misplaces the tabs of a set relative to the margin),
        // measured from the paragraph's indent as libwpd reads them back.
        const int margin = tabOrigin(to);
        put8(data, 0);
        put16(data, 0);
        put8(data, static_cast<unsigned>(std::min<std::size_t>(tabs.size(), 120)));
        for (std::size_t i = 0; i < tabs.size() && i < 120; ++i) {
            put8(data, static_cast<unsigned>(tabs[i].kind | (tabs[i].dotLeader ? 0x10 : 0)));
            put16(data, static_cast<unsigned>(std::clamp(margin + tabs[i].position, 0, 0xFFFE)));
        }
        function(0xD3, 0x04, data);
    }
}

// Spacing after paragraph: a share of the line (16.16, one line: none of its own) and, as
// WordPerfect 6.1 adds it, the space in WPU.
void Wp6Writer::writeParagraphSpacing(int wpu)
{
    std::string data;
    put32(data, 0x10000);
    put16(data, static_cast<unsigned>(wpu));
    function(0xD3, 0x0A, data);
}

int Wp6Writer::tabOrigin(const ParagraphFormat &format) const
{
    return pageSetup().left + format.leftIndent;
}

// Define text columns: newspaper (1: balanced), single row spacing, the count, then each column's
// share of the text area (16.16, as WordPerfect writes it) and the fixed gap after it; a count of 1
// turns columns off.
void Wp6Writer::writeColumns(const TextColumns &columns)
{
    const int count = columns.count, gap = columns.gap;
    std::string data;
    put8(data, columns.balanced ? 1 : 0);
    put32(data, 0x10000);
    put8(data, static_cast<unsigned>(count));
    for (int i = 0; count > 1 && i < count; ++i) {
        put8(data, 0);
        put16(data, static_cast<unsigned>(std::min(0xFFFF, 0x10000 / count)));
        if (i + 1 < count) {
            put8(data, 1);
            put16(data, static_cast<unsigned>(std::clamp(gap, 0, 0xFFFF)));
        }
    }
    function(0xD2, 0x02, data);
}

void Wp6Writer::writeColumnBreak()
{
    put8(out(), 0xC9);
} // hard end of column

void Wp6Writer::writeSideMargins()
{
    for (const auto &[code, value] :
         {std::pair{0x00, pageSetup().left}, std::pair{0x01, pageSetup().right}}) {
        std::string data;
        put16(data, static_cast<unsigned>(value));
        function(0xD2, code, data);
    }
}

void Wp6Writer::writePageSetup()
{
    const PageSetup &page = pageSetup();
    std::string data;
    // Top and bottom margins are one group's two codes, left and right the next group's.
    const struct {
        int group, code, value;
    } margins[] = {
        {0xD1, 0x00, page.top}, {0xD1, 0x01, page.bottom}, {0xD2, 0x00, page.left}, {0xD2, 0x01, page.right}};
    for (const auto &margin : margins) {
        put16(data, margin.value);
        function(margin.group, margin.code, data);
        data.clear();
    }
    put8(data, 0); // no form hash: WordPerfect matches the size against its form list
    put16(data, 0);
    put16(data, static_cast<unsigned>(page.height));
    put16(data, static_cast<unsigned>(page.width));
    put8(data, 0); // form type: standard
    put8(data, 0); // the size is given as the page stands
    put8(data, 0); // unnamed
    function(0xD1, 0x11, data);
}

void Wp6Writer::writeImage(const Raster &raster, int widthWpu, int heightWpu)
{
    const int picture = addPacket(0x6F, 0x00, wp6Graphic(raster, widthWpu, heightWpu));
    packets[picture - 1].uses = 1;
    std::string names;
    put16(names, 1); // child packets: the picture data
    put16(names, static_cast<unsigned>(picture));
    put16(names, 0); // no file name: the picture lives only in the document
    const int filename = addPacket(0x40, 0x01, names);
    packets[filename - 1].uses = 1;
    writeBox(0x03, filename, widthWpu, heightWpu);
}

void Wp6Writer::writeTextBox(const std::string &body, int widthWpu, int heightWpu)
{
    writeBox(0x01, textPacket(body), widthWpu, heightWpu);
}

// A box of the given content (0x01 text, 0x03 image), whose content is the packet `pid`: a text
// packet, or the file-name packet that leads to the picture. It stands where boxPlacement() says:
// in the line like a character, or at an offset from its paragraph (horizontally from the
// margin) or from the paper's edges.
void Wp6Writer::writeBox(int contentType, int pid, int widthWpu, int heightWpu)
{
    const BoxPlacement &at = boxPlacement();
    const auto offset = [](int wpu) {
        return static_cast<unsigned>(static_cast<std::uint16_t>(std::clamp(wpu, -0x7FFF, 0x7FFF)));
    };
    int anchoring = 0x00; // the function's subgroup: character, paragraph or page anchored
    std::string positioning;
    put16(positioning, 0x7C00); // general, horizontal, vertical, width, height follow
    put8(positioning, 0x03);    // general: mask, then value: on the baseline, paragraph or page
    if (at.anchor == BoxPlacement::Anchor::character) {
        put8(positioning, 0x02);
        put8(positioning, 0); // horizontal: at the character
        put16(positioning, 0);
        put8(positioning, 0);
        put8(positioning, 0);
        put8(positioning, 0x01); // vertical: relative to the anchor
        put16(positioning, 0);
    } else {
        const bool page = at.anchor == BoxPlacement::Anchor::page;
        anchoring = page ? 0x02 : 0x01;
        put8(positioning, page ? 0x00 : 0x01);
        // Horizontal: from the margin (or centred between the margins) for a paragraph's box,
        // from the paper's edge for a page's.
        put8(positioning, at.centred ? 0x01 | (0x02 << 2) : page ? 0x00 : 0x01);
        put16(positioning, at.centred ? 0 : offset(at.x));
        put8(positioning, 0);
        put8(positioning, 0);
        put8(positioning, page ? 0x00 : 0x01); // vertical: from the paper's top, or the paragraph's
        put16(positioning, offset(at.y));
    }
    // Width: set, so that libwpd hands it on for a text box too.
    put8(positioning, 0x00);
    put16(positioning, static_cast<unsigned>(std::clamp(widthWpu, 1, 0xFFFF)));
    // A height of 0 is a box as high as its text: the height flag says it follows the content.
    put8(positioning, heightWpu > 0 ? 0x00 : 0x01);
    put16(positioning, static_cast<unsigned>(std::clamp(heightWpu > 0 ? heightWpu : 1200, 1, 0xFFFF)));
    std::string content;
    put16(content, 0x4000); // content type follows
    put8(content, static_cast<unsigned>(contentType));
    std::string overrides;
    // Positioning, then content. libwpd takes the positioning block's own flags for the outer ones
    // once it has read it; 0x7C00 includes the content bit, so both readers see the content.
    put16(overrides, 0x6000);
    put16(overrides, static_cast<unsigned>(positioning.size()));
    overrides += positioning;
    put16(overrides, static_cast<unsigned>(content.size()));
    overrides += content;

    std::string data(14, '\0');                               // reserved
    put16(data, static_cast<unsigned>(overrides.size() + 4)); // override and wrap data, with both sizes
    put16(data, static_cast<unsigned>(overrides.size()));
    data += overrides;
    function(0xDF, anchoring, data, pid);
}

void Wp6Writer::writeTableStart(const std::vector<int> &widths, int position, int leftOffset,
                                const std::vector<std::vector<CellShape>> &)
{
    std::string data;
    put8(data, 0); // flags
    put8(data, static_cast<unsigned>(position));
    put16(data, static_cast<unsigned>(std::clamp(leftOffset, 0, 0xFFFF)));
    function(0xD4, 0x2A, data);
    for (int width : widths) {
        data.clear();
        put8(data, 0);
        put16(data, static_cast<unsigned>(std::max(1, width)));
        put16(data, 0x53); // gutters real WordPerfect uses: 0.07 in
        put16(data, 0x53);
        put32(data, 0);
        put8(data, 0);
        put16(data, 0);
        put16(data, 0);
        put8(data, 0);
        function(0xD4, 0x2C, data);
    }
    function(0xD4, 0x2B, {});
}

void Wp6Writer::writeCell(const CellShape &cell, bool firstInRow)
{
    std::string data;
    put16(data, 0); // no deletable sub-functions
    if (firstInRow && (cell.rowHeight > 0 || cell.headerRow)) {
        // Row information: a header row, and a height that is exact or the least the row takes.
        put8(data, 0x80);
        put8(data,
             (cell.headerRow ? 0x04 : 0) | (cell.rowHeight > 0 ? 0x02 : 0) | (cell.rowAtLeast ? 0x10 : 0));
        put16(data, static_cast<unsigned>(cell.rowHeight));
        put8(data, 0x80);
    }
    if (cell.verticalAlign != 0) {
        // Cell information: no attributes or justification of its own, the vertical alignment.
        put8(data, 0x84);
        put8(data, 0);
        put8(data, 0);
        put8(data, static_cast<unsigned>(cell.verticalAlign));
        put16(data, 0);
        put16(data, 0);
        put8(data, 0x84);
    }
    if (cell.coveredFromAbove || cell.columnSpan > 1 || cell.rowSpan > 1) {
        put8(data, 0x85);
        put8(data, cell.coveredFromAbove ? 0x81 : std::min(cell.columnSpan, 127));
        put8(data, cell.coveredFromAbove ? 1 : std::min(cell.rowSpan, 127));
        put8(data, 0x85);
    }
    if (cell.fill) {
        // Fill colours: the foreground at full shading, so the cell shows it, and a white background.
        put8(data, 0x86);
        putShadedColour(data, *cell.fill);
        putShadedColour(data, 0xFFFFFF);
        put8(data, 0x86);
    }
    if (cell.lineColour && *cell.lineColour != 0) {
        // Line colour: red, green, blue and full shading.
        put8(data, 0x87);
        putShadedColour(data, *cell.lineColour);
        put8(data, 0x87);
    }
    if (cell.borders != 0x0F) {
        put8(data, 0x8B);
        put8(data, ~cell.borders & 0x0F); // the bits say which lines are off
        put8(data, 0x8B);
    }
    function(0xD0, firstInRow ? 0x0B : 0x0A, data);
}

void Wp6Writer::writeTableEnd()
{
    put8(out(), 0xBF);
}

void Wp6Writer::writeNote(bool endnote, int, const std::string &body, char)
{
    const int pid = textPacket(body);
    function(0xD7, endnote ? 0x02 : 0x00, {}, pid);
    function(0xD7, endnote ? 0x03 : 0x01, {});
}

void Wp6Writer::writeHeaderFooter(bool footer, const std::string &occurrence, const std::string &body)
{
    // libwpd takes a header without a body for no header at all; an empty one is one empty line.
    const int pid = textPacket(body.empty() ? std::string(1, '\xCC') : body);
    const bool secondary = occurrence == "even";
    std::string data;
    put8(data, occurrence == "odd" ? 1 : occurrence == "even" ? 2 : 3);
    put8(data, 0);
    function(0xD6, (footer ? 2 : 0) + (secondary ? 1 : 0), data, pid);
}

void Wp6Writer::writePageCount(const std::string &shown)
{
    // Display total pages on, the count last laid out (WordPerfect recomputes it), off.
    std::string level;
    put8(level, 0);
    function(0xDA, 0x14, level);
    for (const char c : shown.empty() ? std::string("1") : shown)
        if (c >= '0' && c <= '9')
            writeAscii(c);
    function(0xDA, 0x15, {});
}

void Wp6Writer::writePageNumber()
{
    // Display page number on, the number WordPerfect last laid out (it recomputes it), off.
    std::string level;
    put8(level, 0);
    function(0xDA, 0x04, level);
    writeAscii('1');
    function(0xDA, 0x05, {});
}

std::string Wp6Writer::assemble(const std::string &document)
{
    const std::string font = initialFont.empty() ? std::string(serifFace.name) : initialFont;
    const int descriptor = fontPid(font);
    packets[descriptor - 1].uses += 1;
    std::string initial;
    put16(initial, 1);
    put16(initial, descriptor);
    put16(initial, initialSize ? initialSize : 600);
    addPacket(0x25, 0x09, initial);
    packets.back().uses = 1;
    // Document flags as every real file has them; 0x08 asks WordPerfect to reformat on opening.
    const unsigned char flags[] = {0x08, 0x33, 0x7C, 0x00, 0x78, 0x00, 0x00, 0x02,
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03};
    addPacket(0x02, 0x08, std::string(reinterpret_cast<const char *>(flags), sizeof flags));
    packets.back().uses = 1;

    if (!summary().empty())
        addPacket(0x12, 0x08, documentSummaryData(summary()));
    if (!summary().empty())
        packets.back().uses = 1;

    const std::uint32_t indexAt = 0x200;
    const std::uint32_t dataAt = indexAt + 14 * static_cast<std::uint32_t>(packets.size() + 1);
    std::uint32_t documentAt = dataAt;
    for (const Packet &packet : packets)
        documentAt += static_cast<std::uint32_t>(packet.data.size());

    std::string file = "\xFFWPC";
    put32(file, documentAt);
    put8(file, 1);    // WordPerfect
    put8(file, 0x0A); // document
    put8(file, 2);    // 6.x
    put8(file, 1);    // 6.1 and later
    put16(file, 0);   // not encrypted
    put16(file, indexAt);
    put16(file, 5); // extended header
    put16(file, 0);
    put32(file, 0); // file size, set below
    file.resize(indexAt, '\0');
    put8(file, 2);
    put8(file, 0);
    put16(file, static_cast<unsigned>(packets.size() + 1));
    file.append(10, '\0');
    std::uint32_t at = dataAt;
    for (const Packet &packet : packets) {
        put8(file, packet.flags);
        put8(file, packet.type);
        put16(file, static_cast<unsigned>(packet.uses));
        put16(file, 0);
        put32(file, static_cast<std::uint32_t>(packet.data.size()));
        put32(file, at);
        at += static_cast<std::uint32_t>(packet.data.size());
    }
    for (const Packet &packet : packets)
        file += packet.data;
    file += document;
    patch32(file, 20, static_cast<std::uint32_t>(file.size()));
    return file;
}

} // namespace richtext::wordperfect
