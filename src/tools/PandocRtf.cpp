#include "PandocRtf.h"

#include <iconv.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace PandocRtf {
namespace {

constexpr int documentCodePage = -1; // the \ansicpg in force
constexpr int leaveAlone = -2;       // symbol fonts: their bytes are glyph numbers

// Windows font character sets and the code pages they stand for.
int codePageOfCharset(int charset)
{
    static const std::map<int, int> pages{{0, documentCodePage},
                                          {1, documentCodePage},
                                          {2, leaveAlone},
                                          {77, 10000},
                                          {128, 932},
                                          {129, 949},
                                          {130, 1361},
                                          {134, 936},
                                          {136, 950},
                                          {161, 1253},
                                          {162, 1254},
                                          {163, 1258},
                                          {177, 1255},
                                          {178, 1256},
                                          {186, 1257},
                                          {204, 1251},
                                          {222, 874},
                                          {238, 1250},
                                          {255, 437}};
    const auto found = pages.find(charset);
    return found == pages.end() ? documentCodePage : found->second;
}

bool isDoubleByte(int codePage)
{
    return codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950 || codePage == 1361;
}

bool isLeadByte(int codePage, std::uint8_t byte)
{
    if (codePage == 932)
        return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    return byte >= 0x81 && byte <= 0xFE;
}

// iconv, one converter per code page, kept for the whole rewrite.
class Decoder {
public:
    ~Decoder()
    {
        for (auto &[page, handle] : handles) {
            if (handle != reinterpret_cast<iconv_t>(-1))
                iconv_close(handle);
        }
    }

    std::optional<char32_t> decode(int codePage, const std::string &bytes)
    {
        iconv_t handle = handleFor(codePage);
        if (handle == reinterpret_cast<iconv_t>(-1))
            return std::nullopt;
        iconv(handle, nullptr, nullptr, nullptr, nullptr);
        std::string in = bytes;
        char32_t out[2] = {};
        char *inAt = in.data();
        size_t inLeft = in.size();
        char *outAt = reinterpret_cast<char *>(out);
        size_t outLeft = sizeof out;
        // CP1255 and CP1258 hold a letter back for a combining mark that
        // may follow: the flush lets it out.
        if (iconv(handle, &inAt, &inLeft, &outAt, &outLeft) == static_cast<size_t>(-1) || inLeft != 0 ||
            iconv(handle, nullptr, nullptr, &outAt, &outLeft) == static_cast<size_t>(-1) ||
            outLeft != sizeof out - sizeof(char32_t))
            return std::nullopt;
        return out[0];
    }

private:
    iconv_t handleFor(int codePage)
    {
        const auto found = handles.find(codePage);
        if (found != handles.end())
            return found->second;
        const std::string name = codePage == 10000  ? "MACINTOSH"
                                 : codePage == 1361 ? "JOHAB"
                                                    : "CP" + std::to_string(codePage);
        return handles[codePage] = iconv_open("UTF-32LE", name.c_str());
    }

    std::map<int, iconv_t> handles;
};

struct Group {
    int font = -1;         // -1: the default font
    int unicodeSkip = 1;   // \ucN
    bool verbatim = false; // list-level texts, pictures, object data: bytes are numbers
};

struct Word {
    std::string name;
    std::optional<long> parameter;
    size_t end; // just past the word and its delimiting space
};

Word readWord(const std::string &rtf, size_t at)
{
    Word word;
    size_t i = at + 1;
    while (i < rtf.size() && std::isalpha(static_cast<unsigned char>(rtf[i])))
        word.name += rtf[i++];
    const size_t digits = i + (i < rtf.size() && rtf[i] == '-' ? 1 : 0);
    size_t j = digits;
    while (j < rtf.size() && j - digits < 10 && std::isdigit(static_cast<unsigned char>(rtf[j])))
        ++j;
    if (j > digits) {
        word.parameter = std::stol(rtf.substr(i, j - i));
        i = j;
    }
    if (i < rtf.size() && rtf[i] == ' ')
        ++i;
    word.end = i;
    return word;
}

std::optional<std::uint8_t> hexByte(const std::string &rtf, size_t at)
{
    if (at + 4 > rtf.size() || rtf.compare(at, 2, "\\'") != 0)
        return std::nullopt;
    const auto digit = [](char c) -> int {
        if (c >= '0' && c <= '9')
            return c - '0';
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    };
    const int high = digit(rtf[at + 2]);
    const int low = digit(rtf[at + 3]);
    if (high < 0 || low < 0)
        return std::nullopt;
    return static_cast<std::uint8_t>(high * 16 + low);
}

// \uN takes a signed 16-bit number; characters past the BMP are two of them.
std::string unicodeEscape(char32_t c, int skip)
{
    std::string fallback(static_cast<size_t>(std::max(0, skip)), '?');
    const auto one = [&fallback](long unit) {
        return "\\u" + std::to_string(unit > 32767 ? unit - 65536 : unit) + " " + fallback;
    };
    if (c < 0x10000)
        return one(static_cast<long>(c));
    const char32_t v = c - 0x10000;
    return one(0xD800 + static_cast<long>(v >> 10)) + one(0xDC00 + static_cast<long>(v & 0x3FF));
}

class Rewrite {
public:
    explicit Rewrite(const std::string &rtf) : rtf(rtf) { groups.emplace_back(); }

