#pragma once

#include "settings/Targets.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

// One conversion, as a value. The output location travels beside it.
// A password that is absent means the document is not known to be encrypted;
// a present one, even empty, is what the user typed.
namespace JobCase {
struct wpToODT {
    std::filesystem::path source;
    std::optional<std::string> password;
};
struct wpToRTF {
    std::filesystem::path source;
    std::optional<std::string> password;
    RTFCharset charset;
};
struct wpgToPNG {
    std::filesystem::path source;
};
struct wpgToSVG {
    std::filesystem::path source;
};
struct odtToWP {
    std::filesystem::path source;
    WPTarget target;
};
struct officeToWP {
    std::filesystem::path source;
    WPTarget target;
};
} // namespace JobCase

using Job = std::variant<JobCase::wpToODT, JobCase::wpToRTF, JobCase::wpgToPNG, JobCase::wpgToSVG,
                         JobCase::odtToWP, JobCase::officeToWP>;

// The case's own spelling ("wpToODT", ...).
std::string_view jobName(const Job &job);

const std::filesystem::path &jobSource(const Job &job);
