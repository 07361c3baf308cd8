#include "CorpusComparison.h"
#include "TestSupport.h"
#include "engine/ClassicRTF.h"
#include "engine/DocumentSteps.h"

#include "richtext/ModelBuilder.h"
#include "richtext/OdtReader.h"
#include "richtext/Utf8.h"

#include <gtest/gtest.h>
#include <librevenge-stream/librevenge-stream.h>
#include <libwpd/libwpd.h>

#include <QProcess>

#include <cstdio>
#include <fstream>
#include <iomanip>
#include <map>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

std::optional<fs::path> soffice()
{
    for (const char *candidate : {"/usr/bin/soffice", "/usr/lib/libreoffice/program/soffice"})
        if (::access(candidate, X_OK) == 0)
            return fs::path(candidate);
    return std::nullopt;
}

// Encrypted documents are left out: without their passwords libwpd reads only noise.
bool libwpdReads(const fs::path &file)
{
    librevenge::RVNGFileStream stream(file.c_str());
    if (libwpd::WPDocument::isFileFormatSupported(&stream) != libwpd::WPD_CONFIDENCE_EXCELLENT)
        return false;
    richtext::ModelBuilder ignored;
    return libwpd::WPDocument::parse(&stream, &ignored, nullptr) == libwpd::WPD_OK;
}

