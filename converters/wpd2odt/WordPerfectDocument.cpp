#include "WordPerfectDocument.h"

#include "ConverterError.h"

#include <librevenge-stream/librevenge-stream.h>
#include <libwpd/libwpd.h>

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::vector<unsigned char> readWholeFile(const std::string &path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        throw ConverterError::unreadableSource(path, errno);
    struct stat info {};
    if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        const int error = S_ISDIR(info.st_mode) ? EISDIR : errno;
        ::close(fd);
        throw ConverterError::unreadableSource(path, error);
    }
    std::vector<unsigned char> bytes;
    bytes.reserve(static_cast<size_t>(info.st_size));
    unsigned char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count == 0)
            break;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            const int error = errno;
            ::close(fd);
            throw ConverterError::unreadableSource(path, error);
        }
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
    ::close(fd);
    return bytes;
}

// The 16-byte prefix of WordPerfect 5 and later: "\xFFWPC", document pointer, product, file type
// (0x0A: document), major version (2: WordPerfect 6 to X), minor version, encryption key.
bool isEncryptedWordPerfect6(const std::vector<unsigned char> &bytes)
{
    return bytes.size() >= 16 && bytes[0] == 0xFF && bytes[1] == 'W' && bytes[2] == 'P' && bytes[3] == 'C' &&
           bytes[9] == 0x0A && bytes[10] == 0x02 && (bytes[12] != 0 || bytes[13] != 0);
}

} // namespace

WordPerfectDocument::WordPerfectDocument(std::string path, std::vector<unsigned char> bytes)
    : location(std::move(path)), bytes(std::move(bytes))
{
}

WordPerfectDocument WordPerfectDocument::open(const std::string &path,
                                              const std::optional<std::string> &password)
{
    WordPerfectDocument document(path, readWholeFile(path));
    document.checkFormat(password);
    return document;
}

void WordPerfectDocument::checkFormat(const std::optional<std::string> &givenPassword)
{
    // librevenge cannot make a stream of nothing, and nothing is no WordPerfect document; its
    // streams are also limited to 4 GiB, far beyond any real WordPerfect file.
    if (bytes.empty() || bytes.size() > std::numeric_limits<unsigned>::max())
        throw ConverterError::unsupportedFormat(location);

    librevenge::RVNGStringStream stream(bytes.data(), static_cast<unsigned>(bytes.size()));
    switch (libwpd::WPDocument::isFileFormatSupported(&stream)) {
    case libwpd::WPD_CONFIDENCE_EXCELLENT:
        return;
    case libwpd::WPD_CONFIDENCE_UNSUPPORTED_ENCRYPTION:
        throw ConverterError::unsupportedEncryption(location);
    case libwpd::WPD_CONFIDENCE_SUPPORTED_ENCRYPTION:
        if (!givenPassword)
            throw ConverterError::encryptedWithoutPassword(location);
        if (libwpd::WPDocument::verifyPassword(&stream, givenPassword->c_str()) ==
            libwpd::WPD_PASSWORD_MATCH_NONE)
            throw ConverterError::wrongPassword(location);
        password = givenPassword;
        return;
    case libwpd::WPD_CONFIDENCE_NONE:
        break;
    }
    // libwpd does not know the WordPerfect 6 cipher, and its format check gives up on such a file
    // without saying why; the prefix tells.
    if (isEncryptedWordPerfect6(bytes))
        throw ConverterError::unsupportedEncryption(location);
    throw ConverterError::unsupportedFormat(location);
}

void WordPerfectDocument::parse(librevenge::RVNGTextInterface &generator) const
{
    librevenge::RVNGStringStream stream(bytes.data(), static_cast<unsigned>(bytes.size()));
    switch (libwpd::WPDocument::parse(&stream, &generator, password ? password->c_str() : nullptr)) {
    case libwpd::WPD_OK:
        return;
    case libwpd::WPD_PASSWORD_MISSMATCH_ERROR:
        throw ConverterError::wrongPassword(location);
    case libwpd::WPD_UNSUPPORTED_ENCRYPTION_ERROR:
        throw ConverterError::unsupportedEncryption(location);
    default:
        // A read past the end (file access error), a broken OLE wrapper and a parse error all
        // mean the same to the user: the file is not whole.
        throw ConverterError::damagedDocument(location);
    }
}
