#include "AtomicFileWriter.h"

#include "ConversionError.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

std::string folderOf(const std::string &path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// mkstemp creates files readable by the owner only; the document should get the permissions any
// newly created file would.
mode_t ordinaryFileMode()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

AtomicFileWriter::AtomicFileWriter(std::string destinationPath) : destination(std::move(destinationPath))
{
    std::string folder = folderOf(destination);
    if (folder.back() != '/')
        folder += '/';
    std::vector<char> name(folder.begin(), folder.end());
    const std::string pattern = ".wpd2odt-XXXXXX";
    name.insert(name.end(), pattern.begin(), pattern.end());
    name.push_back('\0');
    fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0)
        throw ConversionError::cannotWriteDestination(destination, errno);
    temporary = name.data();
    if (::fchmod(fd, ordinaryFileMode()) != 0)
        fail(errno);
}

AtomicFileWriter::~AtomicFileWriter()
{
    discard();
}

void AtomicFileWriter::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            fail(errno);
        }
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

void AtomicFileWriter::commit()
{
    // Without the sync a crash soon after the rename could leave an empty file at the destination.
    if (::fsync(fd) != 0)
        fail(errno);
    const int closing = ::close(fd);
    fd = -1;
    if (closing != 0)
        fail(errno);
    if (::rename(temporary.c_str(), destination.c_str()) != 0)
        fail(errno);
    temporary.clear();
}

void AtomicFileWriter::fail(int error)
{
    discard();
    throw ConversionError::cannotWriteDestination(destination, error);
}

void AtomicFileWriter::discard()
{
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
    if (!temporary.empty()) {
        ::unlink(temporary.c_str());
        temporary.clear();
    }
}
