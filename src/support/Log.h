#pragma once

#include <filesystem>
#include <string_view>

// The diagnostic log: one timestamped entry per call, appended to a plain
// UTF-8 file, from any thread. Writing never fails visibly.
namespace Log {

void write(std::string_view message);

// Where entries go; fixed by the first call of either function.
std::filesystem::path url();

} // namespace Log
