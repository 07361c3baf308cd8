#include "TestSupport.h"

#include <cstring>

#include "support/Log.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <cstdlib>
#include <fstream>

namespace fs = std::filesystem;

namespace testing_support {

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
