// How wpd2odt fails: a non-zero status, one line on stderr saying why, and nothing left behind.

#include "ProgramRun.h"
#include "TestFiles.h"
#include "WordPerfectFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct FailureCase {
    std::string name;
    // Creates what the case needs and returns the source path; empty when the case cannot run.
    std::function<std::string(const testing_support::TempDir &)> source;
    std::string destination; // inside the scratch folder
    // The stderr line must hold this, with {source} and {destination} filled in, and then the
    // system's words for error when it is not 0.
    std::string message;
    int error = 0;
};

void PrintTo(const FailureCase &failure, std::ostream *out)
{
    *out << failure.name;
}

std::string expectedMessage(const FailureCase &failure, const std::string &source,
                            const std::string &destination)
{
    std::string message = failure.message;
    for (const auto &[key, value] :
         {std::pair{"{source}", source}, std::pair{"{destination}", destination}}) {
        if (const size_t at = message.find(key); at != std::string::npos)
            message.replace(at, std::strlen(key), value);
    }
    return failure.error ? message + ": " + std::strerror(failure.error) : message;
}

void expectOneLine(const ProgramRun &run, int status, const std::string &expected)
{
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_NE(run.err.find(expected), std::string::npos) << "stderr: " << run.err << "expected: " << expected;
    EXPECT_EQ(run.out, "");
}

class FailureTest : public testing::TestWithParam<FailureCase> {};

TEST_P(FailureTest, ReportsWhyAndLeavesNothingBehind)
{
    testing_support::TempDir folder;
    const std::string source = GetParam().source(folder);
    if (source.empty())
        GTEST_SKIP() << "this case needs the WordPerfect samples beside the checkout";
    const std::string destination = folder.file(GetParam().destination);
    const std::string message = expectedMessage(GetParam(), source, destination);
    const std::set<std::string> before = folder.names();
    std::error_code unusable; // a name too long for the file system cannot even be looked up
    const bool destinationExisted = fs::exists(destination, unusable);
    const std::string earlier = testing_support::readFile(destination);

    expectOneLine(ProgramRun::of({WPD2ODT_PATH, source, destination}), 1, "wpd2odt: " + message);
    EXPECT_EQ(fs::exists(destination, unusable), destinationExisted);
    EXPECT_EQ(testing_support::readFile(destination), earlier);
    EXPECT_EQ(folder.names(), before); // no temporary file left either
    // Source failures are the same with --stdout, which writes nothing at all then.
    if (GetParam().message.find("{destination}") == std::string::npos)
        expectOneLine(ProgramRun::of({WPD2ODT_PATH, "--stdout", source}), 1, "wpd2odt: " + message);
}

std::function<std::string(const testing_support::TempDir &)> file(const std::string &name,
                                                                  const std::string &bytes)
{
    return [name, bytes](const testing_support::TempDir &folder) { return folder.write(name, bytes); };
}

const auto validSource = file("valid.wp", WordPerfectFixtures::wp51({"Some text"}));

