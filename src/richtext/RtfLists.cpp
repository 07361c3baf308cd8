#include "RtfLists.h"

#include "RtfFormat.h"
#include "RtfText.h"
#include "Utf8.h"

#include <cstdio>

namespace richtext {
namespace {

constexpr int levelsPerList = 9;

int numberFormat(const ListNumbering::Level &level)
{
    if (!level.ordered)
        return 23;
    if (level.format.empty())
        return 255;
    switch (level.format[0]) {
    case 'I':
        return 1;
    case 'i':
        return 2;
    case 'A':
        return 3;
    case 'a':
        return 4;
    default:
        return 0;
    }
}

std::string byteEscape(int value)
{
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\'%02x", value & 0xFF);
    return escape;
}

// \leveltext counts characters, not bytes: its first escape is that count, and
// \'0N stands for the number of level N. \levelnumbers lists where those stand.
std::string levelTexts(const ListNumbering::Level &level, int index)
{
    std::string text;
    std::string positions;
    int length = 0;
    auto literal = [&](const std::string &utf8) {
        for (const char32_t character : Utf8::decode(utf8)) {
            text += RtfText::escapeCharacter(character);
            ++length;
        }
    };
    if (!level.ordered) {
        literal(level.bullet.empty() ? "\xE2\x80\xA2" : level.bullet);
    } else {
        literal(level.prefix);
        const int first = std::max(0, index + 1 - level.displayLevels);
        for (int shown = first; shown <= index; ++shown) {
            if (shown > first)
                literal(".");
            text += byteEscape(shown);
            positions += byteEscape(++length);
        }
        literal(level.suffix);
    }
    return "{\\leveltext" + byteEscape(length) + text + ";}{\\levelnumbers" + positions + ";}";
}

} // namespace

int RtfLists::beginList()
{
    lists.emplace_back(levelsPerList);
    return static_cast<int>(lists.size());
}

void RtfLists::defineLevel(int ls, int level, const ListNumbering::Level &definition, double indent,
                           double labelWidth)
{
    if (ls < 1 || ls > static_cast<int>(lists.size()) || level < 0 || level >= levelsPerList)
        return;
    LevelDefinition &slot = lists[static_cast<std::size_t>(ls - 1)][static_cast<std::size_t>(level)];
    if (slot.defined)
        return;
    slot = LevelDefinition{true, definition, indent, labelWidth};
}

int RtfLists::restart(int ls, int level, int start)
{
    if (ls < 1 || ls > static_cast<int>(lists.size()) || level < 0 || level >= levelsPerList)
        return ls;
    lists.push_back(lists[static_cast<std::size_t>(ls - 1)]);
    lists.back()[static_cast<std::size_t>(level)].numbering.start = start;
    return static_cast<int>(lists.size());
}

std::string RtfLists::tables() const
{
    if (lists.empty())
        return {};
    std::string table = "{\\*\\listtable";
    for (std::size_t n = 0; n < lists.size(); ++n) {
        const std::string id = std::to_string(n + 1);
        table += "\n{\\list\\listtemplateid" + id;
        for (int level = 0; level < levelsPerList; ++level) {
            LevelDefinition slot = lists[n][static_cast<std::size_t>(level)];
            if (!slot.defined) {
                // Word and LibreOffice expect all nine levels.
                slot.numbering.ordered = true;
                slot.numbering.format = "1";
                slot.numbering.suffix = ".";
                slot.indent = 0.25 * level;
            }
            const double labelWidth = slot.labelWidth > 0 ? slot.labelWidth : 0.25;
            table += "{\\listlevel\\levelnfc" + std::to_string(numberFormat(slot.numbering)) + "\\levelnfcn" +
                     std::to_string(numberFormat(slot.numbering)) + "\\leveljc0\\leveljcn0\\levelfollow0" +
                     "\\levelstartat" + std::to_string(slot.numbering.start) +
                     levelTexts(slot.numbering, level) + "\\fi" +
                     std::to_string(RtfFormat::twips(-labelWidth)) + "\\li" +
                     std::to_string(RtfFormat::twips(slot.indent + labelWidth)) + "}";
        }
        table += "\\listid" + id + "}";
    }
    table += "}\n{\\*\\listoverridetable";
    for (std::size_t n = 0; n < lists.size(); ++n) {
        const std::string id = std::to_string(n + 1);
        table += "{\\listoverride\\listid" + id + "\\listoverridecount0\\ls" + id + "}";
    }
    return table + "}\n";
}

} // namespace richtext
