#pragma once

#include <stdexcept>
#include <string>

// The engine's own failures. The payload is no description: the workflow
// turns each case into the words the user reads.
class ConversionError : public std::exception {
public:
    enum class Case { toolMissing, conversionFailed, officeToolFailed, wrongPassword };

    static ConversionError toolMissing(std::string tool) { return {Case::toolMissing, std::move(tool)}; }
    static ConversionError conversionFailed(std::string detail)
    {
        return {Case::conversionFailed, std::move(detail)};
    }
    static ConversionError officeToolFailed(std::string detail)
    {
        return {Case::officeToolFailed, std::move(detail)};
    }
    static ConversionError wrongPassword() { return {Case::wrongPassword, {}}; }

    Case which() const { return kind; }
    const std::string &payload() const { return text; }

    // The case and its payload, for logs and test messages, e.g. toolMissing("wpd2odt").
    const char *what() const noexcept override { return spelled.c_str(); }

    bool operator==(const ConversionError &other) const { return kind == other.kind && text == other.text; }

private:
    ConversionError(Case kind, std::string text);

    Case kind;
    std::string text;
    std::string spelled;
};