    std::string run()
    {
        size_t at = 0;
        while (at < rtf.size()) {
            const char c = rtf[at];
            if (c == '{' || c == '}')
                skipLeft = 0; // a fallback never runs past its group
            if (c == '{') {
                groups.push_back(groups.back());
                out += c;
                ++at;
            } else if (c == '}') {
                if (groups.size() > 1)
                    groups.pop_back();
                if (groups.size() < fontTableDepth)
                    fontTableDepth = 0;
                if (groups.size() < styleSheetDepth)
                    styleSheetDepth = 0;
                out += c;
                ++at;
            } else if (c == '\\') {
                at = controlAt(at);
            } else if (static_cast<std::uint8_t>(c) >= 0x80 && styleSheetDepth > 0) {
                out += '?';
                ++at;
            } else if (static_cast<std::uint8_t>(c) >= 0x80 && !groups.back().verbatim && skipLeft == 0) {
                at = characterAt(at, static_cast<std::uint8_t>(c), 1);
            } else {
                if (skipLeft > 0 && c != '\r' && c != '\n')
                    --skipLeft;
                out += c;
                ++at;
            }
        }
        return out;
    }

private:
    int codePageInForce() const
    {
        const int font = groups.back().font >= 0 ? groups.back().font : defaultFont;
        const auto found = fontPages.find(font);
        const int page = found == fontPages.end() ? documentCodePage : found->second;
        return page == documentCodePage ? ansiCodePage : page;
    }

    // A byte of text, raw or escaped (width: how many source bytes spell it).
    size_t characterAt(size_t at, std::uint8_t byte, size_t width)
    {
        const int page = codePageInForce();
        std::string bytes(1, static_cast<char>(byte));
        size_t end = at + width;
        if (page != leaveAlone && isDoubleByte(page) && isLeadByte(page, byte)) {
            if (const auto trail = hexByte(rtf, end)) {
                bytes += static_cast<char>(*trail);
                end += 4;
            } else if (end < rtf.size() && rtf[end] != '\\' && rtf[end] != '{' && rtf[end] != '}') {
                bytes += rtf[end];
                end += 1;
            }
        }
        const auto decoded = page == leaveAlone || byte < 0x80 ? std::nullopt : decoder.decode(page, bytes);
        if (!decoded) {
            out.append(rtf, at, width); // as it was: the lone byte, and whatever followed stays for the loop
            return at + width;
        }
        out += unicodeEscape(*decoded, groups.back().unicodeSkip);
        return end;
    }

    size_t controlAt(size_t at)
    {
        if (at + 1 >= rtf.size()) {
            out += rtf[at];
            return at + 1;
        }
        const char next = rtf[at + 1];
        if (next == '\'') {
            const auto byte = hexByte(rtf, at);
            if (!byte) {
                out += rtf.substr(at, 2);
                return at + 2;
            }
            if (styleSheetDepth > 0) {
                skipLeft = std::max(0, skipLeft - 1);
                const bool plain = *byte >= 0x20 && *byte < 0x7F &&
                                   std::string_view("\\{};").find(*byte) == std::string_view::npos;
                out += plain ? static_cast<char>(*byte) : '?';
                return at + 4;
            }
            if (skipLeft > 0 || groups.back().verbatim || fontTableDepth > 0 || *byte < 0x80) {
                if (skipLeft > 0)
                    --skipLeft;
                out.append(rtf, at, 4);
                return at + 4;
            }
            return characterAt(at, *byte, 4);
        }
        if (!std::isalpha(static_cast<unsigned char>(next))) {
            if (skipLeft > 0 && next != '*')
                --skipLeft;
            out.append(rtf, at, 2);
            return at + 2;
        }
        const Word word = readWord(rtf, at);
        // pandoc repeats a style name holding any escaped character at the
        // start of every paragraph. Style names carry no text: theirs are
        // spelled in plain ASCII, '?' for the rest, the \uN's own fallback.
        if (styleSheetDepth > 0 && word.name == "u")
            return word.end;
        out.append(rtf, at, word.end - at);
        if (skipLeft > 0) {
            --skipLeft; // a control word counts as one fallback character
            return word.end;
        }
        follow(word);
        if (word.name == "bin" && word.parameter && *word.parameter > 0) {
            const size_t length =
                std::min<size_t>(static_cast<size_t>(*word.parameter), rtf.size() - word.end);
            out.append(rtf, word.end, length);
            return word.end + length;
        }
        return word.end;
    }

