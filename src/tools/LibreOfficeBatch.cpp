#include "LibreOfficeBatch.h"

#include "OfficeImport.h"
#include "ProcessGroup.h"
#include "support/ConversionError.h"
#include "support/Log.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QStringDecoder>
#include <QUrl>
#include <QUuid>

#include <algorithm>
#include <fstream>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace ConversionTools {
namespace {

fs::path makeFolder(const fs::path &parent)
{
    const std::string uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    const fs::path folder = parent / ("quillmorph-" + uuid);
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw PlatformError(error.message());
    return folder;
}

std::string fileURL(const fs::path &path)
{
    return QUrl::fromLocalFile(QString::fromStdString(path.string())).toString().toStdString();
}

std::string stemOf(const fs::path &input)
{
    std::string stem = input.filename().string();
    if (const auto dot = stem.rfind('.'); dot != std::string::npos && dot > 0)
        stem.erase(dot);
    return stem;
}

std::string wordsOf(const std::string &stderrBytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text =
        decoder.decode(QByteArrayView(stderrBytes.data(), static_cast<qsizetype>(stderrBytes.size())));
    return decoder.hasError() ? std::string("LibreOffice produced no output") : text.toStdString();
}

bool fileThere(const fs::path &path)
{
    std::error_code error;
    return fs::exists(path, error);
}

std::exception_ptr stoppedError()
{
    return std::make_exception_ptr(ConversionError::officeToolFailed(
        "The conversion was stopped before LibreOffice reached this document."));
}

} // namespace

// One LibreOffice start over a list of documents. LibreOffice works through
// its arguments in order, so a document's output is whole once a later one
// has appeared, or once LibreOffice has ended by itself.
struct LibreOfficeBatch::Run {
    std::vector<Pending> documents;
    std::vector<fs::path> outputs;
    std::vector<bool> seen;
    std::vector<bool> settled;
    int highest = -1; // the last document whose output has appeared
    Clock::time_point lastProgress = Clock::now();

    // Marks outputs that appeared since the last look; true when any did.
    bool look()
    {
        bool found = false;
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            if (!seen[i] && fileThere(outputs[i])) {
                seen[i] = true;
                highest = std::max(highest, static_cast<int>(i));
                found = true;
            }
        }
        if (found)
            lastProgress = Clock::now();
        return found;
    }
};

LibreOfficeBatch::LibreOfficeBatch(Options options) : options(std::move(options))
{
    const fs::path parent =
        this->options.workRoot.empty() ? fs::path(QDir::tempPath().toStdString()) : this->options.workRoot;
    root = makeFolder(parent);
    for (int i = 0; i < std::max(1, this->options.workers); ++i)
        workers.emplace_back([this, i] { work(i); });
}

