#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
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
// A plain-text file whose bytes are not UTF-8, as UTF-8 (read as Latin-1); nothing for any
// other file. LibreOffice would read such a file as UTF-8 and drop every accented letter.
std::optional<std::string> legacyTextInUtf8(const std::filesystem::path &input);

// Archive runs (the companion): while one lives, officeToODT hands the
// documents LibreOffice converts to a LibreOfficeBatch with `workers`
// workers, each keeping one private profile and converting many documents
// per start, instead of starting LibreOffice for each. A document announced
// with prefetch() is converted ahead of its turn, so that a start gathers
// many; officeToODT then only waits for it. Does nothing when LibreOffice is
// not installed (pandoc then converts, one document per call as before). At
// most one at a time; the app never makes one.
class OfficeBatchImport {
public:
    explicit OfficeBatchImport(int workers);
    // Stops the LibreOffice still running; results never taken are removed.
    ~OfficeBatchImport();
    OfficeBatchImport(const OfficeBatchImport &) = delete;
    OfficeBatchImport &operator=(const OfficeBatchImport &) = delete;

    bool enabled() const;
    // Starts converting `input` for a later officeToODT of the same path.
    void prefetch(const std::filesystem::path &input);
    // The prefetched document will not be asked for: its result is removed.
    void discard(const std::filesystem::path &input);
    // Documents prefetched and not yet taken by officeToODT or discarded.
    std::size_t waiting() const;

    struct Shared;

private:
    std::shared_ptr<Shared> shared;
};

// Makes libreOfficeURL look at these places instead; an empty list makes the
// suite absent. For tests of the path without LibreOffice.
void overrideLibreOfficePlaces(std::optional<std::vector<std::filesystem::path>> places);

} // namespace ConversionTools
