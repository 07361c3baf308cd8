#pragma once

#include <cstddef>

namespace richtext {

// How much a package may inflate to. A real document is a few megabytes;
// a zip bomb is gigabytes from a few kilobytes.
struct InflateLimits {
    std::size_t entryBytes = std::size_t(256) << 20; // 256 MiB for one entry
    std::size_t totalBytes = std::size_t(512) << 20; // 512 MiB for everything read from one package
};

} // namespace richtext
