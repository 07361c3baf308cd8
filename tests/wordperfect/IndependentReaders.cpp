#include "IndependentReaders.h"

#include "ProgramRun.h"
#include "TestFiles.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <sstream>

namespace readers {

namespace {

// Both readers write progress on the same stream as their messages, dots and percentages
// between them; a complaint is whatever line says Warning, Error, Fatal or a broken code.
std::vector<std::string> complaintsIn(const std::string &messages, const std::vector<std::string> &harmless)
{
    std::vector<std::string> found;
    std::string flat = messages;
    std::replace(flat.begin(), flat.end(), '\r', '\n');
    std::istringstream lines(flat);
    std::string line;
    while (std::getline(lines, line)) {
        const auto at = line.find_first_not_of(". ");
        if (at == std::string::npos)
            continue;
        line.erase(0, at);
        bool complaint = false;
        for (const char *marker : {"Warning", "Error", "Fatal", "Invalid", "nternal error", "not supported"})
            complaint = complaint || line.find(marker) != std::string::npos;
        for (const std::string &prefix : harmless)
            complaint = complaint && line.rfind(prefix, 0) != 0;
        if (complaint)
            found.push_back(line);
    }
    return found;
}

bool installed(const char *path)
{
    return path[0] != '\0' && std::filesystem::exists(path);
}

} // namespace

Reading libwpd(const std::string &path)
{
    Reading reading;
    reading.available = true;
    const ProgramRun run = ProgramRun::of({WPD2TEXT_PATH, path});
    reading.status = run.status;
    reading.text = run.out;
    if (!run.err.empty())
        reading.complaints.push_back(run.err);
    return reading;
}

Reading wp2latex(const std::string &path)
{
    Reading reading;
    if (!(reading.available = installed(WP2LATEX_PATH)))
        return reading;
    // It writes pictures and helper files beside its output: give it a folder of its own.
    testing_support::TempDir scratch;
    const std::string output = scratch.file("out.tex");
    const std::string source = std::filesystem::absolute(path).string();
    const ProgramRun run = ProgramRun::of({WP2LATEX_PATH, "-i", source, "-o", output}, scratch.path());
    reading.status = run.status;
    reading.complaints = complaintsIn(run.out + "\n" + run.err, {});
    reading.text = testing_support::readFile(output);
    return reading;
}

Reading wp2x(const std::string &path)
{
    Reading reading;
    if (!(reading.available = installed(WP2X_PATH)))
        return reading;
    // A description that writes the text alone, each paragraph on a line; wp2x finds it in its
    // working folder. Codes it has no expansion for it names on stderr ("No expansion for Bold"),
    // which is about the description, not the file.
    testing_support::TempDir scratch;
    // Hyphens of every kind as '-' (a soft one included, as libwpd's U+00AD also splits words).
    scratch.write("plain.cfg", "BEGIN=\"\"\nEND=\"\"\nHRt=\"\\n\"\nSRt=\"\\n\"\nHPg=\"\\n\"\n"
                               "-=\"-\"\n\\--=\"-\"\n\\-=\"-\"\n--=\"-\"\n==\"-\"\n");
    const ProgramRun run =
        ProgramRun::of({WP2X_PATH, "plain", std::filesystem::absolute(path).string()}, scratch.path());
    reading.status = run.status;
    reading.complaints = complaintsIn(run.err, {"Warning: No expansion for"});
    reading.text = run.out;
    return reading;
}

std::vector<std::string> beyondWp2latexLimits(const std::vector<std::string> &complaints,
                                              const richtext::Document &document)
{
    bool narrow = false;
    for (const richtext::PageSpan &span : document.pageSpans) {
        const auto margin = span.properties.find("fo:margin-left");
        double inches = 1.0;
        if (margin != span.properties.end())
            std::from_chars(margin->second.data(), margin->second.data() + margin->second.size(), inches);
        narrow = narrow || inches < 0.999;
    }
    std::vector<std::string> left;
    for (const std::string &complaint : complaints) {
        if (!(narrow && complaint.rfind("Warning: Negative tabular, fixed!", 0) == 0))
            left.push_back(complaint);
    }
    return left;
}

namespace {

struct Word {
    std::string text;
    bool tabAfter = false; // only tabs stand between it and the next word
};

std::vector<Word> wordsOf(const std::string &text)
{
    std::vector<Word> found;
    std::string word;
    bool hasLetter = false;
    bool onlyTabs = true; // since the last word ended
    for (std::size_t i = 0; i <= text.size(); ++i) {
        const char c = i < text.size() ? text[i] : ' ';
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter || (c >= '0' && c <= '9')) {
            if (word.empty() && !found.empty())
                found.back().tabAfter = onlyTabs;
            word += c;
            hasLetter = hasLetter || letter;
            continue;
        }
        if (!word.empty()) {
            if (hasLetter)
                found.push_back({word, false});
            word.clear();
            hasLetter = false;
            onlyTabs = true;
        }
        onlyTabs = onlyTabs && c == '\t';
    }
    return found;
}

} // namespace

