#pragma once

#include "support/PlatformError.h"

#include <cerrno>

#include <fcntl.h>
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
