#include "AtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

std::string hiddenPrefix = ".quillmorph-";

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The permissions any newly created file gets; mkstemp's are private to the owner.
mode_t ordinaryFileMode()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

void AtomicFile::setHiddenPrefix(std::string prefix)
{
    hiddenPrefix = std::move(prefix);
}

AtomicFile::AtomicFile(std::string destinationPath)
    : destination(std::move(destinationPath)), folder(folderOf(destination))
{
    fd = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    if (fd >= 0)
        return;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
        throw std::system_error(errno, std::generic_category());
    std::string pattern = (folder == "/" ? folder : folder + "/") + hiddenPrefix + "XXXXXX";
    fd = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0)
        throw std::system_error(errno, std::generic_category());
    named = pattern;
    if (::fchmod(fd, ordinaryFileMode()) != 0)
        fail(errno);
}

AtomicFile::~AtomicFile()
{
    discard();
}

void AtomicFile::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            fail(errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string AtomicFile::freshName() const
{
    static std::mt19937 random(std::random_device{}());
    static const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::string name = (folder == "/" ? folder : folder + "/") + hiddenPrefix;
    for (int i = 0; i < 10; ++i)
        name += letters[random() % (sizeof letters - 1)];
    return name;
}

void AtomicFile::commit()
{
    // Without the sync a crash soon after the rename could leave an empty file at the destination.
    if (::fsync(fd) != 0)
        fail(errno);
    if (named.empty()) {
        // An unnamed file gets its name only now, the moment before it replaces the destination.
        const std::string self = "/proc/self/fd/" + std::to_string(fd);
        for (int attempt = 0; named.empty(); ++attempt) {
            const std::string name = freshName();
            if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0 ||
                ::linkat(fd, "", AT_FDCWD, name.c_str(), AT_EMPTY_PATH) == 0)
                named = name;
            else if (errno != EEXIST || attempt > 100)
                fail(errno);
        }
    }
    const int closing = ::close(fd);
    fd = -1;
    if (closing != 0)
        fail(errno);
    if (::rename(named.c_str(), destination.c_str()) != 0)
        fail(errno);
    named.clear();
}

void AtomicFile::fail(int error)
{
    discard();
    throw std::system_error(error, std::generic_category());
}

void AtomicFile::discard()
{
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
    if (!named.empty()) {
        ::unlink(named.c_str());
        named.clear();
    }
}
