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

// wp2latex's complaints that are about its own limits rather than the file: it takes a tab at or
// left of one inch from the paper's edge for a negative one ("Negative tabular"), in WordPerfect's
// own files too (equation5.wp); on a page with a narrower left margin that is where tabs go.
std::vector<std::string> beyondWp2latexLimits(const std::vector<std::string> &complaints,
                                              const richtext::Document &document);

// The words of a text: maximal runs of ASCII letters and digits with at least one letter. Other
// characters split words, since each reader spells them its own way (TeX macros, placeholders,
// UTF-8); bare numbers are left out, since readers number notes and pages themselves.
std::vector<std::string> words(const std::string &text);

// libwpd's reading of a file: the main text with its notes and text boxes, and each header and
// footer once (wpd2text repeats them for every page span, which the other readers do not).
std::string asLibwpdReadsIt(const richtext::Document &document);

// libwpd's reading of a 5.1 file as wp2x spells it: wp2x skips tab codes (the words either side run
// together), table codes (a cell's last word runs into the next cell's first, the table's last into the text
// after it) and the bodies of headers, footers and notes. It does so on files WordPerfect wrote too; the
// corpus test shows it.
std::string asWp2xReadsIt(const richtext::Document &document);

// The share of reference's words (counted with repetition) that candidate holds too, and the
// first few that it lacks.
struct WordShare {
    double share = 1.0;
    std::size_t referenceWords = 0;
    std::vector<std::string> missing;
};
// With tabsMayJoin, words that only tabs separate also count as found when the candidate has them run
// together: wp2latex drops some tabs without a word (a centred paragraph's, hanging list labels' on
// pages with margins under an inch, though the tab set holds their stop).
WordShare shareOfWords(const std::string &reference, const std::string &candidate, bool tabsMayJoin = false);

} // namespace readers
