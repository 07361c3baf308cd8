#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

// Output names: beside the input, its known extension replaced by the target's.
namespace Destination {

// The input's file name without its last extension when that extension is
// one Quillmorph reads (16 of them, compared without case); else the whole name.
std::string baseName(const std::filesystem::path &url);

// <folder of url>/<baseName>.<ext>
std::filesystem::path proposedURL(const std::filesystem::path &url, const std::string &ext);

// The first "<baseName> (n).<ext>" for n = 1, 2, ... that no file occupies
// and, when given, `alsoTaken` does not claim.
std::filesystem::path
firstFreeNumberedURL(const std::filesystem::path &url, const std::string &ext,
                     const std::function<bool(const std::filesystem::path &)> &alsoTaken = {});

// Why an output cannot take the place of what stands at its name (a folder
// is never replaced by a file); none when it can.
std::optional<std::string> whyNotReplaceable(const std::filesystem::path &output);

} // namespace Destination