const FailureCase failureCases[] = {
    {"MissingSource", [](const testing_support::TempDir &f) { return f.file("absent.wp"); }, "out.odt",
     "cannot read {source}", ENOENT},
    {"SourceIsAFolder", [](const testing_support::TempDir &f) { return f.path(); }, "out.odt",
     "cannot read {source}", EISDIR},
    {"EmptyFile", file("empty.wp", ""), "out.odt", "{source} is not a WordPerfect document"},
    {"PlainText", file("notes.wp", "Dear diary,\nnothing to see.\n"), "out.odt",
     "{source} is not a WordPerfect document"},
    {"PrefixWithoutDocument", file("t.wp", WordPerfectFixtures::truncatedWp51()), "out.odt",
     "{source} is damaged"},
    {"GarbledWp6", file("g.wpd", WordPerfectFixtures::garbledWp6()), "out.odt", "{source} is damaged"},
    {"TruncatedSample",
     [](const testing_support::TempDir &f) {
         const std::string sample = testing_support::readFile(std::string(QM_SAMPLES_DIR) + "/min51.wp5");
         return sample.empty() ? std::string() : f.write("cut.wp5", sample.substr(0, 200));
     },
     "out.odt", "{source} is damaged"},
    {"EncryptedWp6", file("e.wpd", WordPerfectFixtures::encryptedWp6()), "out.odt",
     "{source} is an encrypted WordPerfect 6"},
    {"DestinationFolderMissing", validSource, "no/such/out.odt", "cannot write {destination}", ENOENT},
    {"DestinationUnderAFile",
     [](const testing_support::TempDir &f) {
         f.write("plain", "x");
         return validSource(f);
     },
     "plain/out.odt", "cannot write {destination}", ENOTDIR},
    // The temporary file exists by the time the rename fails: it must be cleaned away.
    {"DestinationIsAFolder",
     [](const testing_support::TempDir &f) {
         fs::create_directory(f.file("out.odt"));
         return validSource(f);
     },
     "out.odt", "cannot write {destination}", EISDIR},
    {"DestinationOfAnEarlierResult",
     [](const testing_support::TempDir &f) {
         f.write("out.odt", "the earlier result");
         return f.write("notes.wp", "no WordPerfect here");
     },
     "out.odt", "{source} is not a WordPerfect document"},
    {"DestinationNameTooLong", validSource, std::string(300, 'n'), "cannot write {destination}",
     ENAMETOOLONG},
};

INSTANTIATE_TEST_SUITE_P(Cases, FailureTest, testing::ValuesIn(failureCases),
                         [](const auto &info) { return info.param.name; });

// Root writes anywhere, so as root the converter runs as nobody here.
TEST(FailureTest, ReadOnlyDestinationFolderIsReportedAndLeftEmpty)
{
    testing_support::TempDir folder;
    const auto readable = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                          fs::perms::others_read | fs::perms::others_exec;
    fs::permissions(folder.path(), readable);
    const std::string source = validSource(folder);
    fs::permissions(source, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read |
                                fs::perms::others_read);
    fs::create_directory(folder.file("locked"));
    fs::permissions(folder.file("locked"), readable & ~fs::perms::owner_write);
    const std::string destination = folder.file("locked/out.odt");

    std::vector<std::string> argv{WPD2ODT_PATH, source, destination};
    if (geteuid() == 0)
        argv.insert(argv.begin(), {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    expectOneLine(ProgramRun::of(argv), 1,
                  "wpd2odt: cannot write " + destination + ": " + std::strerror(EACCES));
    EXPECT_TRUE(fs::is_empty(folder.file("locked")));
}

TEST(FailureTest, AConverterKilledMidWayLeavesNoFileBehind)
{
    testing_support::TempDir folder;
    // A gigabyte (sparse) keeps libwpd busy for seconds, long enough to be killed while at work.
    const std::string source = folder.write("huge.wp", WordPerfectFixtures::wp51({"first words"}));
    std::filesystem::resize_file(source, std::uintmax_t{1} << 30);
    const std::string destination = folder.file("huge.odt");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::execl(WPD2ODT_PATH, WPD2ODT_PATH, source.c_str(), destination.c_str(),
                static_cast<char *>(nullptr));
        ::_exit(127);
    }
    ::usleep(500'000);
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "finished before it could be killed";
    EXPECT_EQ(folder.names(), std::set<std::string>{"huge.wp"}) << "no output and no hidden temporary file";
}

class UsageTest : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(UsageTest, BadCommandLineGivesStatusTwoAndUsage)
{
    std::vector<std::string> argv = {WPD2ODT_PATH};
    argv.insert(argv.end(), GetParam().begin(), GetParam().end());
    expectOneLine(ProgramRun::of(argv), 2, "usage: wpd2odt");
}

using Arguments = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(Arguments, UsageTest,
                         testing::Values(Arguments{}, Arguments{"in.wp"}, Arguments{"--stdout"},
                                         Arguments{"--stdout", "in.wp", "out.odt"},
                                         Arguments{"in.wp", "out.odt", "extra"},
                                         Arguments{"--verbose", "in.wp", "out.odt"},
                                         Arguments{"in.wp", "out.odt", "--password"}));

TEST(UsageTest, HelpPrintsUsageAndSucceeds)
{
    const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("usage: wpd2odt"), std::string::npos);
}

} // namespace
