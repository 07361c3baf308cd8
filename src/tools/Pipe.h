#pragma once

#include "support/PlatformError.h"

#include <array>
#include <cerrno>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// A pipe whose ends close themselves, for the runners that drain a child's output.
class Pipe {
public:
    Pipe()
    {
        int fds[2];
        // Close-on-exec, so that a child started by another thread at the
        // same moment never inherits our write ends and keeps our reader waiting.
        if (::pipe2(fds, O_CLOEXEC) != 0)
            throw PlatformError::fromErrno(errno);
        read = fds[0];
        write = fds[1];
    }
    ~Pipe()
    {
        closeRead();
        closeWrite();
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    void closeRead()
    {
        if (read >= 0)
            ::close(read);
        read = -1;
    }
    void closeWrite()
    {
        if (write >= 0)
            ::close(write);
        write = -1;
    }

    int read = -1;
    int write = -1;
};

// After a poll of a child's two output pipes: appends what each ready pipe
// holds to its sink. A pipe at its end, or failing, is taken out of the poll
// (its fd set to -1) and of the `open` count.
inline void readReady(std::array<pollfd, 2> &fds, const std::array<std::string *, 2> &sinks, int &open)
{
    std::array<char, 65536> buffer;
    for (std::size_t i = 0; i < fds.size(); ++i) {
        if (fds[i].fd < 0 || fds[i].revents == 0)
            continue;
        const ssize_t got = ::read(fds[i].fd, buffer.data(), buffer.size());
        if (got > 0) {
            sinks[i]->append(buffer.data(), static_cast<std::size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            fds[i].fd = -1;
            --open;
        }
    }
}
