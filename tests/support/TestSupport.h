#pragma once

#include "TestFiles.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace testing_support {

// The shared corpus beside the checkout, when it is there.
std::optional<std::filesystem::path> corpusDir();

// Spins the Qt event loop until `done` holds or `seconds` pass; returns `done()`.
bool waitUntil(const std::function<bool()> &done, double seconds = 30);

// Points this process's log at a fresh folder of its own (removed at exit),
// so tests running side by side never read each other's entries.
void usePrivateLog();

// The system's own words for an errno value, in the language the test runs
// under (the unit tests run under a German locale too).
std::string systemMessage(int error);

// Lines appended to the log since this object was made.
class LogTail {
public:
    LogTail();
    std::vector<std::string> lines() const;
    // The lines, without their timestamps, that contain `needle`.
    std::vector<std::string> messagesContaining(const std::string &needle) const;

private:
    std::uintmax_t start;
};

} // namespace testing_support
