#include "WordPerfect5Boxes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

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

} // namespace

WordPerfect5Boxes::Contents WordPerfect5Boxes::read(const std::vector<unsigned char> &bytes)
{
    Contents found;
    if (!isWordPerfect5(bytes))
        return found;
    // A variable-length function is code, subgroup, length, that many bytes ending in the length,
    // subgroup and code again; both ends must agree, so text that happens to hold the code is
    // not taken for a box.
    for (std::size_t at = readU32(bytes, 4); at + 4 <= bytes.size(); ++at) {
        const unsigned char subgroup = at + 1 < bytes.size() ? bytes[at + 1] : 0xFF;
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

void WordPerfect5Boxes::openParagraph(const librevenge::RVNGPropertyList &propList)
{
    paragraphTop.reset();
    OdtGenerator::openParagraph(propList);
}

void WordPerfect5Boxes::openFrame(const librevenge::RVNGPropertyList &propList)
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
