#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The record of a companion run: one JSON object per input file, one line
// each, appended as each file finishes.
namespace Report {

enum class Status { converted, convertedWithLosses, failed, skipped };

struct Entry {
    std::filesystem::path input;
    std::uintmax_t size = 0;
    std::string sha256; // of the input, lowercase hex; empty when it could not be read
    std::string kind;   // the classifier's kind name
    std::string family; // the version family
    std::string job;    // the job's name, empty when none
    std::optional<std::filesystem::path> output;
    std::optional<std::string> outputSha256;
    Status status = Status::failed;
    std::optional<std::string> reason;
    std::vector<std::string> losses;
    std::int64_t milliseconds = 0;
};

// "converted", "converted with losses", "failed", "skipped".
const char *statusName(Status status);

// A JSON string literal of `bytes`, quotes included. UTF-8 passes through;
// control characters are escaped; each byte that is not part of valid UTF-8
// becomes \udcXX (XX the byte), the convention of Python's
// "surrogateescape", so that a file name's bytes can be recovered:
// os.fsencode(json.loads(line)["input"]).
std::string jsonString(std::string_view bytes);

// The entry as one line of JSON, newline included; fields in a fixed order.
std::string line(const Entry &entry);

// The SHA-256 of a file's content in lowercase hex. Throws PlatformError.
std::string sha256Of(const std::filesystem::path &file);

// Appends entries to a report file from any thread. Each line reaches the
// file in a single write() on an O_APPEND descriptor as soon as it is
// given, under an flock so that several processes may share one report. A
// line never crosses a page boundary of the file (blanks before it fill
// the page), because a killed writer keeps only the pages the system had
// copied: a run killed half-way leaves whole lines, at most followed by
// blanks without a newline. Lines over a page long lack that protection.
class Writer {
public:
    // Opens or creates `file`. An existing report that ends in something
    // other than a newline (blanks, or the rest of a line longer than a
    // page) loses that piece, so the lines appended now stay whole.
    // Throws PlatformError.
    explicit Writer(const std::filesystem::path &file);
    ~Writer();
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    // Throws PlatformError when the line cannot be written whole.
    void write(const Entry &entry);

private:
    std::mutex mutex;
    int fd = -1;
};

} // namespace Report
