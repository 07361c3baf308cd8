#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace richtext {

// The text of an RTF document as it is written, and the stretches set aside
// to be placed later (a table row, whose definition must come first; a
// header, which belongs before its section's text). Knows where a control
// word needs a space to end it.
class RtfOutput {
public:
    RtfOutput();

    // Control words ("\\b\\i"): a following letter or digit would run into them.
    void word(const std::string &controlWords);
    // Braces, escapes and other text that ends cleanly.
    void raw(const std::string &text);
    // Escaped text (RtfText's), separated from a control word before it.
    void text(const std::string &escaped);
    // The document's own characters, escaped here.
    void documentText(std::string_view utf8);

    // Writing goes to a new stretch until takeAside() returns it.
    void setAside();
    std::string takeAside();
    bool isAside() const { return buffers.size() > 1; }

    // Everything written, once nothing is set aside.
    const std::string &written() const { return buffers.front().text; }

private:
    struct Buffer {
        std::string text;
        bool delimit = false;    // ends in a control word
        bool afterSpace = false; // ends in a space of the document's text
    };
    std::vector<Buffer> buffers;
};

} // namespace richtext
