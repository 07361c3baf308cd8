#include "ProgressLine.h"

#include <gtest/gtest.h>

#include <locale>
#include <sstream>

using namespace std::chrono_literals;
using Time = std::chrono::steady_clock::time_point;

namespace {

// The unit tests also run under a German locale; this one sets it itself
// for the process's C++ streams, where a decimal comma would show.
class GermanLocale {
public:
    GermanLocale()
    {
        try {
            std::locale::global(std::locale("de_DE.UTF-8"));
        } catch (const std::runtime_error &) {
        }
    }
    ~GermanLocale() { std::locale::global(saved); }

private:
    std::locale saved = std::locale();
};

} // namespace

TEST(ProgressLine, SaysFilesRateAndTimeLeftWithoutTheLocale)
{
    GermanLocale german;
    struct Row {
        std::size_t done;
        std::size_t total;
        std::chrono::duration<double> elapsed;
        const char *text;
    };
    const Row rows[] = {
        {0, 40, 0s, "0 of 40 files"},
        {0, 40, 30s, "0 of 40 files"},
        {3, 40, 500ms, "3 of 40 files"},
        {1, 1, 2s, "1 of 1 file, 0.5 files/s"},
        {10, 40, 4s, "10 of 40 files, 2.5 files/s, 12 s left"},
        {100, 1000, 10s, "100 of 1000 files, 10.0 files/s, 2 min left"},
        {7, 10, 3s, "7 of 10 files, 2.3 files/s, 2 s left"},
        {5, 100000, 10s, "5 of 100000 files, 0.5 files/s, 55 h 33 min left"},
        {36000, 40000, 3600s, "36000 of 40000 files, 10.0 files/s, 7 min left"},
        {40, 40, 8s, "40 of 40 files, 5.0 files/s"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ProgressLine::text(row.done, row.total, row.elapsed), row.text);
    }
}

TEST(ProgressLine, RedrawsInPlaceOnATerminalAndKeepsFailuresAboveIt)
{
    GermanLocale german;
    Time now{};
    std::ostringstream out;
    ProgressLine line(
        out, true, 4, [&now] { return now; }, 200ms);
    struct Step {
        std::chrono::milliseconds at;
        std::function<void()> act;
        const char *written;
    };
    const Step steps[] = {
        {0ms, [&] { line.advance(0); }, "\r0 of 4 files\x1b[K"},
        {1000ms, [&] { line.advance(1); }, "\r1 of 4 files, 1.0 files/s, 3 s left\x1b[K"},
        {1100ms, [&] { line.advance(2); }, ""},
        {1100ms, [&] { line.print("failed b.wpd: no."); },
         "\rfailed b.wpd: no.\x1b[K\n\r2 of 4 files, 1.8 files/s, 2 s left\x1b[K"},
        {1200ms, [&] { line.advance(3); }, ""},
        {1400ms, [&] { line.advance(3); }, "\r3 of 4 files, 2.1 files/s, 1 s left\x1b[K"},
        {1450ms, [&] { line.advance(4); }, "\r4 of 4 files, 2.8 files/s\x1b[K"},
        {1500ms, [&] { line.finish(); }, "\r\x1b[K"},
        {1500ms, [&] { line.print("4 converted"); }, "\r4 converted\x1b[K\n"},
    };
    for (const auto &step : steps) {
        SCOPED_TRACE(step.at.count());
        out.str("");
        now = Time{} + step.at;
        step.act();
        EXPECT_EQ(out.str(), step.written);
    }
}

TEST(ProgressLine, AnythingButATerminalGetsPlainLinesOnly)
{
    std::ostringstream out;
    Time now{};
    ProgressLine line(out, false, 3, [&now] { return now; });
    line.advance(1);
    now += 5s;
    line.advance(2);
    line.print("failed c.wpd: no.");
    line.advance(3);
    line.finish();
    EXPECT_EQ(out.str(), "failed c.wpd: no.\n");
}