std::vector<std::string> words(const std::string &text)
{
    std::vector<std::string> found;
    for (const Word &word : wordsOf(text))
        found.push_back(word.text);
    return found;
}

WordShare shareOfWords(const std::string &reference, const std::string &candidate, bool tabsMayJoin)
{
    std::map<std::string, int> available;
    for (const std::string &word : words(candidate))
        ++available[word];
    const std::vector<Word> wanted = wordsOf(reference);
    WordShare result;
    result.referenceWords = wanted.size();
    std::size_t found = 0;
    for (std::size_t i = 0; i < wanted.size();) {
        // Words a tab joins, run together as a reader that drops the tab spells them.
        std::size_t last = i;
        std::string joined = wanted[i].text;
        bool matched = false;
        while (tabsMayJoin && wanted[last].tabAfter && last + 1 < wanted.size()) {
            joined += wanted[++last].text;
            if (int &left = available[joined]; left > 0) {
                --left;
                matched = true;
                break;
            }
        }
        if (matched) {
            found += last - i + 1;
            i = last + 1;
            continue;
        }
        if (int &left = available[wanted[i].text]; left > 0) {
            --left;
            ++found;
        } else if (result.missing.size() < 12) {
            result.missing.push_back(wanted[i].text);
        }
        ++i;
    }
    if (result.referenceWords)
        result.share = static_cast<double>(found) / static_cast<double>(result.referenceWords);
    return result;
}

namespace {

struct Spelling {
    bool tabs = true;     // false: tab codes are skipped, the words either side run together
    bool cells = true;    // false: cells, and the table and the text after it, run together
    bool subTexts = true; // notes, text boxes, headers and footers
};

void append(const richtext::Blocks &blocks, const Spelling &spelling, std::string &out, bool inCell);

void append(const richtext::Paragraph &paragraph, const Spelling &spelling, std::string &out)
{
    for (const richtext::Inline &piece : paragraph.content) {
        if (piece.kind == richtext::Inline::Kind::text) {
            out += piece.text;
        } else if (piece.kind == richtext::Inline::Kind::tab) {
            if (spelling.tabs)
                out += '\t';
        } else if (piece.kind == richtext::Inline::Kind::lineBreak) {
            out += '\n';
        } else if (piece.content && spelling.subTexts && piece.kind != richtext::Inline::Kind::comment) {
            out += ' ';
            append(*piece.content, spelling, out, false);
        }
    }
}

void append(const richtext::Blocks &blocks, const Spelling &spelling, std::string &out, bool inCell)
{
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (const richtext::Paragraph *paragraph = blocks[i].paragraph()) {
            append(*paragraph, spelling, out);
            if (spelling.cells || !inCell || i + 1 < blocks.size())
                out += '\n';
        } else if (const richtext::Table *table = blocks[i].table()) {
            for (const richtext::Row &row : table->rows) {
                for (const richtext::Cell &cell : row.cells) {
                    if (!cell.covered)
                        append(cell.blocks, spelling, out, true);
                }
            }
            // Our table-off code is followed by the next paragraph's text: WordPerfect puts an HRt
            // there, which libwpd would read as an extra empty paragraph.
            if (spelling.cells)
                out += '\n';
        }
    }
}

std::string spelled(const richtext::Document &document, const Spelling &spelling)
{
    std::string out;
    std::vector<std::string> parts; // each header and footer once, though libwpd repeats them per page span
    for (const richtext::PageSpan &span : document.pageSpans) {
        if (spelling.subTexts) {
            for (const richtext::HeaderFooter &part : span.headersAndFooters) {
                std::string text;
                append(part.blocks, spelling, text, false);
                if (std::find(parts.begin(), parts.end(), text) == parts.end()) {
                    parts.push_back(text);
                    out += text;
                }
            }
        }
        append(span.blocks, spelling, out, false);
    }
    return out;
}

} // namespace

std::string asLibwpdReadsIt(const richtext::Document &document)
{
    return spelled(document, {});
}

std::string asWp2xReadsIt(const richtext::Document &document)
{
    return spelled(document, {false, false, false});
}

} // namespace readers
