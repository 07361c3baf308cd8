// Fidelity of odt2wp5: each ODT is written as WordPerfect, read back through wpd2odt (libwpd), and
// both documents are collected by the ModelBuilder and compared feature by feature. Prints one row
// per file and version, the mean per feature, and the first difference behind every score < 100 %.
//
//   bench_fidelity [FILE.odt|FILE.fodt ...]    (default: every ODT of ../shared/corpus/office)

#include "richtext/Document.h"
#include "richtext/ModelBuilder.h"
#include "richtext/OdtReader.h"
#include "richtext/wordperfect/CharacterMap.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace richtext;
using wordperfect::CharacterMap;

namespace {

std::string slurp(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::string quoted(const std::string &s)
{
    return "'" + s + "'";
}

std::optional<std::string> captured(const std::string &command)
{
    FILE *pipe = popen(command.c_str(), "r");
    if (!pipe)
        return std::nullopt;
    std::string out;
    char buffer[65536];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, n);
    return pclose(pipe) == 0 ? std::optional(out) : std::nullopt;
}

std::optional<Document> model(const std::string &bytes)
{
    try {
        ModelBuilder builder;
        OdtReader::read(bytes, builder);
        return builder.document();
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

std::string get(const Properties &p, const std::string &name)
{
    const auto found = p.find(name);
    return found == p.end() ? std::string() : found->second;
}

double inches(const std::string &value)
{
    if (value.empty())
        return 0;
    const double number = std::atof(value.c_str());
    if (value.find("pt") != std::string::npos)
        return number / 72;
    if (value.find("cm") != std::string::npos)
        return number / 2.54;
    if (value.find("mm") != std::string::npos)
        return number / 25.4;
    return number;
}

// Characters no WordPerfect set holds are expected back as '?'; whitespace runs count as one space.
std::u32string expectedText(const std::string &utf8, const CharacterMap *map)
{
    const std::u32string in = CharacterMap::decodeUtf8(utf8);
    std::u32string out;
    for (std::size_t i = 0; i < in.size(); ++i) {
        char32_t c = in[i];
        if (c == U'\t' || c == U'\n' || c == 0xA0)
            c = U' ';
        if (c == U' ' && !out.empty() && out.back() == U' ')
            continue;
        if (map && c >= 0x7F && !map->find(std::u32string_view(in).substr(i)))
            c = U'?';
        out += c;
    }
    while (!out.empty() && out.back() == U' ')
        out.pop_back();
    return out;
}

std::string narrow(const std::u32string &s)
{
    std::string out;
    for (char32_t c : s)
        out += c < 0x80 ? static_cast<char>(c) : '~';
    return out;
}

struct Para {
    const Paragraph *paragraph;
    std::u32string text;
};

std::vector<Para> paragraphsOf(const Document &document, const CharacterMap *map)
{
    std::vector<Para> out;
    for (const Paragraph *p : document.paragraphs()) {
        const std::string label = p->label.empty() ? std::string() : p->label + "\t";
        out.push_back({p, expectedText(label + p->text(), map)});
    }
    return out;
}

template <typename T, typename Eq>
std::vector<std::pair<std::size_t, std::size_t>> lcs(const std::vector<T> &a, const std::vector<T> &b, Eq eq)
{
    std::vector<std::vector<int>> table(a.size() + 1, std::vector<int>(b.size() + 1, 0));
    for (std::size_t i = a.size(); i-- > 0;)
        for (std::size_t j = b.size(); j-- > 0;)
            table[i][j] =
                eq(a[i], b[j]) ? table[i + 1][j + 1] + 1 : std::max(table[i + 1][j], table[i][j + 1]);
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
        if (eq(a[i], b[j]))
            pairs.emplace_back(i++, j++);
        else if (table[i + 1][j] >= table[i][j + 1])
            ++i;
        else
            ++j;
    }
    return pairs;
}

// Attributes of each character of a paragraph, as one comparable string per character.
std::vector<std::string> characterAttributes(const Paragraph &p, bool colour)
{
    std::vector<std::string> out;
    if (!p.label.empty())
        out.resize(CharacterMap::decodeUtf8(p.label).size() + 1, "label");
    for (const Inline &piece : p.content) {
        if (piece.kind != Inline::Kind::text && piece.kind != Inline::Kind::tab &&
            piece.kind != Inline::Kind::lineBreak)
            continue;
        const Properties &s = piece.style;
        std::string key;
        key += get(s, "fo:font-weight") == "bold" ? "B" : "";
        key += get(s, "fo:font-style") == "italic" ? "I" : "";
        const std::string underline = get(s, "style:text-underline-type");
        key += underline == "double" ? "UU" : (!underline.empty() && underline != "none") ? "U" : "";
        const std::string strike = get(s, "style:text-line-through-type");
        key += (!strike.empty() && strike != "none") ? "S" : "";
        const std::string position = get(s, "style:text-position");
        key += position.rfind("super", 0) == 0 ? "^" : position.rfind("sub", 0) == 0 ? "_" : "";
        key += get(s, "fo:font-variant") == "small-caps" ? "K" : "";
        key +=
            "/" + get(s, "fo:font-size").substr(0, get(s, "fo:font-size").find_first_not_of("0123456789."));
        key += "/" + get(s, "style:font-name");
        if (colour) {
            const std::string c = get(s, "fo:color");
            key += "/" + (c.empty() ? std::string("#000000") : c);
        }
        key += "/.";
        const std::size_t length =
            piece.kind == Inline::Kind::text ? CharacterMap::decodeUtf8(piece.text).size() : 1;
        out.insert(out.end(), length, key);
    }
    return out;
}

// Font size and face count only where the source names them: elsewhere the reader leaves the
// document's default unspoken, and any one our file names is as good.
bool sameAttributes(const std::string &source, const std::string &back)
{
    std::vector<std::string> a, b;
    std::stringstream sa(source), sb(back);
    for (std::string part; std::getline(sa, part, '/');)
        a.push_back(part);
    for (std::string part; std::getline(sb, part, '/');)
        b.push_back(part);
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i] && !((i == 1 || i == 2) && a[i].empty()))
            return false;
    }
    return true;
}

