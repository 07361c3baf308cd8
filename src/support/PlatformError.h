#pragma once

#include <stdexcept>
#include <string>

// A failure of the operating system or a library (opening a file, starting a
// process, writing the output), carrying the platform's own description.
// Never wrapped in a ConversionError: the workflow shows its words as they are.
class PlatformError : public std::runtime_error {
public:
    explicit PlatformError(const std::string &description) : std::runtime_error(description) {}

    // The description of an errno value, e.g. "No such file or directory".
    static PlatformError fromErrno(int error);
};
