#pragma once

#include <functional>
#include <stdexcept>
#include <string>

// What every converter's main() shares: any failure becomes exactly one line
// on stderr ("NAME: why"), even when a path in it holds a newline, and the
// status says how it ended: 0 done, 1 failed, 2 called wrongly.
namespace ConverterMain {

struct UsageProblem : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One line on stderr, control characters shown as '?'.
void report(const char *name, std::string message);

// Runs `body` and turns what it throws into the line and the status.
int run(const char *name, const std::function<int()> &body);

} // namespace ConverterMain
