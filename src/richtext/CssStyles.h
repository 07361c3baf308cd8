#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace richtext {

// One CSS declaration: property name (lower case) and value.
using CssDeclaration = std::pair<std::string, std::string>;

// The simple part of CSS that documents use to style themselves: rules with
// type, class and type.class selectors (and lists of them), in a style
// element. Rules with other selectors and at-rules are skipped.
class CssStyles {
public:
    void parse(std::string_view styleSheet);

    // The declarations that apply to an element, weakest first: type rules,
    // then class rules, then type.class rules, each in document order.
    std::vector<CssDeclaration> declarationsFor(const std::string &tag,
                                                const std::vector<std::string> &classes) const;

    // "color: red; font-weight:bold" as declarations, in order.
    static std::vector<CssDeclaration> parseDeclarations(std::string_view block);

private:
    struct Rule {
        std::string tag;   // empty: any element
        std::string klass; // empty: no class needed
        std::vector<CssDeclaration> declarations;
    };
    std::vector<Rule> rules;
};

} // namespace richtext
