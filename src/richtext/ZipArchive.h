#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct zip;

namespace richtext {

// How much a package may inflate to. A real document is a few megabytes;
// a zip bomb is gigabytes from a few kilobytes.
struct InflateLimits {
    std::size_t entryBytes = std::size_t(256) << 20; // 256 MiB for one entry
    std::size_t totalBytes = std::size_t(512) << 20; // 512 MiB for everything read from one package
};

// A zip archive held in memory, read entry by entry within InflateLimits.
class ZipArchive {
public:
    // Throws ReadError when the bytes are not a readable zip archive.
    ZipArchive(std::string_view bytes, InflateLimits limits);
    ~ZipArchive();
    ZipArchive(const ZipArchive &) = delete;
    ZipArchive &operator=(const ZipArchive &) = delete;

    bool contains(const std::string &name) const;
    // The entry's bytes; none when there is no such entry. Throws ReadError when
    // the entry is damaged or would inflate beyond the limits.
    std::optional<std::string> read(const std::string &name);

private:
    std::string_view data;
    InflateLimits limits;
    std::size_t inflated = 0;
    zip *archive = nullptr;
};

} // namespace richtext
