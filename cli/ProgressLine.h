#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

// The companion's one line of progress on a terminal: files done of the
// total, the rate and the time left, redrawn in place ("\r", then the text,
// then "\e[K" to clear what a longer line left). Draws nothing when the
// output is not a terminal: a log or a pipe keeps its plain lines.
class ProgressLine {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    // `clock` is for tests; redraws come at most every `interval`, and
    // always for the last file.
    ProgressLine(std::ostream &out, bool terminal, std::size_t total,
                 Clock clock = std::chrono::steady_clock::now,
                 std::chrono::milliseconds interval = std::chrono::milliseconds(200));

    // Standard output is a terminal.
    static bool outputIsTerminal();

    // `done` files of the total are finished.
    void advance(std::size_t done);
    // A whole line (a failure, a summary) above the progress line, which is
    // drawn again under it; on anything but a terminal just the line.
    void print(const std::string &line);
    // Clears the progress line for good.
    void finish();

    // "12 of 40 files, 2.5 files/s, 11 s left"; numbers never follow the locale.
    static std::string text(std::size_t done, std::size_t total, std::chrono::duration<double> elapsed);

private:
    void draw();

    std::ostream &out;
    bool terminal;
    std::size_t total;
    Clock clock;
    std::chrono::milliseconds interval;
    std::chrono::steady_clock::time_point started;
    std::chrono::steady_clock::time_point lastDrawn;
    std::size_t done = 0;
    bool drawn = false;
};
