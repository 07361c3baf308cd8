#pragma once

#include "ListNumbering.h"

#include <string>
#include <vector>

namespace richtext {

class RtfPalette;

// The \listtable and \listoverridetable of a document. Every list that opens
// at the outermost level becomes a list of its own, so it numbers afresh from
// its own start value, as a new ODF list does.
class RtfLists {
public:
    // Returns the new list's \ls number (1-based).
    int beginList();
    // Level `level` (0-based) of list `ls`; indents in inches.
    void defineLevel(int ls, int level, const ListNumbering::Level &definition, double indent,
                     double labelWidth);

    // A copy of list `ls` whose level `level` starts at `start`: RTF numbers a
    // list on, so starting again takes a list of its own. Returns its \ls number.
    int restart(int ls, int level, int start);

    bool empty() const { return lists.empty(); }
    std::string tables() const;

private:
    struct LevelDefinition {
        bool defined = false;
        ListNumbering::Level numbering;
        double indent = 0;
        double labelWidth = 0.25;
    };
    std::vector<std::vector<LevelDefinition>> lists;
};

} // namespace richtext
