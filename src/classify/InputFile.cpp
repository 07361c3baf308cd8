#include "InputFile.h"

#include "WordPerfectProbe.h"
#include "richtext/Utf8.h"
#include "support/PlatformError.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t headerSize = 512;
constexpr std::size_t sniffCharacters = 400;

using Signature = std::array<std::uint8_t, 4>;
constexpr Signature wordPerfectPrefix{0xFF, 0x57, 0x50, 0x43};
constexpr Signature zipSignature{0x50, 0x4B, 0x03, 0x04};
constexpr Signature ole2Signature{0xD0, 0xCF, 0x11, 0xE0};

} // namespace

std::vector<std::uint8_t> readFileHeader(const fs::path &url, std::size_t count)
{
    // Non-blocking, so a named pipe handed to us reads as empty instead of
    // waiting forever for a writer; regular files are unaffected.
    const int fd = ::open(url.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        throw PlatformError::fromErrno(errno);
    std::vector<std::uint8_t> bytes(count);
    ssize_t got;
    do {
        got = ::read(fd, bytes.data(), count);
    } while (got < 0 && errno == EINTR);
    if (got < 0 && errno == EAGAIN)
        got = 0; // a pipe with nothing in it yet
    const int readError = errno;
    ::close(fd);
    if (got < 0)
        throw PlatformError::fromErrno(readError);
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
}

namespace {

bool containsASCII(const std::uint8_t *bytes, std::size_t size, std::string_view needle)
{
    if (needle.empty() || size < needle.size())
        return false;
    const auto end = bytes + size;
    return std::search(bytes, end, needle.begin(), needle.end(),
                       [](std::uint8_t b, char c) { return b == static_cast<std::uint8_t>(c); }) != end;
}

bool startsWith(const std::vector<std::uint8_t> &header, const Signature &signature)
{
    return header.size() >= signature.size() &&
           std::equal(signature.begin(), signature.end(), header.begin());
}

// The first 400 characters of the header as text, lower-cased; only ASCII
// letters matter to the needles, so other characters are kept as they are.
std::string sniffText(const std::vector<std::uint8_t> &header)
{
    const std::string_view bytes(reinterpret_cast<const char *>(header.data()), header.size());
    // Strict UTF-8, as a platform decoder reads it; else ISO Latin 1, which decodes every byte.
    const std::u32string text = richtext::Utf8::isValid(bytes) ? richtext::Utf8::decode(bytes)
                                                               : std::u32string(header.begin(), header.end());
    std::string lowered;
    const std::size_t count = std::min(text.size(), sniffCharacters);
    lowered.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const char32_t c = text[i];
        lowered.push_back(c < 0x80 ? static_cast<char>(std::tolower(static_cast<int>(c))) : '\x80');
    }
    return lowered;
}

InputFile::Kind kindFromText(const std::vector<std::uint8_t> &header)
{
    const std::string text = sniffText(header);
    const auto has = [&text](std::string_view needle) { return text.find(needle) != std::string::npos; };
    if (has("office:document") && has("opendocument"))
        return InputFile::Kind::openDocument;
    if (has("<!doctype html") || has("<html") || has("<head"))
        return InputFile::Kind::office;
    return InputFile::Kind::unknown;
}

InputFile::Kind kindFromExtension(const std::string &ext)
{
    if (InputFile::wpDocumentExtensions().contains(ext))
        return InputFile::Kind::wpDocument;
    if (InputFile::wpGraphicExtensions().contains(ext))
        return InputFile::Kind::wpGraphic;
    if (ext == "odt" || ext == "fodt")
        return InputFile::Kind::openDocument;
    if (InputFile::officeExtensions().contains(ext))
        return InputFile::Kind::office;
    return InputFile::Kind::unknown;
}

} // namespace

const std::unordered_set<std::string> &InputFile::wpDocumentExtensions()
{
    static const std::unordered_set<std::string> set{"wp", "wp4", "wp5", "wp6", "wpd", "wpt"};
    return set;
}

const std::unordered_set<std::string> &InputFile::wpGraphicExtensions()
{
    static const std::unordered_set<std::string> set{"wpg"};
    return set;
}

const std::unordered_set<std::string> &InputFile::officeExtensions()
{
    static const std::unordered_set<std::string> set{"docx", "doc", "rtf", "html", "htm", "txt", "text"};
    return set;
}

