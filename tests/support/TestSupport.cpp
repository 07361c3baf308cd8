#include "TestSupport.h"

#include <cstring>

#include "support/Log.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace testing_support {

TempDir::TempDir()
{
    std::string pattern = (fs::temp_directory_path() / "quillmorph-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make a temporary folder");
    root = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(root, ignored);
}

void writeFile(const fs::path &path, const std::string &bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write " + path.string());
}

void writeFile(const fs::path &path, const std::vector<std::uint8_t> &bytes)
{
    writeFile(path, std::string(bytes.begin(), bytes.end()));
}

std::string readFile(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeScript(const fs::path &path, const std::string &body)
{
    fs::create_directories(path.parent_path());
    writeFile(path, "#!/bin/sh\n" + body + "\n");
    fs::permissions(path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                              fs::perms::others_read | fs::perms::others_exec);
}

std::optional<fs::path> corpusDir()
{
    const fs::path corpus = fs::path(QM_SOURCE_DIR) / ".." / "shared" / "corpus";
    std::error_code error;
    if (fs::is_directory(corpus, error))
        return fs::canonical(corpus);
    return std::nullopt;
}

bool waitUntil(const std::function<bool()> &done, double seconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < seconds * 1000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(1);
    }
    return done();
}

void usePrivateLog()
{
    char folder[] = "/tmp/quillmorph-test-log-XXXXXX";
    if (!mkdtemp(folder))
        return;
    setenv("XDG_STATE_HOME", folder, 1);
    static const fs::path made = folder;
    std::atexit([] {
        std::error_code ignored;
        fs::remove_all(made, ignored);
    });
}

LogTail::LogTail()
{
    std::error_code error;
    start = fs::file_size(Log::url(), error);
    if (error)
        start = 0;
}

std::vector<std::string> LogTail::lines() const
{
    std::ifstream in(Log::url(), std::ios::binary);
    in.seekg(static_cast<std::streamoff>(start));
    std::vector<std::string> result;
    for (std::string line; std::getline(in, line);)
        result.push_back(line);
    return result;
}

std::vector<std::string> LogTail::messagesContaining(const std::string &needle) const
{
    std::vector<std::string> found;
    for (const auto &line : lines()) {
        if (line.find(needle) != std::string::npos && line.size() > 14)
            found.push_back(line.substr(14));
    }
    return found;
}

std::string systemMessage(int error)
{
    return std::strerror(error);
}

} // namespace testing_support
