#pragma once

#include "richtext/Document.h"

#include <string>
#include <vector>

// How far two readings of one document agree: what LibreOffice makes of a
// WordPerfect file and of our RTF of it, both saved as flat ODT.
namespace corpus {

struct Agreement {
    std::size_t characters = 0;   // compared, whitespace left out
    std::size_t sameEmphasis = 0; // with the same bold, italic and underline
    std::size_t emphasised = 0;   // of the expected ones, those bold, italic or underlined
    std::size_t paragraphs = 0;   // paired by their text
    std::size_t sameAlignment = 0;
    std::vector<std::string> tablesExpected; // "rows x columns", in order
    std::vector<std::string> tablesFound;
    std::size_t footnotesExpected = 0;
    std::size_t footnotesFound = 0;
    std::size_t endnotesExpected = 0;
    std::size_t endnotesFound = 0;

    double characterShare() const;
    double paragraphShare() const;
};

Agreement compare(const richtext::Document &expected, const richtext::Document &found);

// Text with every run of whitespace made one space and none at either end;
// a byte-order mark is dropped.
std::string normalised(const std::string &utf8);

// Where `found` differs from `expected`, only as the classic Mac rewriting
// may: one of the 20 characters Mac OS Roman lacks, written as "?". Returns
// an empty text when they agree so, else a description of the first
// difference; `questionMarks` counts the characters that became "?".
std::string macDifference(const std::string &expected, const std::string &found, std::size_t &questionMarks);

} // namespace corpus
