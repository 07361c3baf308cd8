#include "Terminal.h"

#include <cstdio>
#include <iostream>
#include <termios.h>
#include <unistd.h>

namespace {

// Restores the terminal's echo however the read ends.
class EchoOff {
public:
    EchoOff()
    {
        if (tcgetattr(STDIN_FILENO, &saved) == 0) {
            termios quiet = saved;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            active = tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet) == 0;
        }
    }
    ~EchoOff()
    {
        if (active)
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    }
    EchoOff(const EchoOff &) = delete;
    EchoOff &operator=(const EchoOff &) = delete;

private:
    termios saved{};
    bool active = false;
};

std::optional<std::string> readLine()
{
    std::string line;
    if (!std::getline(std::cin, line))
        return std::nullopt;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

} // namespace

std::optional<std::string> TerminalPasswordSource::ask(const std::string &name, bool retry)
{
    const bool terminal = isatty(STDIN_FILENO);
    if (terminal) {
        std::cerr << (retry ? "Incorrect password. Try again for " : "Password for ") << name
                  << " (Ctrl-D skips it): " << std::flush;
        EchoOff echoOff;
        auto line = readLine();
        std::cerr << '\n';
        return line;
    }
    return readLine();
}