std::string alignmentOf(const Properties &p)
{
    const std::string a = get(p, "fo:text-align");
    if (a.empty() || a == "start" || a == "left")
        return "left";
    if (a == "end" || a == "right")
        return "right";
    return a;
}

// The left and right page margins in force for each paragraph: libwpd turns a 5.1 margin code
// into that page's margin when it reaches past it, so indents are compared from the paper's edges.
std::map<const Paragraph *, std::pair<double, double>> pageMargins(const Document &document)
{
    std::map<const Paragraph *, std::pair<double, double>> margins;
    // Paragraph pointers of a copy differ from the document's: walk the spans in step instead.
    const auto all = document.paragraphs();
    std::size_t next = 0;
    for (const PageSpan &span : document.pageSpans) {
        Document single;
        single.pageSpans.push_back(span);
        const std::size_t count = single.paragraphs().size();
        for (std::size_t k = 0; k < count && next < all.size(); ++k)
            margins[all[next++]] = {inches(get(span.properties, "fo:margin-left")),
                                    inches(get(span.properties, "fo:margin-right"))};
    }
    return margins;
}

struct Score {
    double value = -1; // -1: the file has nothing of this feature
    std::string why;
    void set(double got, double of, const std::string &reason)
    {
        value = of > 0 ? got / of : -1;
        if (value >= 0 && value < 1 && why.empty())
            why = reason;
    }
};

const char *featureNames[] = {"chars", "runs", "para", "tables", "notes", "hdr/ftr", "images"};
constexpr int featureCount = 7;

