#pragma once

#include "classify/InputFile.h"

#include <exception>
#include <string>

// The words a user reads for a failed conversion: a message that names the
// file and an informative text that says why.
struct FailureText {
    std::string message;
    std::string informative;
};

// What a file is, in words a person knows: "WordPerfect 5.x document",
// "Word document", "Web page", ...
std::string describeKind(const InputFile &file);

// `name` is the input file's name. Conversion errors get their own words;
// any other error shows its own description.
FailureText describeFailure(const std::exception_ptr &error, const std::string &name);