    void follow(const Word &word)
    {
        Group &group = groups.back();
        const long value = word.parameter.value_or(0);
        if (word.name == "ansicpg" && value > 0)
            ansiCodePage = static_cast<int>(value);
        else if (word.name == "mac")
            ansiCodePage = 10000;
        else if (word.name == "pc")
            ansiCodePage = 437;
        else if (word.name == "pca")
            ansiCodePage = 850;
        else if (word.name == "deff")
            defaultFont = static_cast<int>(value);
        else if (word.name == "fonttbl")
            fontTableDepth = groups.size();
        else if (word.name == "stylesheet")
            styleSheetDepth = groups.size();
        else if (word.name == "f" && fontTableDepth > 0)
            tableFont = static_cast<int>(value);
        else if (word.name == "fcharset" && fontTableDepth > 0 && !fontPages.contains(tableFont))
            fontPages[tableFont] = codePageOfCharset(static_cast<int>(value));
        else if (word.name == "cpg" && fontTableDepth > 0 && value > 0)
            fontPages[tableFont] = static_cast<int>(value);
        else if (word.name == "f")
            group.font = static_cast<int>(value);
        else if (word.name == "plain")
            group.font = -1;
        else if (word.name == "uc")
            group.unicodeSkip = static_cast<int>(std::clamp<long>(value, 0, 16));
        else if (word.name == "u")
            skipLeft = group.unicodeSkip;
        else if (word.name == "leveltext" || word.name == "levelnumbers" || word.name == "pict" ||
                 word.name == "objdata" || word.name == "datafield")
            group.verbatim = true;
    }

    const std::string &rtf;
    std::string out;
    std::vector<Group> groups;
    Decoder decoder;
    std::map<int, int> fontPages;
    int ansiCodePage = 1252;
    int defaultFont = 0;
    size_t fontTableDepth = 0;  // the group depth of \fonttbl, 0 outside it
    size_t styleSheetDepth = 0; // and of \stylesheet
    int tableFont = -1;
    int skipLeft = 0; // fallback characters of the last \uN still to pass
};

// pandoc keeps a field's result only for a HYPERLINK whose instruction opens
// its group, and drops every other field's result (page numbers, citations,
// captions, cross-references): what the page shows. Other fields become
// their result; a hyperlink's instruction is rewritten as plain text.
class Fields {
public:
    explicit Fields(const std::string &rtf) : rtf(rtf) { findGroups(); }

    std::string run() { return within(0, rtf.size(), 0); }

private:
    // Every group's opening and closing brace, found in one pass: fields
    // nest, and searching for each one's end afresh would take quadratic time.
    void findGroups()
    {
        std::vector<size_t> open;
        for (size_t i = 0; i < rtf.size(); ++i) {
            const char c = rtf[i];
            if (c == '\\') {
                i = escapeEnd(i) - 1;
            } else if (c == '{') {
                open.push_back(groups.size());
                groups.emplace_back(i, std::string::npos);
            } else if (c == '}' && !open.empty()) {
                groups[open.back()].second = i;
                open.pop_back();
            }
        }
    }

    // The index of the '}' that closes the group opened at `open`, or npos.
    size_t groupEnd(size_t open) const
    {
        const auto found = std::lower_bound(groups.begin(), groups.end(), std::pair{open, size_t(0)});
        return found != groups.end() && found->first == open ? found->second : std::string::npos;
    }

    bool opensWith(size_t open, const char *word) const
    {
        const std::string text = std::string("{") + word;
        if (rtf.compare(open, text.size(), text) != 0)
            return false;
        const size_t after = open + text.size();
        return after >= rtf.size() || !std::isalpha(static_cast<unsigned char>(rtf[after]));
    }

