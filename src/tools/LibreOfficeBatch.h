#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <variant>
#include <vector>

namespace ConversionTools {

// Office documents to OpenDocument text through LibreOffice, many per start:
// LibreOffice takes seconds to start and a fraction of one per document.
// Each worker owns one private profile and runs one LibreOffice at a time
// over the documents waiting (at most `documentsPerStart`), so a fresh
// LibreOffice comes every few hundred documents. A document that yields no
// output, or on which LibreOffice stops making progress (its whole process
// group is then killed), is tried again alone, so it never fails the
// documents it was batched with. For the companion's archive runs; the app
// converts one document per call with officeToODT.
class LibreOfficeBatch {
public:
    struct Options {
        std::filesystem::path soffice;
        int workers = 1;
        std::size_t documentsPerStart = 200;
        // A start that has produced no new document for this long is hung.
        std::chrono::milliseconds documentTimeout{std::chrono::seconds(120)};
        // Added to the first document of a start: a fresh profile is slow.
        std::chrono::milliseconds startAllowance{std::chrono::seconds(60)};
        // How long a worker waits for more documents before starting with fewer.
        std::chrono::milliseconds gatherDelay{100};
        // Where the profiles, the batches and the results go; empty is $TMPDIR.
        std::filesystem::path workRoot;
    };

    // The ODT, alone in a new folder <workRoot>/quillmorph-<UUID> (the caller
    // removes it), named like the input with ".odt"; or the error:
    // ConversionError::officeToolFailed with LibreOffice's words, or a PlatformError.
    using Result = std::variant<std::filesystem::path, std::exception_ptr>;
    using Completion = std::function<void(Result)>;

    struct Counts {
        std::size_t starts = 0; // LibreOffice runs, retries included
        std::size_t converted = 0;
        std::size_t failed = 0;
        std::size_t retriedAlone = 0;
        std::size_t hung = 0; // runs killed for making no progress
    };

    explicit LibreOfficeBatch(Options options);
    // Kills the LibreOffice still running and fails what has not been converted.
    ~LibreOfficeBatch();
    LibreOfficeBatch(const LibreOfficeBatch &) = delete;
    LibreOfficeBatch &operator=(const LibreOfficeBatch &) = delete;

    // From any thread. `completion` runs once, on one of the batch's own threads.
    void submit(const std::filesystem::path &input, Completion completion);
    // The same, for a caller that waits: get() returns the ODT or throws the error.
    std::future<std::filesystem::path> submit(const std::filesystem::path &input);

    Counts counts() const;

private:
    struct Pending {
        std::filesystem::path input;
        Completion completion;
    };
    struct Run;

    void work(int worker);
    std::vector<Pending> take();
    void convert(int worker, std::vector<Pending> documents);
    void finish(Pending &document, Result result);

    Options options;
    std::filesystem::path root;
    mutable std::mutex mutex;
    std::condition_variable wake;
    std::deque<Pending> queue;
    bool stopping = false;
    Counts tally;
    std::vector<std::thread> workers;
};

} // namespace ConversionTools
