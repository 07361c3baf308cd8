#include "TestSupport.h"
#include "support/ConversionError.h"
#include "support/PlatformError.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

class ToolLayout : public ::testing::Test {
protected:
    // An installed layout: <prefix>/bin/<program>, <prefix>/lib/quillmorph/{Files/,}<tool>.
    fs::path bin() const { return dir / "bin"; }
    fs::path resources() const { return dir / "lib" / "quillmorph"; }
    void SetUp() override { fs::create_directories(bin()); }
    TempDir dir;
};

} // namespace

TEST_F(ToolLayout, PrefersFilesFolderThenResourcesThenBuildTreeAndOnlyExecutables)
{
    const auto found = [&](const char *name) { return ConversionTools::toolURL(name, bin()); };
    writeScript(bin() / "Resources" / "Files" / "tool", "exit 0");
    EXPECT_EQ(found("tool"), bin() / "Resources" / "Files" / "tool");
    fs::create_directories(resources() / "Files");
    writeFile(resources() / "Files" / "tool", "#!/bin/sh\n");
    EXPECT_EQ(found("tool"), bin() / "Resources" / "Files" / "tool") << "no execute bit: passed over";
    writeScript(resources() / "tool", "exit 0");
    EXPECT_EQ(found("tool"), resources() / "tool");
    writeScript(resources() / "Files" / "tool", "exit 0");
    EXPECT_EQ(found("tool"), resources() / "Files" / "tool");

    EXPECT_EQ(found("absent"), std::nullopt);
    writeFile(resources() / "Files" / "lonely", "#!/bin/sh\n");
    EXPECT_EQ(found("lonely"), std::nullopt) << "not executable anywhere: no tool";
    fs::create_directories(resources() / "folder-tool");
    EXPECT_EQ(found("folder-tool"), std::nullopt) << "a folder is no tool";
}

TEST_F(ToolLayout, RunBundledRunsTheFoundToolAndReportsAMissingOne)
{
    writeScript(bin() / "Resources" / "Files" / "echoer", "printf '%s|' \"$@\"; echo oops >&2; exit 3");
    ConversionTools::overrideProgramFolder(bin());
    EXPECT_EQ(ConversionTools::runBundled("echoer", {"a b", "c"}), "a b|c|")
        << "arguments with blanks stay single; stderr and the status are dropped";
    try {
        ConversionTools::runBundled("wpd2odt-not-here", {});
        FAIL() << "a missing tool ran";
    } catch (const ConversionError &error) {
        EXPECT_EQ(error, ConversionError::toolMissing("wpd2odt-not-here"));
    }
    ConversionTools::overrideProgramFolder({});
}

TEST(Runner, LogsTheCommandLineAndTheOutcome)
{
    const LogTail tail;
    const auto output = ConversionTools::run(
        "/bin/sh", {"-c", "printf abc; head -c 120 /dev/zero >&2; exit 1", "--password", "secret"}, "shell");
    EXPECT_EQ(output.stdout, "abc");
    EXPECT_EQ(output.stderr, std::string(120, '\0'));
    const auto lines = tail.messagesContaining("run shell: ");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "run shell: -c printf abc; head -c 120 /dev/zero >&2; exit 1 --password ********");
    EXPECT_EQ(lines[1], "run shell: 3 bytes stdout, 120 bytes stderr, status 1");

    // A signal is logged as the status; what came before it is kept.
    EXPECT_EQ(ConversionTools::run("/bin/sh", {"-c", "printf partial; kill -9 $$"}, "killed").stdout,
              "partial");
    EXPECT_EQ(tail.messagesContaining("run killed: ").back(),
              "run killed: 7 bytes stdout, 0 bytes stderr, status 9");
    EXPECT_EQ(ConversionTools::run("/bin/true", {}, "true").stdout, "");
    EXPECT_EQ(tail.messagesContaining("run true: "),
              (std::vector<std::string>{"run true: ", "run true: 0 bytes stdout, 0 bytes stderr, status 0"}));
}

TEST(Runner, DrainsBothPipesTogether)
{
    // 16 MiB to stderr first, then 16 MiB to stdout: reading one pipe to its
    // end before the other would leave the child blocked forever.
    constexpr std::size_t size = 16u << 20;
    const auto output = ConversionTools::run(
        "/bin/sh",
        {"-c", "yes e | head -c 16777216 >&2; yes o | head -c 16777216; yes e | head -c 16777216 >&2"},
        "flood");
    ASSERT_EQ(output.stdout.size(), size);
    ASSERT_EQ(output.stderr.size(), 2 * size);
    EXPECT_EQ(std::count(output.stdout.begin(), output.stdout.end(), 'o'), static_cast<long>(size / 2));
    EXPECT_EQ(std::count(output.stderr.begin(), output.stderr.end(), 'e'), static_cast<long>(size));
}

TEST(Runner, StandardInputIsAtItsEnd)
{
    const auto output = ConversionTools::run("/bin/sh", {"-c", "cat; echo \"read:$?\""}, "stdin");
    EXPECT_EQ(output.stdout, "read:0\n");
}

TEST(Runner, LaunchFailureThrowsThePlatformErrorAfterOneLine)
{
    TempDir dir;
    writeScript(dir / "broken", "");
    writeFile(dir / "broken", "#!/nonexistent/interpreter\n");
    const LogTail tail;
    EXPECT_THROW(ConversionTools::run(dir / "missing-program", {"x"}, "missing"), PlatformError);
    EXPECT_THROW(ConversionTools::run(dir / "broken", {}, "broken"), PlatformError);
    EXPECT_EQ(tail.messagesContaining("run missing: "), (std::vector<std::string>{"run missing: x"}));
    EXPECT_EQ(tail.messagesContaining("run broken: ").size(), 1u);
}
