#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

// What libwpd makes of a file that the byte rules leave open: a WordPerfect 4.2
// document has no prefix, a document inside an OLE2 container hides its prefix
// in a stream, and a Macintosh file keeps its password checksum where byte 12
// does not show it.
class WordPerfectProbe {
public:
    enum class Verdict { notWordPerfect, document, encrypted, unsupportedEncryption };

    // Asks libwpd; never throws (an unreadable file is simply not WordPerfect).
    static Verdict examine(const std::filesystem::path &url);

    // The first `count` bytes of the WordPerfect stream inside an OLE2
    // container; empty when there is none.
    static std::vector<std::uint8_t> containedHeader(const std::filesystem::path &url, std::size_t count);
};
