#include "Report.h"

#include "support/PlatformError.h"

#include <QCryptographicHash>
#include <QFile>

#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Report {
namespace {

constexpr char hexDigits[] = "0123456789abcdef";

// The length of the valid UTF-8 sequence at `at`, or 0 when the byte there
// does not start one (overlong forms, surrogates and values past U+10FFFF
// included). Written here because the library decoders replace bad bytes
// without saying which they were, and a report must keep a path's bytes.
std::size_t validSequence(std::string_view bytes, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80)
        return 1;
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (at + length > bytes.size())
        return 0;
    if (byte(at + 1) < low || byte(at + 1) > high)
        return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if (byte(at + i) < 0x80 || byte(at + i) > 0xBF)
            return 0;
    }
    return length;
}

void appendEscape(std::string &out, const char *prefix, unsigned char value)
{
    out += prefix;
    out += hexDigits[value >> 4];
    out += hexDigits[value & 0xF];
}

std::string number(std::int64_t value)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return std::string(digits.data(), end);
}

std::string stringOrNull(const std::optional<std::string> &text)
{
    return text ? jsonString(*text) : "null";
}

std::string stringOrNull(const std::string &text)
{
    return text.empty() ? "null" : jsonString(text);
}

// flock: another run appending to the same report never sees our repair
// half done, nor we its line.
class FileLock {
public:
    explicit FileLock(int fd) : fd(fd)
    {
        while (::flock(fd, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~FileLock() { ::flock(fd, LOCK_UN); }
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

private:
    int fd;
};

// Cuts a last line that has no newline: the rest of a line whose writer was
// killed while the system wrote it.
void dropCutLine(int fd)
{
    struct stat info {};
    if (::fstat(fd, &info) != 0 || info.st_size == 0)
        return;
    std::array<char, 4096> block;
    off_t end = info.st_size;
    bool first = true;
    while (end > 0) {
        const off_t start = std::max<off_t>(0, end - static_cast<off_t>(block.size()));
        const ssize_t got = ::pread(fd, block.data(), static_cast<std::size_t>(end - start), start);
        if (got <= 0)
            return;
        for (ssize_t i = got - 1; i >= 0; --i) {
            if (block[static_cast<std::size_t>(i)] == '\n') {
                if (!(first && i == got - 1) && ::ftruncate(fd, start + i + 1) != 0)
                    throw PlatformError::fromErrno(errno);
                return;
            }
            first = false;
        }
        end = start;
    }
    if (::ftruncate(fd, 0) != 0)
        throw PlatformError::fromErrno(errno);
}

} // namespace

const char *statusName(Status status)
{
    switch (status) {
    case Status::converted:
        return "converted";
    case Status::convertedWithLosses:
        return "converted with losses";
    case Status::failed:
        return "failed";
    case Status::skipped:
        return "skipped";
    }
    return "failed";
}

std::string jsonString(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() + 2);
    out += '"';
    for (std::size_t i = 0; i < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        const std::size_t length = validSequence(bytes, i);
        if (length == 0) {
            appendEscape(out, "\\udc", byte);
            ++i;
            continue;
        }
        if (length > 1) {
            out.append(bytes.substr(i, length));
            i += length;
            continue;
        }
        switch (byte) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (byte < 0x20)
                appendEscape(out, "\\u00", byte);
            else
                out += static_cast<char>(byte);
        }
        ++i;
    }
    out += '"';
    return out;
}

std::string line(const Entry &entry)
{
    std::string losses = "[";
    for (const auto &loss : entry.losses)
        losses += (losses.size() > 1 ? "," : "") + jsonString(loss);
    losses += "]";
    std::optional<std::string> output;
    if (entry.output)
        output = entry.output->string();
    return "{\"input\":" + jsonString(entry.input.string()) +
           ",\"size\":" + number(static_cast<std::int64_t>(entry.size)) +
           ",\"sha256\":" + stringOrNull(entry.sha256) + ",\"kind\":" + jsonString(entry.kind) +
           ",\"family\":" + jsonString(entry.family) + ",\"job\":" + stringOrNull(entry.job) +
           ",\"output\":" + stringOrNull(output) + ",\"outputSha256\":" + stringOrNull(entry.outputSha256) +
           ",\"status\":" + jsonString(statusName(entry.status)) +
           ",\"reason\":" + stringOrNull(entry.reason) + ",\"losses\":" + losses +
           ",\"milliseconds\":" + number(entry.milliseconds) + "}\n";
}

std::string sha256Of(const fs::path &file)
{
    QFile in(QString::fromStdString(file.string()));
    if (!in.open(QIODevice::ReadOnly))
        throw PlatformError(in.errorString().toStdString());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!hash.addData(&in))
        throw PlatformError(in.errorString().toStdString());
    return hash.result().toHex().toStdString();
}

Writer::Writer(const fs::path &file)
{
    fd = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
        throw PlatformError::fromErrno(errno);
    // pread needs a readable descriptor; the appending one stays write-only.
    const int reader = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    if (reader < 0) {
        const int error = errno;
        ::close(fd);
        throw PlatformError::fromErrno(error);
    }
    try {
        FileLock lock(fd);
        dropCutLine(reader);
    } catch (...) {
        ::close(reader);
        ::close(fd);
        throw;
    }
    ::close(reader);
}

Writer::~Writer()
{
    if (fd >= 0)
        ::close(fd);
}

void Writer::write(const Entry &entry)
{
    static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::string text = line(entry);
    std::lock_guard guard(mutex);
    FileLock lock(fd);
    // A process killed inside write() keeps what the system copied so far,
    // and the system copies a page at a time: a line that would cross a
    // page boundary starts on the next page instead, after blanks that JSON
    // ignores. A kill then leaves whole lines, and at most blanks after them.
    struct stat info {};
    if (::fstat(fd, &info) == 0 && text.size() <= page) {
        const std::size_t used = static_cast<std::size_t>(info.st_size) % page;
        if (used != 0 && used + text.size() > page)
            text.insert(0, page - used, ' ');
    }
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t wrote = ::write(fd, text.data() + done, text.size() - done);
        if (wrote < 0) {
            if (errno == EINTR)
                continue;
            throw PlatformError::fromErrno(errno);
        }
        done += static_cast<std::size_t>(wrote);
    }
}

} // namespace Report
