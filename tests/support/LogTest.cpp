#include "TestSupport.h"
#include "support/Log.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

const QRegularExpression entryShape(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  (.*)$"));

// Runs the log writer with its own environment, as another user when we are root.
ConversionTools::Output runWriter(const std::vector<std::string> &environment,
                                  std::vector<std::string> messages, bool unprivileged = false)
{
    std::vector<std::string> args{"-i"};
    args.insert(args.end(), environment.begin(), environment.end());
    if (unprivileged && geteuid() == 0) {
        args.insert(args.end(), {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    }
    args.push_back(LOG_WRITER);
    args.insert(args.end(), messages.begin(), messages.end());
    return ConversionTools::run("/usr/bin/env", args, "log_writer");
}

std::string trimmed(std::string text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

} // namespace

TEST(Log, EntriesAreTimestampedAndKeptAsGiven)
{
    const LogTail tail;
    Log::write("first entry \u201Cquoted\u201D caf\u00E9");
    Log::write("");
    Log::write("two\nlines");
    const auto lines = tail.lines();
    ASSERT_GE(lines.size(), 4u);
    const std::vector<std::string> mine(lines.end() - 4, lines.end());
    const auto first = entryShape.match(QString::fromStdString(mine[0]));
    ASSERT_TRUE(first.hasMatch()) << mine[0];
    EXPECT_EQ(first.captured(1).toStdString(), "first entry \u201Cquoted\u201D caf\u00E9");
    EXPECT_EQ(mine[1].size(), 14u) << "an empty message is the timestamp and two blanks";
    EXPECT_TRUE(entryShape.match(QString::fromStdString(mine[2])).hasMatch());
    EXPECT_EQ(mine[3], "lines") << "the second line of a message carries no timestamp";
}

TEST(Log, ConcurrentEntriesLandWhole)
{
    const LogTail tail;
    constexpr int threads = 8;
    constexpr int perThread = 10000;
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([t] {
            for (int i = 0; i < perThread; ++i)
                Log::write("concurrency-check thread " + std::to_string(t) + " entry " + std::to_string(i) +
                           " " + std::string(40, static_cast<char>('a' + t)));
        });
    }
    for (auto &writer : writers)
        writer.join();

    std::vector<std::vector<bool>> seen(threads, std::vector<bool>(perThread, false));
    const QRegularExpression whole(QStringLiteral(
        "^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  concurrency-check thread (\\d) entry (\\d+) ([a-h]{40})$"));
    int count = 0;
    for (const auto &line : tail.lines()) {
        if (line.find("concurrency-check") == std::string::npos)
            continue;
        const auto match = whole.match(QString::fromStdString(line));
        ASSERT_TRUE(match.hasMatch()) << "torn entry: " << line;
        const int t = match.captured(1).toInt();
        const int i = match.captured(2).toInt();
        ASSERT_EQ(match.captured(3), QString(40, QChar('a' + t)));
        EXPECT_FALSE(seen[t][i]) << "entry written twice";
        seen[t][i] = true;
        ++count;
    }
    EXPECT_EQ(count, threads * perThread);
}

TEST(Log, RecreatesARemovedFileWithTheNextEntry)
{
    TempDir dir;
    const auto output = runWriter({"XDG_STATE_HOME=" + dir.path().string()},
                                  {"before removal", "--remove-log", "after removal"});
    const std::string content = readFile(trimmed(output.stdout));
    ASSERT_EQ(content.size(), 12 + std::string("  after removal\n").size()) << content;
    EXPECT_EQ(content.substr(12), "  after removal\n");
}

TEST(Log, LocationFollowsTheUsersStateFolder)
{
    TempDir dir;
    const auto home = dir / "home";
    fs::create_directories(home);
    struct Row {
        std::vector<std::string> environment;
        fs::path expected;
    };
    const Row rows[] = {
        {{"XDG_STATE_HOME=" + (dir / "state").string(), "HOME=" + home.string()},
         dir / "state" / "Quillmorph" / "Quillmorph.log"},
        {{"XDG_STATE_HOME=relative/state", "HOME=" + home.string()},
         home / ".local" / "state" / "Quillmorph" / "Quillmorph.log"},
        {{"HOME=" + home.string()}, home / ".local" / "state" / "Quillmorph" / "Quillmorph.log"},
    };
    for (const auto &row : rows) {
        const auto output = runWriter(row.environment, {"located"});
        EXPECT_EQ(trimmed(output.stdout), row.expected.string());
        // The folder did not exist: the first entry made it.
        EXPECT_NE(readFile(row.expected).find("  located\n"), std::string::npos);
    }
    const auto nowhere = runWriter({"HOME="}, {});
    EXPECT_EQ(trimmed(nowhere.stdout), "/tmp/Quillmorph.log");
}

TEST(Log, ReadOnlyLogDropsEntriesSilently)
{
    TempDir dir;
    const fs::path folder = dir / "Quillmorph";
    fs::create_directories(folder);
    fs::permissions(dir.path(), fs::perms::all & ~fs::perms::group_write & ~fs::perms::others_write);
    fs::permissions(folder, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                fs::perms::others_read | fs::perms::others_exec);
    const fs::path log = folder / "Quillmorph.log";
    writeFile(log, "existing\n");
    fs::permissions(log, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);

    // Root ignores permissions, so the writer runs as nobody when we are root.
    const auto output =
        runWriter({"XDG_STATE_HOME=" + dir.path().string()}, {"dropped", "also dropped"}, true);
    EXPECT_EQ(trimmed(output.stdout), log.string()) << output.stderr;
    EXPECT_EQ(output.stderr, "");
    EXPECT_EQ(readFile(log), "existing\n");
}
