#include "Units.h"

#include <charconv>
#include <cmath>

namespace richtext::Units {
namespace {

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

// The leading number of `text` and what follows it.
std::optional<std::pair<double, std::string_view>> splitNumber(std::string_view text)
{
    text = trimmed(text);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !std::isfinite(value))
        return std::nullopt;
    return std::pair{value, trimmed(text.substr(static_cast<std::size_t>(end - text.data())))};
}

} // namespace

std::optional<double> parseInches(std::string_view length)
{
    const auto number = splitNumber(length);
    if (!number)
        return std::nullopt;
    const auto [value, unit] = *number;
    if (unit.empty() || unit == "in" || unit == "inch")
        return value;
    if (unit == "cm")
        return value / 2.54;
    if (unit == "mm")
        return value / 25.4;
    if (unit == "pt")
        return value / 72;
    if (unit == "pc")
        return value / 6;
    if (unit == "px")
        return value / 96;
    if (unit == "*")
        return value / 1440;
    return std::nullopt;
}

std::optional<double> parsePercent(std::string_view value)
{
    const auto number = splitNumber(value);
    if (!number || number->second != "%")
        return std::nullopt;
    return number->first / 100;
}

std::optional<std::string> text(const librevenge::RVNGPropertyList &list, const char *name)
{
    if (const librevenge::RVNGProperty *property = list[name])
        return std::string(property->getStr().cstr());
    return std::nullopt;
}

std::optional<double> inches(const librevenge::RVNGPropertyList &list, const char *name)
{
    const librevenge::RVNGProperty *property = list[name];
    if (!property)
        return std::nullopt;
    switch (property->getUnit()) {
    case librevenge::RVNG_INCH:
        return property->getDouble();
    case librevenge::RVNG_POINT:
        return property->getDouble() / 72;
    case librevenge::RVNG_TWIP:
        return property->getDouble() / 1440;
    case librevenge::RVNG_PERCENT:
        return std::nullopt;
    default:
        return parseInches(property->getStr().cstr());
    }
}

std::optional<double> points(const librevenge::RVNGPropertyList &list, const char *name)
{
    const librevenge::RVNGProperty *property = list[name];
    if (!property)
        return std::nullopt;
    if (property->getUnit() == librevenge::RVNG_POINT)
        return property->getDouble();
    if (const auto value = inches(list, name))
        return *value * 72;
    return std::nullopt;
}

std::optional<double> fraction(const librevenge::RVNGPropertyList &list, const char *name)
{
    const librevenge::RVNGProperty *property = list[name];
    if (!property)
        return std::nullopt;
    if (property->getUnit() == librevenge::RVNG_PERCENT)
        return property->getDouble();
    return parsePercent(property->getStr().cstr());
}

std::optional<int> integer(const librevenge::RVNGPropertyList &list, const char *name)
{
    const librevenge::RVNGProperty *property = list[name];
    if (!property)
        return std::nullopt;
    const librevenge::RVNGString text = property->getStr();
    const std::string_view value = trimmed(text.cstr());
    int result = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), result);
    if (error != std::errc() || end != value.data() + value.size())
        return std::nullopt;
    return result;
}

} // namespace richtext::Units
