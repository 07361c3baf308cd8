#pragma once

#include <librevenge/librevenge.h>

#include <string>
#include <vector>

namespace richtext {

// Follows the list levels of a callback stream and makes each element's
// label ("3.", "(b)", "iv", a bullet) from the level's num-format, prefix,
// suffix, start value and display levels, as ODF numbers them: a level that
// opens starts again at its start value; closing a level resumes its parent.
class ListNumbering {
public:
    struct Level {
        bool ordered = false;
        std::string format; // "1", "a", "A", "i", "I"; empty for no number
        std::string prefix;
        std::string suffix;
        std::string bullet;
        int start = 1;
        int displayLevels = 1;
        int listId = 0;
        bool continued = false; // counts on from an earlier list rather than from its own start
    };

    void openLevel(const librevenge::RVNGPropertyList &properties, bool ordered);
    void closeLevel();

    // Counts the next element of the innermost level and returns its label.
    std::string nextLabel();
    // The next element of the innermost level gets the number `value`.
    void restartAt(int value);

    int depth() const { return static_cast<int>(levels.size()); }
    const Level &innermost() const { return levels.back(); }
    // The value the innermost level's counter last reached.
    int currentValue() const { return counters.empty() ? 0 : counters.back(); }

    // "xiv", "ab", "12": one number in a num-format.
    static std::string formatNumber(int value, const std::string &format);

private:
    std::vector<Level> levels;
    std::vector<int> counters;
};

} // namespace richtext
