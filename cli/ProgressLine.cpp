#include "ProgressLine.h"

#include <array>
#include <charconv>
#include <cmath>
#include <unistd.h>

namespace {

constexpr const char *clearToEnd = "\x1b[K";

template <typename Number> std::string spelled(Number value)
{
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return std::string(digits.data(), end);
}

std::string oneDecimal(double value)
{
    std::array<char, 32> digits;
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 1).ptr;
    return std::string(digits.data(), end);
}

std::string twoDigits(long long value)
{
    return (value < 10 ? "0" : "") + spelled(value);
}

std::string duration(double seconds)
{
    const auto whole = static_cast<long long>(std::ceil(seconds));
    if (whole >= 3600)
        return spelled(whole / 3600) + " h " + twoDigits(whole % 3600 / 60) + " min";
    if (whole >= 60)
        return spelled((whole + 30) / 60) + " min";
    return spelled(whole) + " s";
}

} // namespace

ProgressLine::ProgressLine(std::ostream &out, bool terminal, std::size_t total, Clock clock,
                           std::chrono::milliseconds interval)
    : out(out), terminal(terminal), total(total), clock(std::move(clock)), interval(interval),
      started(this->clock())
{
}

bool ProgressLine::outputIsTerminal()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

std::string ProgressLine::text(std::size_t done, std::size_t total, std::chrono::duration<double> elapsed)
{
    std::string line = spelled(done) + " of " + spelled(total) + (total == 1 ? " file" : " files");
    const double seconds = elapsed.count();
    // Below a second or a first file, a rate says nothing yet.
    if (done == 0 || seconds < 1.0)
        return line;
    const double rate = static_cast<double>(done) / seconds;
    line += ", " + oneDecimal(rate) + " files/s";
    if (done < total)
        line += ", " + duration(static_cast<double>(total - done) / rate) + " left";
    return line;
}

void ProgressLine::advance(std::size_t finished)
{
    done = finished;
    if (!terminal)
        return;
    const auto now = clock();
    if (!drawn || done >= total || now - lastDrawn >= interval)
        draw();
}

void ProgressLine::print(const std::string &line)
{
    if (!terminal) {
        out << line << "\n";
        out.flush();
        return;
    }
    out << "\r" << line << clearToEnd << "\n";
    if (drawn)
        draw();
    else
        out.flush();
}

void ProgressLine::finish()
{
    if (terminal && drawn) {
        out << "\r" << clearToEnd;
        out.flush();
    }
    drawn = false;
}

void ProgressLine::draw()
{
    lastDrawn = clock();
    out << "\r" << text(done, total, lastDrawn - started) << clearToEnd;
    out.flush();
    drawn = true;
}
