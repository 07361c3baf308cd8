// Per-file time of the office import as the app runs it (officeToODT):
// through LibreOffice, with a fresh private profile each time, and through
// pandoc with LibreOffice hidden. Prints each file, the medians and ratios.
#include "tools/OfficeImport.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

// Milliseconds of one import, or nothing when it failed; its work folder goes.
std::optional<double> importMilliseconds(const fs::path &file)
{
    const auto start = Clock::now();
    try {
        const fs::path odt = ConversionTools::officeToODT(file);
        const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        std::error_code ignored;
        fs::remove_all(odt.parent_path(), ignored);
        return ms;
    } catch (...) {
        return std::nullopt;
    }
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) / 2];
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_office FILE...\n");
        return 2;
    }
    if (!ConversionTools::libreOfficeURL())
        std::printf("LibreOffice is not installed: its column stays empty\n");
    std::printf("%-45s %14s %10s %7s\n", "file", "LibreOffice", "pandoc", "ratio");
    std::vector<double> suite;
    std::vector<double> pandoc;
    for (int i = 1; i < argc; ++i) {
        const fs::path file = argv[i];
        ConversionTools::overrideLibreOfficePlaces(std::nullopt);
        const auto lo = ConversionTools::libreOfficeURL() ? importMilliseconds(file) : std::nullopt;
        ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{});
        const auto pd = importMilliseconds(file);
        const auto cell = [](const std::optional<double> &ms) {
            char text[32];
            std::snprintf(text, sizeof text, ms ? "%.0f ms" : "fails", ms.value_or(0));
            return std::string(text);
        };
        std::string ratio = "-";
        if (lo && pd) {
            suite.push_back(*lo);
            pandoc.push_back(*pd);
            char text[16];
            std::snprintf(text, sizeof text, "%.1f", *lo / std::max(*pd, 1.0));
            ratio = text;
        }
        std::printf("%-45s %14s %10s %7s\n", file.filename().c_str(), cell(lo).c_str(), cell(pd).c_str(),
                    ratio.c_str());
    }
    std::printf("median over files both read: LibreOffice %.0f ms, pandoc %.0f ms per file (%.1f×)\n",
                median(suite), median(pandoc), median(suite) / std::max(median(pandoc), 1.0));
    return 0;
}
