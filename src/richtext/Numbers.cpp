#include "Numbers.h"

#include <charconv>
#include <clocale>
#include <cstdlib>
#include <string>
#include <system_error>

#include <locale.h>

namespace richtext::Numbers {

std::optional<Leading> leading(std::string_view text)
{
    std::size_t skipped = 0;
    // from_chars takes a minus sign but not a plus sign.
    if (!text.empty() && text.front() == '+') {
        if (text.size() > 1 && text[1] == '-')
            return std::nullopt;
        skipped = 1;
    }
    double value = 0;
    const char *begin = text.data() + skipped;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        // Past the range of a double, as strtod reads it: infinity, or zero
        // for a value too small; in the C locale, whatever the user's is.
        static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
        const std::string piece(begin, end);
        value = strtod_l(piece.c_str(), nullptr, c);
    } else if (error != std::errc()) {
        return std::nullopt;
    }
    return Leading{value, static_cast<std::size_t>(end - text.data())};
}

std::optional<double> whole(std::string_view text)
{
    const auto number = leading(text);
    if (!number || number->length != text.size())
        return std::nullopt;
    return number->value;
}

std::string shortest(double value)
{
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : std::string("0");
}

std::string fixed(double value, int decimals)
{
    char text[400];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text, end) : std::string("0");
}

} // namespace richtext::Numbers