// Many files in one run of LibreOffice, with a profile of its own.
void convertAll(const fs::path &office, const char *format, const fs::path &profile, const fs::path &into,
                const std::vector<fs::path> &files)
{
    fs::create_directories(into);
    QStringList arguments{QString::fromStdString("-env:UserInstallation=file://" + profile.string()),
                          "--headless",
                          "--convert-to",
                          format,
                          "--outdir",
                          QString::fromStdString(into.string())};
    for (const fs::path &file : files)
        arguments << QString::fromStdString(file.string());
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QString::fromStdString(office.string()), arguments);
    ASSERT_TRUE(process.waitForFinished(900'000)) << "LibreOffice did not finish converting to " << format;
}

std::optional<richtext::Document> readFlat(const fs::path &file)
{
    if (!fs::exists(file))
        return std::nullopt;
    richtext::ModelBuilder builder;
    richtext::OdtReader::read(readFile(file), builder);
    return builder.document();
}

// Every WordPerfect document of the corpus that libwpd reads, converted once
// for all the tests below, and read back by LibreOffice.
class ClassicRTFCorpus : public testing::Test {
protected:
    struct Sample {
        std::string name;    // the corpus file name
        std::string base;    // the name that LibreOffice's outputs carry
        std::string failure; // why we made no RTF of it
    };

    static void SetUpTestSuite()
    {
        const auto corpus = corpusDir();
        office = soffice();
        if (!corpus || !office)
            return;
        work = std::make_unique<TempDir>();
        std::vector<fs::path> sources, ansi, mac;
        for (const auto &entry : fs::directory_iterator(*corpus / "wp")) {
            if (!entry.is_regular_file() || !libwpdReads(entry.path()))
                continue;
            // Distinct names for LibreOffice's outputs, the source's extension kept for its detection.
            std::string base = entry.path().filename().string();
            std::replace(base.begin(), base.end(), '.', '_');
            const fs::path source = *work / "source" / (base + entry.path().extension().string());
            fs::create_directories(source.parent_path());
            fs::copy_file(entry.path(), source);
            sources.push_back(source);
            samples.push_back({entry.path().filename().string(), base, {}});
            try {
                const Decoded decoded = Converter::steps::documentBytes(entry.path(), std::nullopt);
                for (const auto &[charset, folder, list] : {std::tuple{RTFCharset::ansi, "ansi", &ansi},
                                                            std::tuple{RTFCharset::mac, "mac", &mac}}) {
                    const fs::path rtf = *work / folder / (base + ".rtf");
                    fs::create_directories(rtf.parent_path());
                    Converter::steps::writeClassicRTF(decoded, charset, rtf);
                    list->push_back(rtf);
                }
            } catch (const std::exception &error) {
                samples.back().failure = error.what();
            }
        }
        std::sort(samples.begin(), samples.end(),
                  [](const Sample &a, const Sample &b) { return a.name < b.name; });
        const fs::path profile = *work / "profile";
        convertAll(*office, "txt:Text", profile, *work / "text" / "source", sources);
        convertAll(*office, "txt:Text", profile, *work / "text" / "ansi", ansi);
        convertAll(*office, "txt:Text", profile, *work / "text" / "mac", mac);
        convertAll(*office, "fodt", profile, *work / "flat" / "source", sources);
        convertAll(*office, "fodt", profile, *work / "flat" / "ansi", ansi);
    }

    static void TearDownTestSuite() { work.reset(); }

    void SetUp() override
    {
        if (!corpusDir())
            GTEST_SKIP() << "the shared corpus is not beside the checkout";
        if (!office)
            GTEST_SKIP() << "LibreOffice is not installed";
        ASSERT_FALSE(samples.empty()) << "libwpd read none of the corpus";
    }

    static fs::path output(const char *kind, const char *reading, const Sample &sample, const char *extension)
    {
        return *work / kind / reading / (sample.base + extension);
    }

    static inline std::optional<fs::path> office;
    static inline std::unique_ptr<TempDir> work;
    static inline std::vector<Sample> samples;
};

TEST_F(ClassicRTFCorpus, LibreOfficeReadsTheSameTextInBothCharsets)
{
    std::printf("%-28s %9s %6s %6s %s\n", "document", "chars", "ansi", "mac", "Mac OS Roman lacks");
    for (const Sample &sample : samples) {
        EXPECT_EQ(sample.failure, "") << "no RTF of " << sample.name;
        const fs::path source = output("text", "source", sample, ".txt");
        ASSERT_TRUE(fs::exists(source)) << "LibreOffice could not read " << sample.name;
        const std::string expected = corpus::normalised(readFile(source));
        const fs::path ansi = output("text", "ansi", sample, ".txt");
        const fs::path mac = output("text", "mac", sample, ".txt");
        EXPECT_TRUE(fs::exists(ansi) && fs::exists(mac))
            << "LibreOffice could not open our RTF of " << sample.name;
        const bool ansiSame = corpus::normalised(readFile(ansi)) == expected;
        std::size_t questionMarks = 0;
        const std::string macDifference =
            corpus::macDifference(expected, corpus::normalised(readFile(mac)), questionMarks);
        EXPECT_TRUE(ansiSame) << sample.name << " under ansi";
        EXPECT_EQ(macDifference, "") << sample.name << " under mac";
        std::printf("%-28s %9zu %6s %6s %zu\n", sample.name.c_str(), richtext::Utf8::decode(expected).size(),
                    ansiSame ? "same" : "DIFF", macDifference.empty() ? "same" : "DIFF", questionMarks);
    }
}

TEST_F(ClassicRTFCorpus, FormattingSurvives)
{
    std::printf("%-28s %7s %7s %7s %6s %7s %-8s %-7s %s\n", "document", "chars", "b/i/u", "of them", "paras",
                "align", "tables", "notes", "table shapes");
    for (const Sample &sample : samples) {
        const auto expected = readFlat(output("flat", "source", sample, ".fodt"));
        const auto found = readFlat(output("flat", "ansi", sample, ".fodt"));
        ASSERT_TRUE(expected && found) << "no flat ODT of " << sample.name;
        const corpus::Agreement agreement = corpus::compare(*expected, *found);
        EXPECT_GE(agreement.characterShare(), 0.98) << sample.name;
        EXPECT_GE(agreement.paragraphShare(), 0.98) << sample.name;
        EXPECT_EQ(agreement.tablesFound, agreement.tablesExpected) << sample.name;
        EXPECT_EQ(agreement.footnotesFound, agreement.footnotesExpected) << sample.name;
        EXPECT_EQ(agreement.endnotesFound, agreement.endnotesExpected) << sample.name;
        std::string tables;
        for (std::size_t i = 0; i < agreement.tablesExpected.size(); ++i)
            tables += (i ? "," : "") + agreement.tablesExpected[i];
        std::printf("%-28s %7zu %6.2f%% %7zu %6zu %6.2f%% %-8s %zu/%zu %s\n", sample.name.c_str(),
                    agreement.characters, 100 * agreement.characterShare(), agreement.emphasised,
                    agreement.paragraphs, 100 * agreement.paragraphShare(),
                    agreement.tablesFound == agreement.tablesExpected ? "same" : "DIFF",
                    agreement.footnotesFound + agreement.endnotesFound,
                    agreement.footnotesExpected + agreement.endnotesExpected, tables.c_str());
    }
}

} // namespace