std::vector<Score> compare(const Document &source, const Document &back, const CharacterMap &map, bool colour)
{
    std::vector<Score> scores(featureCount);
    const std::vector<Para> a = paragraphsOf(source, &map);
    const std::vector<Para> b = paragraphsOf(back, nullptr);

    // Characters: a character-level LCS over the whole main text.
    std::vector<char32_t> ca, cb;
    for (const Para &p : a)
        ca.insert(ca.end(), p.text.begin(), p.text.end()), ca.push_back(U'\n');
    for (const Para &p : b)
        cb.insert(cb.end(), p.text.begin(), p.text.end()), cb.push_back(U'\n');
    const double common = static_cast<double>(lcs(ca, cb, std::equal_to<>()).size());
    scores[0].set(2 * common, static_cast<double>(ca.size() + cb.size()), "texts differ");

    const auto matched = lcs(a, b, [](const Para &x, const Para &y) { return x.text == y.text; });
    if (matched.size() < a.size())
        for (std::size_t i = 0, m = 0; i < a.size(); ++i) {
            if (m < matched.size() && matched[m].first == i) {
                ++m;
                continue;
            }
            scores[0].why = "paragraph not found back: \"" + narrow(a[i].text).substr(0, 60) + "\"";
            break;
        }

    double sameRuns = 0, runChars = 0, sameParas = 0;
    const auto pageA = pageMargins(source), pageB = pageMargins(back);
    for (const auto &[i, j] : matched) {
        const auto ra = characterAttributes(*a[i].paragraph, colour);
        const auto rb = characterAttributes(*b[j].paragraph, colour);
        for (std::size_t k = 0; k < std::min(ra.size(), rb.size()); ++k) {
            if (ra[k] == "label" || sameAttributes(ra[k], rb[k]))
                ++sameRuns;
            else if (scores[1].why.empty())
                scores[1].why = "\"" + narrow(a[i].text).substr(0, 40) + "\": " + ra[k] + " became " + rb[k];
        }
        runChars += static_cast<double>(std::max(ra.size(), rb.size()));
        const Properties &pa = a[i].paragraph->properties;
        const Properties &pb = b[j].paragraph->properties;
        // A list paragraph's indent lives in its list level, which the model does not keep.
        const bool listed = a[i].paragraph->listLevel > 0;
        const bool same =
            alignmentOf(pa) == alignmentOf(pb) &&
            (listed ||
             (std::fabs(pageA.at(a[i].paragraph).first + inches(get(pa, "fo:margin-left")) -
                        pageB.at(b[j].paragraph).first - inches(get(pb, "fo:margin-left"))) < 0.02 &&
              std::fabs(pageA.at(a[i].paragraph).second + inches(get(pa, "fo:margin-right")) -
                        pageB.at(b[j].paragraph).second - inches(get(pb, "fo:margin-right"))) < 0.02 &&
              std::fabs(inches(get(pa, "fo:text-indent")) - inches(get(pb, "fo:text-indent"))) < 0.02));
        if (same)
            ++sameParas;
        else if (scores[2].why.empty())
            scores[2].why = "\"" + narrow(a[i].text).substr(0, 40) + "\": align " + alignmentOf(pa) + "/" +
                            alignmentOf(pb) + " left " + get(pa, "fo:margin-left") + "/" +
                            get(pb, "fo:margin-left") + " indent " + get(pa, "fo:text-indent") + "/" +
                            get(pb, "fo:text-indent");
    }
    scores[1].set(sameRuns, runChars, "attributes differ");
    scores[2].set(sameParas, static_cast<double>(a.size()), "paragraphs not found back");

    // Tables: every cell's place and spans.
    const auto ta = source.tables(), tb = back.tables();
    double sameCells = 0, cells = 0;
    for (std::size_t t = 0; t < ta.size(); ++t) {
        std::vector<std::string> shapeA, shapeB;
        auto shape = [](const Table &table, std::vector<std::string> &out) {
            for (const Row &row : table.rows)
                for (const Cell &cell : row.cells)
                    if (!cell.covered)
                        out.push_back(std::to_string(cell.row) + "," + std::to_string(cell.column) + " " +
                                      std::to_string(cell.columnSpan) + "x" + std::to_string(cell.rowSpan));
        };
        shape(*ta[t], shapeA);
        if (t < tb.size())
            shape(*tb[t], shapeB);
        for (const std::string &s : shapeA) {
            if (std::find(shapeB.begin(), shapeB.end(), s) != shapeB.end())
                ++sameCells;
            else if (scores[3].why.empty())
                scores[3].why = "table " + std::to_string(t + 1) + " cell " + s + " not found back";
        }
        cells += static_cast<double>(std::max(shapeA.size(), shapeB.size()));
    }
    scores[3].set(sameCells, cells, "tables differ");

    // Notes: kind and text, in order.
    auto notesOf = [&](const Document &d, const CharacterMap *m) {
        std::vector<std::u32string> out;
        for (auto kind : {Inline::Kind::footnote, Inline::Kind::endnote})
            for (const Inline *note : d.notes(kind)) {
                std::string text;
                if (note->content)
                    for (const Block &block : *note->content)
                        if (const Paragraph *p = block.paragraph())
                            text += (p->label.empty() ? std::string() : p->label + "\t") + p->text() + "\n";
                out.push_back((kind == Inline::Kind::footnote ? U"F:" : U"E:") + expectedText(text, m));
            }
        return out;
    };
    const auto na = notesOf(source, &map), nb = notesOf(back, nullptr);
    const double sameNotes = static_cast<double>(lcs(na, nb, std::equal_to<>()).size());
    scores[4].set(sameNotes, static_cast<double>(std::max(na.size(), nb.size())),
                  na.empty() ? "" : "note \"" + narrow(na[0]).substr(0, 40) + "\" not found back");

    auto partsOf = [&](const Document &d, const CharacterMap *m) {
        std::vector<std::u32string> out;
        for (const PageSpan &span : d.pageSpans)
            for (const HeaderFooter &part : span.headersAndFooters) {
                std::string text;
                for (const Block &block : part.blocks)
                    if (const Paragraph *p = block.paragraph())
                        text += p->text() + "\n";
                out.push_back((part.footer ? U"footer:" : U"header:") + expectedText(text, m));
            }
        std::sort(out.begin(), out.end());
        out.erase(std::unique(out.begin(), out.end()), out.end());
        return out;
    };
    const auto ha = partsOf(source, &map), hb = partsOf(back, nullptr);
    double sameParts = 0;
    for (const auto &part : ha)
        if (std::find(hb.begin(), hb.end(), part) != hb.end())
            ++sameParts;
        else if (scores[5].why.empty())
            scores[5].why = "\"" + narrow(part).substr(0, 50) + "\" not found back";
    scores[5].set(sameParts, static_cast<double>(ha.size()), "");

    // Pictures: every one with data in the source should come back as a picture with data.
    auto picturesIn = [](const Document &d) {
        std::size_t count = 0;
        std::function<void(const Blocks &)> walk = [&](const Blocks &blocks) {
            for (const Block &block : blocks) {
                if (const Paragraph *p = block.paragraph()) {
                    for (const Inline &piece : p->content) {
                        count += piece.kind == Inline::Kind::image && !piece.data.empty();
                        if (piece.content)
                            walk(*piece.content);
                    }
                } else if (const Table *table = block.table()) {
                    for (const Row &row : table->rows)
                        for (const Cell &cell : row.cells)
                            walk(cell.blocks);
                }
            }
        };
        for (const PageSpan &span : d.pageSpans)
            walk(span.blocks);
        return count;
    };
    const std::size_t pa = picturesIn(source), pb = picturesIn(back);
    scores[6].set(static_cast<double>(std::min(pa, pb)), static_cast<double>(pa),
                  std::to_string(pa) + " pictures, " + std::to_string(pb) + " read back");
    return scores;
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> files(argv + 1, argv + argc);
    if (files.empty()) {
        for (const auto &entry : fs::directory_iterator(fs::path(QM_CORPUS_DIR) / "office")) {
            const std::string ext = entry.path().extension().string();
            if ((ext == ".odt" || ext == ".fodt") && entry.path().filename() != "testODTEncrypted.odt")
                files.push_back(entry.path().string());
        }
        std::sort(files.begin(), files.end());
    }
    const std::string scratch = fs::temp_directory_path() / ("fidelity-" + std::to_string(getpid()) + ".wpd");
    std::printf("%-44s %-4s", "file", "ver");
    for (const char *name : featureNames)
        std::printf(" %8s", name);
    std::printf("\n");
    std::vector<double> sums(2 * featureCount, 0), counts(2 * featureCount, 0);
    std::vector<std::string> reasons;
    for (const std::string &file : files) {
        const auto source = model(slurp(file));
        for (int v = 0; v < 2; ++v) {
            const bool wp6 = v == 0;
            const std::string name = fs::path(file).filename().string();
            std::printf("%-44s %-4s", name.c_str(), wp6 ? "wp6" : "wp5");
            const bool converted =
                source && std::system((quoted(ODT2WP5_PATH) + (wp6 ? " --wp6 " : " --wp5 ") + quoted(file) +
                                       " " + quoted(scratch) + " 2>/dev/null")
                                          .c_str()) == 0;
            const auto flat =
                converted ? captured(quoted(WPD2ODT_PATH) + " --stdout " + quoted(scratch) + " 2>/dev/null")
                          : std::nullopt;
            const auto back = flat ? model(*flat) : std::nullopt;
            if (!back) {
                std::printf("  could not be converted and read back\n");
                continue;
            }
            const auto scores = compare(*source, *back, wp6 ? CharacterMap::wp6() : CharacterMap::wp5(), wp6);
            for (int f = 0; f < featureCount; ++f) {
                if (scores[f].value < 0) {
                    std::printf(" %8s", "-");
                    continue;
                }
                std::printf(" %7.1f%%", 100 * scores[f].value);
                sums[v * featureCount + f] += scores[f].value;
                counts[v * featureCount + f] += 1;
                if (scores[f].value < 1)
                    reasons.push_back(name + " " + (wp6 ? "wp6 " : "wp5 ") + featureNames[f] + ": " +
                                      scores[f].why);
            }
            std::printf("\n");
        }
    }
    std::remove(scratch.c_str());
    for (int v = 0; v < 2; ++v) {
        std::printf("%-44s %-4s", "MEAN", v == 0 ? "wp6" : "wp5");
        for (int f = 0; f < featureCount; ++f) {
            const double n = counts[v * featureCount + f];
            if (n > 0)
                std::printf(" %7.1f%%", 100 * sums[v * featureCount + f] / n);
            else
                std::printf(" %8s", "-");
        }
        std::printf("\n");
    }
    for (const std::string &reason : reasons)
        std::printf("below 100%%: %s\n", reason.c_str());
    return 0;
}
