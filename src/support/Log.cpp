#include "Log.h"

#include "PlatformError.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/time.h>
#include <unistd.h>

namespace fs = std::filesystem;

PlatformError PlatformError::fromErrno(int error)
{
    return PlatformError(std::strerror(error));
}

namespace {

bool usable(const char *value)
{
    return value && value[0] == '/';
}

fs::path chooseLocation()
{
    // XDG_STATE_HOME and HOME are how Linux names a user's folders.
    if (const char *state = std::getenv("XDG_STATE_HOME"); usable(state))
        return fs::path(state) / "Quillmorph" / "Quillmorph.log";
    if (const char *home = std::getenv("HOME"); usable(home))
        return fs::path(home) / ".local" / "state" / "Quillmorph" / "Quillmorph.log";
    return fs::path("/tmp") / "Quillmorph.log";
}

std::string timestamp()
{
    timeval now{};
    gettimeofday(&now, nullptr);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(now.tv_usec / 1000));
    return text;
}

int openForAppend(const fs::path &file)
{
    return ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
}

} // namespace

namespace Log {

fs::path url()
{
    static const fs::path location = chooseLocation();
    return location;
}

void write(std::string_view message)
{
    std::string entry = timestamp();
    entry += "  ";
    entry += message;
    entry += '\n';

    const fs::path file = url();
    int fd = openForAppend(file);
    if (fd < 0 && errno == ENOENT) {
        std::error_code ignored;
        fs::create_directories(file.parent_path(), ignored);
        fd = openForAppend(file);
    }
    if (fd < 0)
        return;
    // One write() on an O_APPEND descriptor: concurrent entries land whole.
    const ssize_t written = ::write(fd, entry.data(), entry.size());
    (void)written;
    ::close(fd);
}

} // namespace Log
