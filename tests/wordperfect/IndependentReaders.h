#pragma once

#include "richtext/Document.h"

#include <string>
#include <vector>

// WordPerfect readers that share no code with libwpd: wp2latex (5.x and 6+) and wp2x (5.x), run on
// a file we wrote, and the words each finds compared with the words libwpd's wpd2text finds.
namespace readers {

struct Reading {
    bool available = false;              // the reader is installed
    int status = -1;                     // its exit status
    std::vector<std::string> complaints; // every warning or error it printed about the file
    std::string text;                    // what it made of the document
};

Reading libwpd(const std::string &path);
Reading wp2latex(const std::string &path);
Reading wp2x(const std::string &path);

// The words of a text: maximal runs of ASCII letters and digits with at least one letter. Other
// characters split words, since each reader spells them its own way (TeX macros, placeholders,
// UTF-8); bare numbers are left out, since readers number notes and pages themselves.
std::vector<std::string> words(const std::string &text);

// libwpd's reading of a 5.1 file as wp2x spells it: wp2x skips tab codes (the words either side run
// together), table codes (a cell's last word runs into the next cell's first, the table's last into the text after it) and the bodies of
// headers, footers and notes. It does so on files WordPerfect wrote too; the corpus test shows it.
std::string asWp2xReadsIt(const richtext::Document &document);

// The share of reference's words (counted with repetition) that candidate holds too, and the
// first few that it lacks.
struct WordShare {
    double share = 1.0;
    std::size_t referenceWords = 0;
    std::vector<std::string> missing;
};
WordShare shareOfWords(const std::string &reference, const std::string &candidate);

} // namespace readers
