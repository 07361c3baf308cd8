#pragma once

#include <filesystem>
#include <optional>
#include <vector>

// Office documents become OpenDocument text through LibreOffice when it is
// installed, else through pandoc.
namespace ConversionTools {

// The first executable of /usr/bin/soffice and
// /usr/lib/libreoffice/program/soffice; looked up anew on every call.
std::optional<std::filesystem::path> libreOfficeURL();

// Makes libreOfficeURL look at these places instead; an empty list makes the
// suite absent. For tests of the path without LibreOffice.
void overrideLibreOfficePlaces(std::optional<std::vector<std::filesystem::path>> places);

} // namespace ConversionTools
