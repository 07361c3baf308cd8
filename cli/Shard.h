#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

// `--shard K/N`: the part of an archive one machine of N converts. A file
// belongs to a shard by a hash of its path relative to the argument it was
// found under, so N machines given the same arguments split the work
// exactly, wherever each has the archive mounted, with no coordinator.
struct Shard {
    std::uint32_t index = 1; // K, from 1
    std::uint32_t count = 1; // N

    // "K/N" with 1 ≤ K ≤ N, decimal digits only; nothing otherwise.
    static std::optional<Shard> parse(std::string_view text);

    // The path that decides a file's shard: `file` relative to `argument`, the
    // folder named on the command line; a file named itself counts by its
    // name. Separators are '/', whatever the form of either path.
    static std::filesystem::path keyOf(const std::filesystem::path &file,
                                       const std::filesystem::path &argument);

    // The shard of a key, from 1: the first eight bytes of the SHA-256 of
    // its bytes, big-endian, modulo `count`, plus one. The same on every
    // machine and every run.
    static std::uint32_t of(const std::filesystem::path &key, std::uint32_t count);

    bool takes(const std::filesystem::path &file, const std::filesystem::path &argument) const
    {
        return of(keyOf(file, argument), count) == index;
    }
};