std::string lowercaseExtension(const fs::path &url)
{
    const std::string name = url.filename().string();
    const auto dot = name.rfind('.');
    if (dot == std::string::npos)
        return {};
    std::string ext = name.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

namespace {

// Where the byte rules answer office for an OLE2 container, or fall back to the
// extension, libwpd is asked before the answer stands; so is a prefixed
// document whose byte 12 shows no key.
bool libwpdMayKnowBetter(const InputFile &file, const std::vector<std::uint8_t> &header)
{
    if (startsWith(header, wordPerfectPrefix))
        return file.kind == InputFile::Kind::wpDocument && !file.isEncrypted;
    if (startsWith(header, ole2Signature))
        return true;
    if (startsWith(header, zipSignature) ||
        containsASCII(header.data(), std::min<std::size_t>(header.size(), 8), "{\\rtf"))
        return false;
    // A name that says WordPerfect still leaves the password to be found.
    return kindFromText(header) == InputFile::Kind::unknown && file.kind != InputFile::Kind::wpGraphic;
}

} // namespace

InputFile InputFile::classify(const fs::path &url)
{
    const auto header = readFileHeader(url, headerSize);
    InputFile file = classifyHeader(url, header);
    if (!libwpdMayKnowBetter(file, header))
        return file;
    const auto verdict = WordPerfectProbe::examine(url);
    if (startsWith(header, wordPerfectPrefix)) {
        // The prefix has settled the kind; libwpd only finds a key byte 12 does not show.
        file.isEncrypted = verdict == WordPerfectProbe::Verdict::encrypted;
        return file;
    }
    switch (verdict) {
    case WordPerfectProbe::Verdict::notWordPerfect:
        break;
    case WordPerfectProbe::Verdict::document:
        file.kind = Kind::wpDocument;
        break;
    case WordPerfectProbe::Verdict::encrypted:
        file.kind = Kind::wpDocument;
        file.isEncrypted = true;
        break;
    case WordPerfectProbe::Verdict::unsupportedEncryption:
        file.kind = Kind::wpDocument;
        file.isEncrypted = true;
        file.wpVersionIsWP6 = true;
        break;
    }
    return file;
}

InputFile InputFile::classifyHeader(const fs::path &url, const std::vector<std::uint8_t> &header)
{
    InputFile file{url};
    const std::size_t n = header.size();
    if (startsWith(header, wordPerfectPrefix)) {
        file.kind = n >= 10 && header[9] == 0x16 ? Kind::wpGraphic : Kind::wpDocument;
        file.wpVersionIsWP6 = n >= 11 && header[10] == 2;
        file.isEncrypted = n >= 13 && header[12] != 0;
        return file;
    }
    if (startsWith(header, zipSignature)) {
        file.kind = containsASCII(header.data(), n, "application/vnd.oasis.opendocument.text")
                        ? Kind::openDocument
                        : Kind::office;
        return file;
    }
    if (startsWith(header, ole2Signature)) {
        file.kind = Kind::office;
        return file;
    }
    if (containsASCII(header.data(), std::min<std::size_t>(n, 8), "{\\rtf")) {
        file.kind = Kind::office;
        return file;
    }
    file.kind = kindFromText(header);
    if (file.kind == Kind::unknown)
        file.kind = kindFromExtension(lowercaseExtension(url));
    return file;
}

std::string_view kindName(InputFile::Kind kind)
{
    switch (kind) {
    case InputFile::Kind::wpDocument:
        return "wpDocument";
    case InputFile::Kind::wpGraphic:
        return "wpGraphic";
    case InputFile::Kind::openDocument:
        return "openDocument";
    case InputFile::Kind::office:
        return "office";
    case InputFile::Kind::unknown:
        break;
    }
    return "unknown";
}

std::string displayName(const fs::path &url)
{
    const fs::path normal = url.lexically_normal();
    if (normal.has_filename())
        return normal.filename().string();
    const fs::path folder = normal.parent_path();
    return folder.has_filename() ? folder.filename().string() : normal.string();
}

std::optional<std::string> whyNotADocument(const InputFile &file)
{
    if (file.kind != InputFile::Kind::wpDocument)
        return std::nullopt;
    std::vector<std::uint8_t> header;
    try {
        header = readFileHeader(file.url, 16);
    } catch (const std::exception &) {
        return std::nullopt; // the conversion will say what is wrong with it
    }
    // Byte 8 names the product that wrote the file; WordPerfect is 1. Other
    // products of the family, WordPerfect Presentations above all, write
    // slide shows and drawings that still claim the document type, and
    // libwpd would read them as pages of binary noise.
    if (startsWith(header, wordPerfectPrefix) && header.size() >= 10 && header[9] == 0x0A && header[8] != 1 &&
        header[8] != 0)
        return std::string("a WordPerfect Presentations file, not a document");
    return std::nullopt;
}

std::string versionFamilyOf(const InputFile &file)
{
    std::vector<std::uint8_t> header;
    try {
        header = readFileHeader(file.url, 16);
    } catch (const std::exception &) {
        return "unreadable";
    }
    const bool wordPerfect = file.kind == InputFile::Kind::wpDocument;
    if (wordPerfect && startsWith(header, ole2Signature)) {
        const auto inner = WordPerfectProbe::containedHeader(file.url, 16);
        if (startsWith(inner, wordPerfectPrefix))
            return versionFamily(inner) + " (in an OLE container)";
    }
    if (!wordPerfect || startsWith(header, wordPerfectPrefix)) {
        std::string family = versionFamily(header);
        // Macintosh files may keep their key where byte 12 does not show it.
        if (file.isEncrypted && header.size() >= 10 && header[9] == 0x2C)
            family += ", encrypted";
        return family;
    }
    switch (WordPerfectProbe::examine(file.url)) {
    case WordPerfectProbe::Verdict::document:
        return "WordPerfect 4.2";
    case WordPerfectProbe::Verdict::encrypted:
        return "WordPerfect 4.2, encrypted";
    default:
        return versionFamily(header);
    }
}

std::string versionFamily(const std::vector<std::uint8_t> &header)
{
    if (!startsWith(header, wordPerfectPrefix))
        return "no WordPerfect prefix";
    if (header.size() < 11)
        return "WordPerfect prefix cut short";
    const std::uint8_t fileType = header[9];
    const std::uint8_t major = header[10];
    if (fileType == 0x0A && major == 0)
        return "WordPerfect 5.x";
    if (fileType == 0x0A && major == 2)
        return "WordPerfect 6 or later";
    if (fileType == 0x2C)
        return "WordPerfect for Macintosh";
    if (fileType == 0x16)
        return "WordPerfect graphic";
    return "WordPerfect file type " + std::to_string(fileType) + ", version " + std::to_string(major);
}
