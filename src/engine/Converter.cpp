#include "Converter.h"

#include "Background.h"
#include "DocumentSteps.h"
#include "support/PlatformError.h"

#include <algorithm>
#include <mutex>

namespace fs = std::filesystem;

namespace Converter {
namespace detail {

void ensureWorkers()
{
    // Converters spend their time waiting on child processes, and one that
    // hangs holds its worker: keep more workers than cores so others go on.
    static std::once_flag once;
    std::call_once(once, [] {
        QThreadPool *pool = QThreadPool::globalInstance();
        pool->setMaxThreadCount(std::max(4, 2 * QThread::idealThreadCount()));
    });
}

} // namespace detail

namespace {

using detail::background;
using detail::Nothing;
using detail::Result;

// The main-thread step of the jobs whose background step is all their work.
std::function<void(Result<Nothing>)> finish(Completion completion)
{
    return [completion = std::move(completion)](const Result<Nothing> &result) {
        const auto *error = std::get_if<std::exception_ptr>(&result);
        completion(error ? *error : nullptr);
    };
}

[[noreturn]] void notYetAvailable(const char *what)
{
    throw PlatformError(std::string("Converting ") + what + " is not available in this version of Quillmorph.");
}

struct Dispatch {
    const fs::path &to;
    Completion &completion;

    void operator()(const JobCase::wpToODT &job)
    {
        background<Nothing>(
            [job, to = to] {
                steps::writeODTPackage(job.source, job.password, to);
                return Nothing {};
            },
            finish(std::move(completion)));
    }

    void operator()(const JobCase::wpToRTF &)
    {
        background<Nothing>([]() -> Nothing { notYetAvailable("WordPerfect documents to RTF"); },
                            finish(std::move(completion)));
    }

    void operator()(const JobCase::wpgToPNG &)
    {
        background<Nothing>([]() -> Nothing { notYetAvailable("WordPerfect graphics to PNG"); },
                            finish(std::move(completion)));
    }

    void operator()(const JobCase::wpgToSVG &)
    {
        background<Nothing>([]() -> Nothing { notYetAvailable("WordPerfect graphics to SVG"); },
                            finish(std::move(completion)));
    }

    void operator()(const JobCase::odtToWP &)
    {
        background<Nothing>([]() -> Nothing { notYetAvailable("to WordPerfect"); },
                            finish(std::move(completion)));
    }

    void operator()(const JobCase::officeToWP &)
    {
        background<Nothing>([]() -> Nothing { notYetAvailable("office documents to WordPerfect"); },
                            finish(std::move(completion)));
    }
};

} // namespace

void perform(const Job &job, const fs::path &to, Completion completion)
{
    std::visit(Dispatch {to, completion}, job);
}

} // namespace Converter
