#pragma once

#include "richtext/Losses.h"

#include <string>

// A WordPerfect document decoded in memory, and how its bytes are to be read.
struct Decoded {
    enum class Type { openDocumentText, html };

    std::string data;
    Type type;
    richtext::Losses losses{}; // what the decoding could not carry
};
