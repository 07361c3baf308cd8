#include "WordPerfectProbe.h"

#include "richtext/Utf8.h"

#include <librevenge-stream/librevenge-stream.h>
#include <libwpd/libwpd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>

namespace fs = std::filesystem;

namespace {

// libwpd recognises WordPerfect 4.2 by walking every function code of the
// file; those documents fit on a floppy disk, so a larger file without a
// prefix is not read through to find out.
constexpr std::uintmax_t largestUnprefixedDocument = 16u * 1024 * 1024;

bool isRegularFile(const fs::path &url, std::uintmax_t &size)
{
    std::error_code error;
    if (!fs::is_regular_file(url, error))
        return false;
    size = fs::file_size(url, error);
    return !error;
}

// libwpd's WordPerfect 4.2 and Macintosh 1.x heuristics accept some plain
// UTF-8 text (a short note with umlauts reads as 4.2 and loses them). Text
// with nothing but printable characters and line ends carries no WordPerfect
// code worth the name, so it stays text.
bool isPlainText(const fs::path &url)
{
    std::ifstream in(url, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const bool controlsOnlyForLayout = std::none_of(bytes.begin(), bytes.end(), [](char c) {
        const auto b = static_cast<unsigned char>(c);
        return b < 0x20 && b != '\t' && b != '\n' && b != '\r' && b != '\f';
    });
    return controlsOnlyForLayout && richtext::Utf8::isValid(bytes);
}

} // namespace

WordPerfectProbe::Verdict WordPerfectProbe::examine(const fs::path &url)
{
    std::uintmax_t size = 0;
    if (!isRegularFile(url, size) || size == 0)
        return Verdict::notWordPerfect;
    try {
        librevenge::RVNGFileStream stream(url.c_str());
        if (!stream.isStructured() && (size > largestUnprefixedDocument || isPlainText(url)))
            return Verdict::notWordPerfect;
        switch (libwpd::WPDocument::isFileFormatSupported(&stream)) {
        case libwpd::WPD_CONFIDENCE_EXCELLENT:
            return Verdict::document;
        case libwpd::WPD_CONFIDENCE_SUPPORTED_ENCRYPTION:
            return Verdict::encrypted;
        case libwpd::WPD_CONFIDENCE_UNSUPPORTED_ENCRYPTION:
            return Verdict::unsupportedEncryption;
        default:
            return Verdict::notWordPerfect;
        }
    } catch (...) {
        return Verdict::notWordPerfect;
    }
}

std::vector<std::uint8_t> WordPerfectProbe::containedHeader(const fs::path &url, std::size_t count)
{
    std::uintmax_t size = 0;
    if (!isRegularFile(url, size))
        return {};
    try {
        librevenge::RVNGFileStream stream(url.c_str());
        if (!stream.isStructured())
            return {};
        const std::unique_ptr<librevenge::RVNGInputStream> main(
            stream.getSubStreamByName("PerfectOffice_MAIN"));
        if (!main)
            return {};
        unsigned long got = 0;
        const unsigned char *bytes = main->read(count, got);
        return bytes ? std::vector<std::uint8_t>(bytes, bytes + got) : std::vector<std::uint8_t>{};
    } catch (...) {
        return {};
    }
}