    // The rewritten text of [from, to), `depth` fields deep.
    std::string within(size_t from, size_t to, int depth) const
    {
        std::string out;
        for (size_t i = from; i < to;) {
            if (rtf[i] == '\\') {
                const size_t end = escapeEnd(i);
                out.append(rtf, i, end - i);
                i = end;
            } else if (rtf[i] == '{' &&
                       (opensWith(i, "\\tc") || opensWith(i, "\\tcn") || opensWith(i, "\\xe"))) {
                // contents and index entries are never shown; pandoc shows them
                const size_t end = groupEnd(i);
                if (end == std::string::npos || end >= to) {
                    out.append(rtf, i, to - i);
                    break;
                }
                i = end + 1;
            } else if (rtf[i] == '{' && opensWith(i, "\\field")) {
                const size_t end = groupEnd(i);
                if (end == std::string::npos || end >= to) {
                    out.append(rtf, i, to - i);
                    break;
                }
                // Past any real document's nesting, fields stay as they are
                // rather than run the stack out.
                out += depth < 32 ? field(i, end, depth + 1) : rtf.substr(i, end - i + 1);
                i = end + 1;
            } else {
                out += rtf[i++];
            }
        }
        return out;
    }

    size_t escapeEnd(size_t at) const
    {
        if (at + 1 < rtf.size() && std::isalpha(static_cast<unsigned char>(rtf[at + 1]))) {
            const Word word = readWord(rtf, at);
            if (word.name == "bin" && word.parameter && *word.parameter > 0)
                return std::min(rtf.size(), word.end + static_cast<size_t>(*word.parameter));
            return word.end;
        }
        return std::min(rtf.size(), at + 2);
    }

    // The field group [open, close].
    std::string field(size_t open, size_t close, int depth) const
    {
        std::optional<std::string> instruction;
        std::optional<std::pair<size_t, size_t>> result; // its content, without the \fldrslt word
        for (size_t i = open + 1; i < close;) {
            if (rtf[i] == '\\') {
                i = escapeEnd(i);
                continue;
            }
            if (rtf[i] != '{') {
                ++i;
                continue;
            }
            const size_t end = groupEnd(i);
            if (end == std::string::npos || end > close)
                return rtf.substr(open, close - open + 1);
            if (opensWith(i, "\\*\\fldinst") || opensWith(i, "\\fldinst"))
                instruction = plainText(i, end);
            else if (opensWith(i, "\\fldrslt"))
                result = std::pair{escapeEnd(i + 1), end};
            i = end + 1;
        }
        const std::string shown = result ? within(result->first, result->second, depth) : std::string();
        std::istringstream words(instruction.value_or(""));
        std::string kind;
        words >> kind;
        for (char &c : kind)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (kind != "HYPERLINK")
            return "{" + shown + "}";
        std::string escaped;
        for (const char c : *instruction) {
            if (c == '\\' || c == '{' || c == '}')
                escaped += '\\';
            escaped += c;
        }
        return "{\\field{\\*\\fldinst {" + escaped + "}}{\\fldrslt " + shown + "}}";
    }

    // The text of a group without its control words and inner destinations.
    std::string plainText(size_t open, size_t close) const
    {
        std::string text;
        for (size_t i = open + 1; i < close;) {
            const char c = rtf[i];
            if (c == '\\' && i + 1 < close && !std::isalpha(static_cast<unsigned char>(rtf[i + 1]))) {
                if (rtf[i + 1] == '\'') {
                    if (const auto byte = hexByte(rtf, i))
                        text += static_cast<char>(*byte);
                    i += 4;
                } else {
                    if (rtf[i + 1] != '*')
                        text += rtf[i + 1];
                    i += 2;
                }
            } else if (c == '\\') {
                i = escapeEnd(i);
            } else if (c == '{' && rtf.compare(i, 3, "{\\*") == 0) {
                const size_t end = groupEnd(i);
                i = end == std::string::npos ? close : end + 1;
            } else if (c == '{' || c == '}' || c == '\r' || c == '\n') {
                ++i;
            } else {
                text += rtf[i++];
            }
        }
        return text;
    }

    const std::string &rtf;
    std::vector<std::pair<size_t, size_t>> groups; // in the order they open
};

} // namespace

std::string prepared(const std::string &rtf)
{
    if (rtf.compare(0, 5, "{\\rtf") != 0)
        return rtf;
    try {
        const std::string plainFields = Fields(rtf).run();
        return Rewrite(plainFields).run();
    } catch (...) {
        return rtf;
    }
}

} // namespace PandocRtf
