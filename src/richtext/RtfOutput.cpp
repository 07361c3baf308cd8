#include "RtfOutput.h"

#include "RtfText.h"
#include "Utf8.h"

namespace richtext {

RtfOutput::RtfOutput()
{
    buffers.push_back(Buffer{});
}

void RtfOutput::word(const std::string &controlWords)
{
    if (controlWords.empty())
        return;
    buffers.back().text += controlWords;
    buffers.back().delimit = true;
    buffers.back().afterSpace = false;
}

void RtfOutput::raw(const std::string &text)
{
    buffers.back().text += text;
    buffers.back().delimit = false;
    buffers.back().afterSpace = false;
}

void RtfOutput::text(const std::string &escaped)
{
    if (escaped.empty())
        return;
    // A control word runs on through letters and digits (and a leading minus):
    // a space keeps ordinary text from being read as part of it.
    Buffer &buffer = buffers.back();
    if (buffer.delimit && escaped[0] != '\\' && escaped[0] != '{' && escaped[0] != '}')
        buffer.text += ' ';
    buffer.text += escaped;
    buffer.delimit = false;
    buffer.afterSpace = false;
}

void RtfOutput::documentText(std::string_view utf8)
{
    // LibreOffice turns spaces that meet within one run of text into pairs of
    // a six-per-em space and a space; an empty group between them keeps them plain.
    std::string escaped;
    bool afterSpace = buffers.back().afterSpace;
    for (const char32_t character : Utf8::decode(utf8)) {
        if (character == ' ' && afterSpace)
            escaped += "{}";
        escaped += RtfText::escapeCharacter(character);
        afterSpace = character == ' ';
    }
    text(escaped);
    buffers.back().afterSpace = afterSpace;
}

void RtfOutput::setAside()
{
    buffers.push_back(Buffer{});
}

std::string RtfOutput::takeAside()
{
    std::string text = std::move(buffers.back().text);
    if (buffers.size() > 1)
        buffers.pop_back();
    else
        buffers.back() = Buffer{};
    return text;
}

} // namespace richtext
