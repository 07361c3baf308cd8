#include "FakeTools.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "support/PlatformError.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <QCoreApplication>
#include <QThread>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

// Waits (at most 10 s) for a file to appear, so tests can hold a tool at a point.
std::string waitFor(const fs::path &file)
{
    return "i=0; while [ ! -e '" + file.string() +
           "' ] && [ $i -lt 1000 ]; do sleep 0.01; i=$((i+1)); done\n";
}

struct Recorder {
    int calls = 0;
    bool onMainThread = false;
    std::exception_ptr outcome;
    Converter::Completion completion()
    {
        return [this](Converter::Outcome result, const Converter::Losses &) {
            ++calls;
            onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
            outcome = result;
        };
    }
    bool done() const { return calls > 0; }
};

template <typename E> E errorOf(const std::exception_ptr &outcome)
{
    try {
        std::rethrow_exception(outcome);
    } catch (const E &error) {
        return error;
    } catch (const std::exception &other) {
        ADD_FAILURE() << "unexpected error: " << other.what();
    }
    throw std::logic_error("no error of that type");
}

} // namespace

TEST(Converter, ReturnsAtOnceAndCompletesOnceOnTheMainThread)
{
    FakeTools tools;
    const fs::path go = tools.work("go");
    tools.add("wpd2odt", waitFor(go) + "printf odt > \"$2\"");
    const fs::path out = tools.work("out.odt");

    Recorder recorder;
    Converter::perform(JobCase::wpToODT{tools.work("in.wpd"), std::nullopt}, out, recorder.completion());
    // Had perform waited for the tool, it would still be blocked on "go".
    EXPECT_EQ(recorder.calls, 0);
    EXPECT_FALSE(fs::exists(out));
    writeFile(go, "");
    ASSERT_TRUE(waitUntil([&] { return recorder.done(); }));
    waitUntil([] { return false; }, 0.2); // a second call would arrive meanwhile
    EXPECT_EQ(recorder.calls, 1);
    EXPECT_TRUE(recorder.onMainThread);
    EXPECT_EQ(recorder.outcome, nullptr);
    EXPECT_EQ(readFile(out), "odt");
}

TEST(Converter, RunsJobsInParallel)
{
    // Each tool waits for the other to have started: run one after the
    // other, neither would ever see its partner and both would fail.
    FakeTools tools;
    tools.add("wpd2odt",
              "touch \"$2.started\"\n"
              "other=$(echo \"$2\" | sed 's/a.odt$/X/; s/b.odt$/a.odt/; s/X$/b.odt/')\n"
              "i=0; while [ ! -e \"$other.started\" ] && [ $i -lt 1000 ]; do sleep 0.01; i=$((i+1)); done\n"
              "[ -e \"$other.started\" ] && printf ok > \"$2\"");
    Recorder first;
    Recorder second;
    Converter::perform(JobCase::wpToODT{tools.work("a.wpd"), std::nullopt}, tools.work("a.odt"),
                       first.completion());
    Converter::perform(JobCase::wpToODT{tools.work("b.wpd"), std::nullopt}, tools.work("b.odt"),
                       second.completion());
    ASSERT_TRUE(waitUntil([&] { return first.done() && second.done(); }));
    EXPECT_EQ(first.outcome, nullptr);
    EXPECT_EQ(second.outcome, nullptr);
    EXPECT_TRUE(first.onMainThread && second.onMainThread);
}

TEST(Converter, HandsErrorsThroughUnwrapped)
{
    FakeTools tools;
    // Present and executable, but it cannot be started.
    tools.add("wpd2odt", "");
    writeFile(tools.folder() / "wpd2odt", "#!/nonexistent/interpreter\n");
    Recorder platform;
    Converter::perform(JobCase::wpToODT{tools.work("in.wpd"), std::nullopt}, tools.work("out.odt"),
                       platform.completion());
    ASSERT_TRUE(waitUntil([&] { return platform.done(); }));
    EXPECT_EQ(errorOf<PlatformError>(platform.outcome).what(), testing_support::systemMessage(ENOENT));

    tools.add("wpd2odt", "exit 0");
    Recorder password;
    Converter::perform(JobCase::wpToODT{tools.work("in.wpd"), "guess"}, tools.work("out.odt"),
                       password.completion());
    ASSERT_TRUE(waitUntil([&] { return password.done(); }));
    EXPECT_EQ(errorOf<ConversionError>(password.outcome), ConversionError::wrongPassword());
    EXPECT_TRUE(password.onMainThread);
}
