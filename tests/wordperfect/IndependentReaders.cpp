#include "IndependentReaders.h"

#include "ProgramRun.h"
#include "ScratchFolder.h"

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
    for (char &c : flat) {
        if (c == '\r')
            c = '\n';
    }
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

bool installed(const char *path) { return path[0] != '\0' && std::filesystem::exists(path); }

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
    ScratchFolder scratch;
    const std::string output = scratch.file("out.tex");
    const std::string source = std::filesystem::absolute(path).string();
    const ProgramRun run = ProgramRun::of({WP2LATEX_PATH, "-i", source, "-o", output}, scratch.path());
    reading.status = run.status;
    reading.complaints = complaintsIn(run.out + "\n" + run.err, {});
    reading.text = ScratchFolder::readFile(output);
    return reading;
}

Reading wp2x(const std::string &path)
{
    Reading reading;
    if (!(reading.available = installed(WP2X_PATH)))
        return reading;
    // Its plain-text description; it has no way of spelling most attributes and says so for
    // each ("No expansion for Italics"), which is about the description, not the file.
    const ProgramRun run = ProgramRun::of({WP2X_PATH, "ascii", path});
    reading.status = run.status;
    reading.complaints = complaintsIn(run.err, {"Warning: No expansion for"});
    reading.text = run.out;
    return reading;
}

std::vector<std::string> words(const std::string &text)
{
    std::vector<std::string> found;
    std::string word;
    bool hasLetter = false;
    auto finish = [&] {
        if (hasLetter)
            found.push_back(word);
        word.clear();
        hasLetter = false;
    };
    for (char c : text) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter || (c >= '0' && c <= '9')) {
            word += c;
            hasLetter = hasLetter || letter;
        } else {
            finish();
        }
    }
    finish();
    return found;
}

namespace {

void appendAsWp2xReadsIt(const richtext::Blocks &blocks, std::string &out, bool inCell)
{
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (const richtext::Paragraph *paragraph = blocks[i].paragraph()) {
            for (char c : paragraph->text()) {
                if (c != '\t')
                    out += c;
            }
            if (!inCell || i + 1 < blocks.size())
                out += '\n';
        } else if (const richtext::Table *table = blocks[i].table()) {
            for (const richtext::Row &row : table->rows) {
                for (const richtext::Cell &cell : row.cells) {
                    if (!cell.covered)
                        appendAsWp2xReadsIt(cell.blocks, out, true);
                }
            }
            // Our table-off code is followed by the next paragraph's text: WordPerfect puts an HRt
            // there, which libwpd would read as an extra empty paragraph.
        }
    }
}

} // namespace

std::string asWp2xReadsIt(const richtext::Document &document)
{
    std::string out;
    for (const richtext::PageSpan &span : document.pageSpans)
        appendAsWp2xReadsIt(span.blocks, out, false);
    return out;
}

WordShare shareOfWords(const std::string &reference, const std::string &candidate)
{
    std::map<std::string, int> available;
    for (const std::string &word : words(candidate))
        ++available[word];
    WordShare result;
    std::size_t found = 0;
    for (const std::string &word : words(reference)) {
        ++result.referenceWords;
        if (int &left = available[word]; left > 0) {
            --left;
            ++found;
        } else if (result.missing.size() < 12) {
            result.missing.push_back(word);
        }
    }
    if (result.referenceWords)
        result.share = static_cast<double>(found) / static_cast<double>(result.referenceWords);
    return result;
}

} // namespace readers
