#include "CssStyles.h"
#include "XmlTree.h"

#include <algorithm>
#include <cctype>

namespace richtext {
namespace {

std::string trimmed(std::string_view text)
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    return std::string(text);
}

std::string lower(std::string text)
{
    return Xml::lowerAscii(std::move(text));
}

std::string withoutComments(std::string_view css)
{
    std::string result;
    result.reserve(css.size());
    for (std::size_t i = 0; i < css.size(); ++i) {
        if (css[i] == '/' && i + 1 < css.size() && css[i + 1] == '*') {
            const std::size_t end = css.find("*/", i + 2);
            if (end == std::string_view::npos)
                break;
            i = end + 1;
            continue;
        }
        result += css[i];
    }
    return result;
}

bool isSimpleName(const std::string &name)
{
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
    });
}

} // namespace

std::vector<CssDeclaration> CssStyles::parseDeclarations(std::string_view block)
{
    std::vector<CssDeclaration> declarations;
    const std::string text = withoutComments(block);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find(';', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string declaration = text.substr(start, end - start);
        start = end + 1;
        const std::size_t colon = declaration.find(':');
        if (colon == std::string::npos)
            continue;
        const std::string name = lower(trimmed(std::string_view(declaration).substr(0, colon)));
        std::string value = trimmed(std::string_view(declaration).substr(colon + 1));
        if (const std::size_t important = lower(value).find("!important"); important != std::string::npos)
            value = trimmed(std::string_view(value).substr(0, important));
        if (!name.empty() && !value.empty())
            declarations.emplace_back(name, value);
    }
    return declarations;
}

void CssStyles::parse(std::string_view styleSheet)
{
    const std::string css = withoutComments(styleSheet);
    std::size_t at = 0;
    while (at < css.size()) {
        const std::size_t open = css.find('{', at);
        if (open == std::string::npos)
            break;
        // Find the matching close, so that an at-rule's nested block is skipped whole.
        std::size_t close = open + 1;
        int depth = 1;
        for (; close < css.size() && depth > 0; ++close) {
            if (css[close] == '{')
                ++depth;
            else if (css[close] == '}')
                --depth;
        }
        // `close` is one past the closing brace, or the end of an unfinished sheet.
        const std::size_t bodyEnd = depth == 0 ? close - 1 : close;
        const std::string selectors = trimmed(std::string_view(css).substr(at, open - at));
        const std::string_view body = std::string_view(css).substr(open + 1, bodyEnd - open - 1);
        at = close;
        if (selectors.empty() || selectors[0] == '@')
            continue;
        const std::vector<CssDeclaration> declarations = parseDeclarations(body);
        std::size_t from = 0;
        while (from <= selectors.size()) {
            std::size_t comma = selectors.find(',', from);
            if (comma == std::string::npos)
                comma = selectors.size();
            const std::string selector =
                lower(trimmed(std::string_view(selectors).substr(from, comma - from)));
            from = comma + 1;
            const std::size_t dot = selector.find('.');
            Rule rule{selector.substr(0, dot), dot == std::string::npos ? "" : selector.substr(dot + 1),
                      declarations};
            if (rule.tag == "*")
                rule.tag.clear();
            const bool simpleTag = rule.tag.empty() || isSimpleName(rule.tag);
            const bool simpleClass = rule.klass.empty() || isSimpleName(rule.klass);
            if (simpleTag && simpleClass && !(rule.tag.empty() && rule.klass.empty() && selector != "*"))
                rules.push_back(std::move(rule));
        }
    }
}

std::vector<CssDeclaration> CssStyles::declarationsFor(const std::string &tag,
                                                       const std::vector<std::string> &classes) const
{
    std::vector<CssDeclaration> result;
    auto hasClass = [&](const std::string &klass) {
        return std::find(classes.begin(), classes.end(), klass) != classes.end();
    };
    for (int pass = 0; pass < 3; ++pass) {
        for (const Rule &rule : rules) {
            const bool typeOnly = rule.klass.empty();
            const bool classOnly = !typeOnly && rule.tag.empty();
            const bool matches = (rule.tag.empty() || rule.tag == tag) && (typeOnly || hasClass(rule.klass));
            const int weight = typeOnly ? 0 : classOnly ? 1 : 2;
            if (matches && weight == pass)
                result.insert(result.end(), rule.declarations.begin(), rule.declarations.end());
        }
    }
    return result;
}

} // namespace richtext
