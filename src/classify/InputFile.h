#pragma once

#include <cstdint>
#include <optional>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

// What a file handed to Quillmorph is, decided from its first 512 bytes and,
// only where those settle nothing, from its name's extension.
struct InputFile {
    enum class Kind { wpDocument, wpGraphic, openDocument, office, unknown };

    std::filesystem::path url;
    Kind kind = Kind::unknown;
    bool isEncrypted = false;
    bool wpVersionIsWP6 = false;

    // Throws PlatformError when the file cannot be opened or read. Where the
    // bytes leave it open, libwpd decides whether the file is WordPerfect.
    static InputFile classify(const std::filesystem::path &url);

    // The byte rules alone, for a header already in memory (at most 512 bytes).
    static InputFile classifyHeader(const std::filesystem::path &url,
                                    const std::vector<std::uint8_t> &header);

    static const std::unordered_set<std::string> &wpDocumentExtensions();
    static const std::unordered_set<std::string> &wpGraphicExtensions();
    static const std::unordered_set<std::string> &officeExtensions();

    bool operator==(const InputFile &) const = default;
};

// At most `count` bytes from the start of a file, in one read.
// Throws PlatformError when the file cannot be opened or read.
std::vector<std::uint8_t> readFileHeader(const std::filesystem::path &url, std::size_t count);

// The enumeration's own spelling, as the log and the companion print it.
std::string_view kindName(InputFile::Kind kind);

// The lower-cased text after the last dot of the file name; empty without one.
std::string lowercaseExtension(const std::filesystem::path &url);

// The name a person knows the file by: its last path component, or the
// folder's own name for a path given with a trailing "/" or "/.".
std::string displayName(const std::filesystem::path &url);

// Why a file that claims to be a WordPerfect document is not one ("a
// WordPerfect Presentations file, not a document"); none for a document.
std::optional<std::string> whyNotADocument(const InputFile &file);

// The WordPerfect family a file's prefix names ("WordPerfect 5.x",
// "WordPerfect 6 or later", ...), read from its bytes 9 and 10.
std::string versionFamily(const std::vector<std::uint8_t> &header);

// The same for a classified file, with what libwpd recognised where the prefix
// says nothing ("WordPerfect 4.2", "WordPerfect 5.x (in an OLE container)").
std::string versionFamilyOf(const InputFile &file);