LibreOfficeBatch::~LibreOfficeBatch()
{
    {
        std::lock_guard lock(mutex);
        stopping = true;
    }
    wake.notify_all();
    for (auto &worker : workers)
        worker.join();
    for (auto &document : queue)
        finish(document, stoppedError());
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

void LibreOfficeBatch::submit(const fs::path &input, Completion completion)
{
    {
        std::lock_guard lock(mutex);
        queue.push_back(Pending{input, std::move(completion)});
    }
    wake.notify_one();
}

std::future<fs::path> LibreOfficeBatch::submit(const fs::path &input)
{
    auto promise = std::make_shared<std::promise<fs::path>>();
    submit(input, [promise](Result result) {
        if (const auto *error = std::get_if<std::exception_ptr>(&result))
            promise->set_exception(*error);
        else
            promise->set_value(std::get<fs::path>(result));
    });
    return promise->get_future();
}

LibreOfficeBatch::Counts LibreOfficeBatch::counts() const
{
    std::lock_guard lock(mutex);
    return tally;
}

void LibreOfficeBatch::work(int worker)
{
    for (auto documents = take(); !documents.empty(); documents = take())
        convert(worker, std::move(documents));
}

std::vector<LibreOfficeBatch::Pending> LibreOfficeBatch::take()
{
    std::unique_lock lock(mutex);
    while (true) {
        wake.wait(lock, [this] { return stopping || !queue.empty(); });
        if (stopping)
            return {};
        // Documents often arrive one by one: a moment's wait fills the start.
        wake.wait_for(lock, options.gatherDelay,
                      [this] { return stopping || queue.size() >= options.documentsPerStart; });
        if (stopping)
            return {};
        if (!queue.empty())
            break;
    }
    // Shared with every worker, busy or not: a worker that took the whole
    // queue while another was busy would leave that one, once done, only the
    // few documents that arrive next, and a start for each few.
    const auto workerCount = static_cast<std::size_t>(std::max(1, options.workers));
    const std::size_t share = (queue.size() + workerCount - 1) / workerCount;
    const std::size_t count =
        std::clamp<std::size_t>(share, 1, std::max<std::size_t>(1, options.documentsPerStart));
    std::vector<Pending> taken;
    for (std::size_t i = 0; i < count && !queue.empty(); ++i) {
        taken.push_back(std::move(queue.front()));
        queue.pop_front();
    }
    return taken;
}

void LibreOfficeBatch::finish(Pending &document, Result result)
{
    {
        std::lock_guard lock(mutex);
        if (std::holds_alternative<fs::path>(result))
            ++tally.converted;
        else
            ++tally.failed;
    }
    document.completion(std::move(result));
}

void LibreOfficeBatch::convert(int worker, std::vector<Pending> documents)
{
    const fs::path workerFolder = root / ("worker-" + std::to_string(worker));
    const fs::path profile = workerFolder / "profile";
    fs::path folder;
    try {
        folder = makeFolder(workerFolder);
        fs::create_directories(folder / "in");
        fs::create_directories(folder / "out");
    } catch (const std::exception &error) {
        for (auto &document : documents)
            finish(document, std::make_exception_ptr(PlatformError(error.what())));
        return;
    }
    const fs::path in = folder / "in";
    const fs::path out = folder / "out";

    // Numbered links stand for the inputs: two documents named alike in
    // different folders would otherwise write the same output.
    Run run;
    std::vector<std::string> args{"-env:UserInstallation=" + fileURL(profile),
                                  "--headless",
                                  "--convert-to",
                                  "odt",
                                  "--outdir",
                                  out.string()};
    for (std::size_t i = 0; i < documents.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        const fs::path link = in / (number + documents[i].input.extension().string());
        std::error_code error;
        if (const auto text = legacyTextInUtf8(documents[i].input)) {
            std::ofstream copy(link, std::ios::binary);
            copy << *text;
        } else {
            fs::create_symlink(fs::absolute(documents[i].input), link, error);
        }
        args.push_back(link.string());
        run.outputs.push_back(out / (number + ".odt"));
    }
    run.documents = std::move(documents);
    run.seen.assign(run.documents.size(), false);
    run.settled.assign(run.documents.size(), false);

    const auto settle = [&](std::size_t i, Result result) {
        run.settled[i] = true;
        finish(run.documents[i], std::move(result));
    };
    const auto deliver = [&](std::size_t i) {
        try {
            const fs::path odt = makeFolder(root.parent_path()) / (stemOf(run.documents[i].input) + ".odt");
            fs::rename(run.outputs[i], odt);
            settle(i, odt);
        } catch (const fs::filesystem_error &error) {
            settle(i, std::make_exception_ptr(PlatformError(error.code().message())));
        } catch (...) {
            settle(i, std::current_exception());
        }
    };
    const auto deliverBefore = [&](int end) {
        for (int i = 0; i < end; ++i) {
            if (run.seen[static_cast<std::size_t>(i)] && !run.settled[static_cast<std::size_t>(i)])
                deliver(static_cast<std::size_t>(i));
        }
    };

    const auto shouldKill = [&] {
        {
            std::lock_guard lock(mutex);
            if (stopping)
                return true;
        }
        if (run.look())
            deliverBefore(run.highest);
        const auto allowance =
            options.documentTimeout + (run.highest < 0 ? options.startAllowance : Clock::duration());
        return Clock::now() - run.lastProgress > allowance;
    };
    {
        std::lock_guard lock(mutex);
        ++tally.starts;
    }
    GroupOutcome outcome;
    try {
        outcome = runAsGroup(options.soffice, args, "soffice", shouldKill);
    } catch (...) {
        for (std::size_t i = 0; i < run.documents.size(); ++i)
            settle(i, std::current_exception());
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        return;
    }
    run.look();
    bool stopped;
    {
        std::lock_guard lock(mutex);
        stopped = stopping;
        if (outcome.killed && !stopped)
            ++tally.hung;
    }
    const bool endedByItself = !outcome.killed && !outcome.signalled;
    deliverBefore(endedByItself ? static_cast<int>(run.documents.size()) : run.highest);

    // Beyond the first document without a whole output, an interrupted
    // LibreOffice never tried the rest: they go on together. The ones it
    // tried and failed, and the one it stopped on, are tried alone.
    const std::size_t frontier =
        endedByItself ? run.documents.size() : static_cast<std::size_t>(run.highest + 1);
    std::vector<Pending> untried;
    std::vector<Pending> suspects;
    for (std::size_t i = 0; i < run.documents.size(); ++i) {
        if (run.settled[i])
            continue;
        if (stopped)
            settle(i, stoppedError());
        else if (run.documents.size() == 1)
            settle(i,
                   std::make_exception_ptr(ConversionError::officeToolFailed(
                       outcome.killed ? "LibreOffice stopped making progress on this document and was ended."
                                      : wordsOf(outcome.stderr))));
        else if (i <= frontier)
            suspects.push_back(std::move(run.documents[i]));
        else
            untried.push_back(std::move(run.documents[i]));
    }
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    if (!endedByItself) {
        // A killed LibreOffice leaves its lock and recovery state in the profile.
        fs::remove_all(profile, ignored);
    }
    if (stopped)
        return;
    if (!suspects.empty()) {
        std::lock_guard lock(mutex);
        tally.retriedAlone += suspects.size();
    }
    for (auto &suspect : suspects) {
        Log::write("soffice: trying " + suspect.input.string() + " alone");
        std::vector<Pending> one;
        one.push_back(std::move(suspect));
        convert(worker, std::move(one));
    }
    if (!untried.empty())
        convert(worker, std::move(untried));
}

} // namespace ConversionTools
