#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Numbers in file formats are spelled the C way whatever the user's locale
// says: "637.02" stays 637.02 under a German locale, and 12.5 is written
// "12.5", never "12,5". strtod and printf follow the locale the application
// sets, so nothing that reads or writes a format uses them.
namespace richtext::Numbers {

struct Leading {
    double value;
    std::size_t length; // characters read
};

// The number at the very start of `text` ("12.5pt" gives 12.5 and 4), with an
// optional sign; none when it does not start with one. No white space is skipped.
std::optional<Leading> leading(std::string_view text);

// The whole text as one number, or none.
std::optional<double> whole(std::string_view text);

// The shortest text that reads back as exactly `value`.
std::string shortest(double value);

// `value` with a fixed number of decimals.
std::string fixed(double value, int decimals);

} // namespace richtext::Numbers
