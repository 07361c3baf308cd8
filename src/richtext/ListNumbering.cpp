#include "ListNumbering.h"

#include "Units.h"

#include <algorithm>

namespace richtext {
namespace {

std::string roman(int value)
{
    static const std::pair<int, const char *> digits[] = {
        {1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
        {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"},
    };
    std::string result;
    for (const auto &[amount, letters] : digits)
        while (value >= amount && result.size() < 64) {
            result += letters;
            value -= amount;
        }
    return result;
}

// a..z, then aa..zz as ODF's (and LibreOffice's) "a" format counts on.
std::string alphabetic(int value)
{
    const int letter = (value - 1) % 26;
    const int repeat = std::min((value - 1) / 26 + 1, 64);
    return std::string(static_cast<std::size_t>(repeat), static_cast<char>('a' + letter));
}

// 一 二 三 … 十, 十一 … 九十九: the ideographic numbers of CJK lists and headings.
std::string ideographic(int value)
{
    static const char *const digits[] = {"",       "\u4E00", "\u4E8C", "\u4E09", "\u56DB",
                                         "\u4E94", "\u516D", "\u4E03", "\u516B", "\u4E5D"};
    if (value < 1 || value > 99)
        return std::to_string(value);
    const int tens = value / 10;
    const int ones = value % 10;
    std::string result;
    if (tens > 1)
        result += digits[tens];
    if (tens > 0)
        result += "\u5341";
    return result + digits[ones];
}

std::string upper(std::string text)
{
    for (char &c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

} // namespace

std::string ListNumbering::formatNumber(int value, const std::string &format)
{
    if (format.empty())
        return {};
    if (value < 1 && format != "1")
        return std::to_string(value);
    if (format.rfind("\u4E00", 0) == 0) // "一, 二, 三, ..."
        return ideographic(value);
    if (format == "1st") { // LibreOffice's ordinal format
        const int tens = value % 100;
        const int last = value % 10;
        const char *suffix = (tens >= 11 && tens <= 13) ? "th"
                             : last == 1                ? "st"
                             : last == 2                ? "nd"
                             : last == 3                ? "rd"
                                                        : "th";
        return std::to_string(value) + suffix;
    }
    if (format.rfind("01", 0) == 0) { // "01, 02, 03, ...": at least two digits
        const std::string digits = std::to_string(value);
        return digits.size() < 2 ? "0" + digits : digits;
    }
    switch (format[0]) {
    case 'a':
        return alphabetic(value);
    case 'A':
        return upper(alphabetic(value));
    case 'i':
        return roman(value);
    case 'I':
        return upper(roman(value));
    default:
        return std::to_string(value);
    }
}

void ListNumbering::openLevel(const librevenge::RVNGPropertyList &properties, bool ordered)
{
    Level level;
    level.ordered = ordered;
    if (ordered) {
        level.format = Units::text(properties, "style:num-format").value_or("1");
        level.prefix = Units::text(properties, "style:num-prefix").value_or("");
        level.suffix = Units::text(properties, "style:num-suffix").value_or("");
        level.start = Units::integer(properties, "text:start-value").value_or(1);
        level.displayLevels = std::max(1, Units::integer(properties, "text:display-levels").value_or(1));
    } else {
        level.bullet = Units::text(properties, "text:bullet-char").value_or("\xE2\x80\xA2");
    }
    level.listId = Units::integer(properties, "librevenge:list-id").value_or(0);
    const librevenge::RVNGProperty *continued = properties["librevenge:continued"];
    level.continued = continued && continued->getInt() != 0;
    levels.push_back(level);
    counters.push_back(level.start - 1);
}

void ListNumbering::closeLevel()
{
    if (levels.empty())
        return;
    levels.pop_back();
    counters.pop_back();
}

void ListNumbering::restartAt(int value)
{
    if (!counters.empty())
        counters.back() = value - 1;
}

std::string ListNumbering::nextLabel()
{
    if (levels.empty())
        return {};
    ++counters.back();
    const Level &level = levels.back();
    if (!level.ordered)
        return level.bullet;
    std::string number;
    const std::size_t shown = std::min(levels.size(), static_cast<std::size_t>(level.displayLevels));
    for (std::size_t i = levels.size() - shown; i < levels.size(); ++i) {
        if (!number.empty())
            number += '.';
        // A level above that has not numbered an item yet shows its start value, as word
        // processors show "1.1.1" below an item that holds only a deeper list; one that goes on
        // from an earlier list shows where that list stopped.
        const bool fresh = i + 1 < levels.size() && !levels[i].continued;
        const int value = fresh ? std::max(counters[i], levels[i].start) : counters[i];
        number += formatNumber(value, levels[i].ordered ? levels[i].format : "1");
    }
    return level.prefix + number + level.suffix;
}

} // namespace richtext
