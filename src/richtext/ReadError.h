#pragma once

#include <stdexcept>
#include <string>

namespace richtext {

// A document our readers cannot make sense of. The message is in plain words
// for the user ("The document is not a valid zip archive."), never a code.
class ReadError : public std::runtime_error {
public:
    explicit ReadError(const std::string &message) : std::runtime_error(message) {}
};

} // namespace richtext
