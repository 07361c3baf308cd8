#pragma once

#include <array>
#include <optional>
#include <string_view>

// The user's four conversion choices. Each has two cases whose raw values are
// what the preferences hold; the first case is the fallback.
#define QM_TWO_CASE_CHOICE(Name, first, second)                                                              \
    enum class Name { first, second };                                                                       \
    constexpr std::string_view rawValue(Name value)                                                          \
    {                                                                                                        \
        return value == Name::first ? #first : #second;                                                      \
    }                                                                                                        \
    template <> constexpr std::optional<Name> fromRawValue<Name>(std::string_view raw)                       \
    {                                                                                                        \
        if (raw == #first)                                                                                   \
            return Name::first;                                                                              \
        if (raw == #second)                                                                                  \
            return Name::second;                                                                             \
        return std::nullopt;                                                                                 \
    }                                                                                                        \
    template <> constexpr std::array<Name, 2> allCases<Name>()                                               \
    {                                                                                                        \
        return {Name::first, Name::second};                                                                  \
    }

template <typename Choice> constexpr std::optional<Choice> fromRawValue(std::string_view raw);
template <typename Choice> constexpr std::array<Choice, 2> allCases();

QM_TWO_CASE_CHOICE(DocTarget, odt, rtf)
QM_TWO_CASE_CHOICE(GraphicTarget, png, svg)
QM_TWO_CASE_CHOICE(WPTarget, wp6, wp5)
QM_TWO_CASE_CHOICE(RTFCharset, ansi, mac)

#undef QM_TWO_CASE_CHOICE
