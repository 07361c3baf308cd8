// Office documents to ODT through LibreOffice, in one run: one soffice per
// document as the app does (officeToODT, a fresh private profile each),
// against LibreOfficeBatch with one and with two workers (one profile per
// worker, many documents per start), and against officeToODT while an
// OfficeBatchImport lives, every document announced first (the companion's
// path). Prints the time per document and the ratios.
//   bench_office_batch FILE...
#include "tools/LibreOfficeBatch.h"
#include "tools/OfficeImport.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using ConversionTools::LibreOfficeBatch;

namespace {

struct Figures {
    double seconds = 0;
    std::size_t converted = 0;
};

void removeResult(const fs::path &odt)
{
    std::error_code ignored;
    fs::remove_all(odt.parent_path(), ignored);
}

// Converts every file in turn and times the whole; a file that fails is not counted.
Figures timed(const std::vector<fs::path> &files, const std::function<fs::path(const fs::path &)> &convert)
{
    Figures figures;
    const auto start = Clock::now();
    for (const auto &file : files) {
        try {
            removeResult(convert(file));
            ++figures.converted;
        } catch (...) {
        }
    }
    figures.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return figures;
}

Figures onePerDocument(const std::vector<fs::path> &files)
{
    return timed(files, [](const fs::path &file) { return ConversionTools::officeToODT(file); });
}

Figures batched(const std::vector<fs::path> &files, const fs::path &soffice, int workers,
                LibreOfficeBatch::Counts &counts)
{
    Figures figures;
    const auto start = Clock::now();
    LibreOfficeBatch::Options options;
    options.soffice = soffice;
    options.workers = workers;
    LibreOfficeBatch batch(options);
    std::vector<std::future<fs::path>> results;
    for (const auto &file : files)
        results.push_back(batch.submit(file));
    for (auto &result : results) {
        try {
            removeResult(result.get());
            ++figures.converted;
        } catch (...) {
        }
    }
    figures.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    counts = batch.counts();
    return figures;
}

// The companion's path: documents announced ahead, then asked for one by one.
Figures companionPath(const std::vector<fs::path> &files, int workers)
{
    ConversionTools::OfficeBatchImport import(workers);
    for (const auto &file : files)
        import.prefetch(file);
    return timed(files, [](const fs::path &file) { return ConversionTools::officeToODT(file); });
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const auto soffice = ConversionTools::libreOfficeURL();
    if (!soffice) {
        std::printf("skipped: LibreOffice is not installed (scripts/setup installs it)\n");
        return 0;
    }
    const std::vector<fs::path> files(argv + 1, argv + argc);
    if (files.empty()) {
        std::fprintf(stderr, "usage: bench_office_batch FILE...\n");
        return 2;
    }
    const double count = static_cast<double>(files.size());
    const Figures single = onePerDocument(files);
    std::printf("one soffice per document:   %3zu of %zu converted, %6.1f s, %5.0f ms per document\n",
                single.converted, files.size(), single.seconds, 1000 * single.seconds / count);
    for (const int workers : {1, 2}) {
        LibreOfficeBatch::Counts counts;
        const Figures figures = batched(files, *soffice, workers, counts);
        std::printf("batch, %d worker%s:           %3zu of %zu converted, %6.1f s, %5.0f ms per document, "
                    "%zu starts, %zu retried alone, %zu hung; %.1fx faster per document\n",
                    workers, workers == 1 ? " " : "s", figures.converted, files.size(), figures.seconds,
                    1000 * figures.seconds / count, counts.starts, counts.retriedAlone, counts.hung,
                    single.seconds / figures.seconds);
    }
    const Figures companion = companionPath(files, 2);
    std::printf(
        "officeToODT, batched import, 2 workers: %3zu of %zu converted, %6.1f s, %5.0f ms per document; "
        "%.1fx faster per document\n",
        companion.converted, files.size(), companion.seconds, 1000 * companion.seconds / count,
        single.seconds / companion.seconds);
    return 0;
}
