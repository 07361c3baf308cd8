#pragma once

#include "InflateLimits.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct zip;

namespace richtext {

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
