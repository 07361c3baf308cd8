#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace richtext {

// What a conversion could not carry into its output. Each kind is kept once,
// in the order it was first met: the user learns which kinds of thing went
// missing, not a tally of every occurrence.
//
// A converter program says them on one line of its standard error,
// "NAME: lost: KIND; KIND", after writing its output; whoever ran it reads
// them back with fromStderr.
class Losses {
public:
    void add(std::string_view kind);
    void add(const Losses &other);

    bool empty() const { return kinds_.empty(); }
    bool has(std::string_view kind) const;
    const std::vector<std::string> &kinds() const { return kinds_; }

    // "KIND; KIND" (empty when nothing was lost).
    std::string joined() const;

    // "NAME: lost: KIND; KIND\n", or nothing when nothing was lost.
    std::string stderrLine(std::string_view program) const;

    // The kinds of every "…: lost: …" line in a program's standard error.
    static Losses fromStderr(std::string_view text);

private:
    std::vector<std::string> kinds_;
};

// The kinds, in words that follow "converted, with losses: ".
namespace loss {
inline constexpr std::string_view unreadablePictures = "pictures that could not be read";
inline constexpr std::string_view pictureFormats = "pictures in a format WordPerfect cannot hold";
inline constexpr std::string_view rtfPictureFormats = "pictures in a format RTF cannot hold";
inline constexpr std::string_view charactersWordPerfect = "characters WordPerfect has no code for";
inline constexpr std::string_view charactersMacRoman = "characters Mac Roman has no byte for";
inline constexpr std::string_view boxedText = "text in boxes";
inline constexpr std::string_view graphicLines = "graphic lines";
inline constexpr std::string_view firstPageHeaders =
    "first-page headers and footers (kept as the page's opening text)";
inline constexpr std::string_view hiraganaAsKatakana = "hiragana (written as katakana)";
inline constexpr std::string_view nestedTables =
    "tables inside tables (kept as paragraphs of the outer cell)";
inline constexpr std::string_view textBoxes = "text boxes (kept as paragraphs after their anchor)";
inline constexpr std::string_view cellShading = "table cell shading";
inline constexpr std::string_view cellBorders = "table cell borders (every line drawn)";
inline constexpr std::string_view comments = "comments";
inline constexpr std::string_view equations = "equations";
inline constexpr std::string_view drawings = "drawing shapes";
inline constexpr std::string_view rightToLeft = "right-to-left paragraphs (set from the left)";
} // namespace loss

} // namespace richtext
