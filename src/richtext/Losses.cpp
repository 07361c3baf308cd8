#include "Losses.h"

#include <algorithm>

namespace richtext {
namespace {

constexpr std::string_view marker = ": lost: ";
constexpr std::string_view separator = "; ";

} // namespace

void Losses::add(std::string_view kind)
{
    if (kind.empty() || std::find(kinds_.begin(), kinds_.end(), kind) != kinds_.end())
        return;
    kinds_.emplace_back(kind);
}

void Losses::add(const Losses &other)
{
    for (const std::string &kind : other.kinds_)
        add(kind);
}

bool Losses::has(std::string_view kind) const
{
    return std::find(kinds_.begin(), kinds_.end(), kind) != kinds_.end();
}

std::string Losses::joined() const
{
    std::string text;
    for (const std::string &kind : kinds_) {
        if (!text.empty())
            text += separator;
        text += kind;
    }
    return text;
}

std::string Losses::stderrLine(std::string_view program) const
{
    if (kinds_.empty())
        return {};
    std::string line(program);
    line += marker;
    // One line whatever a kind holds: a line break would split the record.
    for (char c : joined())
        line += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    return line + '\n';
}

Losses Losses::fromStderr(std::string_view text)
{
    Losses losses;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        const std::size_t at = line.find(marker);
        // The program's name comes first and holds no space.
        if (at == std::string_view::npos || at == 0 || line.substr(0, at).find(' ') != std::string_view::npos)
            continue;
        std::string_view rest = line.substr(at + marker.size());
        while (!rest.empty()) {
            const std::size_t next = rest.find(separator);
            losses.add(rest.substr(0, next));
            rest = next == std::string_view::npos ? std::string_view() : rest.substr(next + separator.size());
        }
    }
    return losses;
}

} // namespace richtext
