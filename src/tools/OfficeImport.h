#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Office documents become OpenDocument text through LibreOffice when it is
// installed, else through pandoc.
namespace ConversionTools {

// The first executable of /usr/bin/soffice and
// /usr/lib/libreoffice/program/soffice; looked up anew on every call.
std::optional<std::filesystem::path> libreOfficeURL();

// Converts an office document into a new work folder
// ($TMPDIR/quillmorph-<UUID>) and returns the OpenDocument file made there,
// named like the input with ".odt". LibreOffice does it when installed (with
// a private profile in the work folder), else pandoc. Throws
// ConversionError::officeToolFailed with the converter's words when nothing
// comes out, or the platform's error when the folder or the converter fails.
// The caller removes the work folder; after a failure it stays.
std::filesystem::path officeToODT(const std::filesystem::path &input);

// The pandoc reader for a file: from its first bytes as the classifier sees
// them, else its extension; "text" for plain text (pandoc has no reader for
// it, so it is handed over as HTML), nothing for Word 97-2003.
std::optional<std::string> pandocReaderFor(const std::filesystem::path &input);

// Makes libreOfficeURL look at these places instead; an empty list makes the
// suite absent. For tests of the path without LibreOffice.
void overrideLibreOfficePlaces(std::optional<std::vector<std::filesystem::path>> places);

} // namespace ConversionTools
