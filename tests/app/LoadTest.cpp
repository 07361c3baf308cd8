#include "ScriptedPrompter.h"
#include "TestSupport.h"
#include "app/AppDelegate.h"
#include "settings/Settings.h"
#include "support/Log.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <map>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

constexpr int fileCount = 200;

// 200 copies of a small real document, so the real wpd2odt does the work.
std::vector<fs::path> twoHundredDocuments(const TempDir &dir)
{
    const fs::path sample = fs::path(QM_SAMPLES_DIR) / "min51.wp5";
    std::vector<fs::path> files;
    if (!fs::exists(sample))
        return files;
    for (int i = 0; i < fileCount; ++i) {
        files.push_back(dir / ("Letter " + std::to_string(i) + ".wp5"));
        fs::copy_file(sample, files.back());
    }
    return files;
}

} // namespace

TEST(Load, TwoHundredFilesInOneOpenEventAllCompleteOnce)
{
    TempDir dir;
    const auto files = twoHundredDocuments(dir);
    if (files.empty())
        GTEST_SKIP() << "the WordPerfect samples are not beside the checkout";
    ConversionTools::overrideProgramFolder({});
    Settings settings(std::make_unique<QSettings>(QString::fromStdString((dir / "settings.conf").string()),
                                                  QSettings::IniFormat));
    ScriptedPrompter prompter;
    RecordingRevealer revealer;
    AppDelegate delegate(prompter, revealer, settings);
    std::map<quint64, int> completions;
    QObject::connect(
        &delegate, &AppDelegate::conversionFinished,
        [&](quint64 id, bool succeeded, const QString &) { completions[id] += succeeded ? 1 : 100; });
    const LogTail tail;

    delegate.applicationOpen(files);
    EXPECT_EQ(delegate.pendingConversions, fileCount) << "all handed over before any completes";
    ASSERT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }, 300));

    EXPECT_EQ(completions.size(), static_cast<std::size_t>(fileCount));
    for (const auto &[id, count] : completions)
        EXPECT_EQ(count, 1) << "conversion " << id << " completed " << count << " times (100 = failed)";
    EXPECT_TRUE(prompter.shown.empty());
    EXPECT_EQ(revealer.revealed.size(), static_cast<std::size_t>(fileCount));
    for (const auto &file : files)
        EXPECT_GT(fs::file_size(fs::path(file).replace_extension(".odt")), 0u);

    const QRegularExpression whole(
        QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  (openEvent|open|convert|run "
                       "wpd2odt|converted) ?[:\u2192] "));
    std::map<std::string, int> kinds;
    for (const auto &line : tail.lines()) {
        const auto match = whole.match(QString::fromStdString(line));
        ASSERT_TRUE(match.hasMatch()) << "not a whole entry: " << line;
        ++kinds[match.captured(1).toStdString()];
    }
    EXPECT_EQ(kinds["openEvent"], 1);
    EXPECT_EQ(kinds["open"], 2 * fileCount) << "the path line and the classified line";
    EXPECT_EQ(kinds["convert"], fileCount);
    EXPECT_EQ(kinds["run wpd2odt"], 2 * fileCount);
    EXPECT_EQ(kinds["converted"], fileCount);
}

TEST(Load, TheCompanionConvertsTheSameTwoHundredWithTwoJobs)
{
    TempDir dir;
    if (twoHundredDocuments(dir).empty())
        GTEST_SKIP() << "the WordPerfect samples are not beside the checkout";
    const auto output = ConversionTools::run(
        "/usr/bin/env",
        {"XDG_STATE_HOME=" + (dir / "state").string(), "XDG_CONFIG_HOME=" + (dir / "config").string(),
         (ConversionTools::programFolder() / "quillmorph-convert").string(), "--jobs", "2",
         dir.path().string()},
        "companion");
    EXPECT_NE(output.stdout.find("\n200 converted, 0 failed, 0 skipped\n"), std::string::npos)
        << output.stdout;
    EXPECT_NE(output.stdout.find("[200/200]"), std::string::npos);
    const std::string log = readFile(dir / "state" / "Quillmorph" / "Quillmorph.log");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 200 * 6)
        << "open, classified, convert, two run lines, converted";
}
