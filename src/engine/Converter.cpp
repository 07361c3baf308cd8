#include "Converter.h"

#include "Background.h"
#include "ClassicRTF.h"
#include "DocumentSteps.h"
#include "GraphicSteps.h"
#include "WordPerfectSteps.h"
#include "render/SVGRasterizer.h"
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

// The destination is touched only once there is something to write.
Outcome writeCatching(const fs::path &to, const std::string &bytes)
{
    try {
        steps::writeWhole(to, bytes);
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

// On the main thread: a new rasterizer draws the SVG, then the PNG is written.
void rasterize(const std::string &svg, const fs::path &to, const Completion &completion)
{
    SVGRasterizer::create()->renderPNG(svg, [to, completion](const SVGRasterizer::Result &png) {
        if (const auto *error = std::get_if<std::exception_ptr>(&png))
            return completion(*error);
        completion(writeCatching(to, std::get<std::string>(png)));
    });
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

    void operator()(const JobCase::wpToRTF &job)
    {
        background<Decoded>(
            [source = job.source, password = job.password] { return steps::documentBytes(source, password); },
            [charset = job.charset, to = to, completion = std::move(completion)](const Result<Decoded> &decoded) {
                if (const auto *error = std::get_if<std::exception_ptr>(&decoded))
                    return completion(*error);
                Outcome outcome;
                try {
                    steps::writeClassicRTF(std::get<Decoded>(decoded), charset, to);
                } catch (...) {
                    outcome = std::current_exception();
                }
                completion(outcome);
            });
    }

    void operator()(const JobCase::wpgToPNG &job)
    {
        background<std::string>([source = job.source] { return steps::svgBytes(source); },
                                [to = to, completion = std::move(completion)](const Result<std::string> &svg) {
                                    if (const auto *error = std::get_if<std::exception_ptr>(&svg))
                                        return completion(*error);
                                    rasterize(std::get<std::string>(svg), to, completion);
                                });
    }

    void operator()(const JobCase::wpgToSVG &job)
    {
        background<std::string>([source = job.source] { return steps::svgBytes(source); },
                                [to = to, completion = std::move(completion)](const Result<std::string> &svg) {
                                    if (const auto *error = std::get_if<std::exception_ptr>(&svg))
                                        return completion(*error);
                                    completion(writeCatching(to, std::get<std::string>(svg)));
                                });
    }

    void operator()(const JobCase::odtToWP &job)
    {
        background<Nothing>(
            [job, to = to] {
                steps::generateWP(job.source, job.target, to);
                return Nothing {};
            },
            finish(std::move(completion)));
    }

    void operator()(const JobCase::officeToWP &job)
    {
        background<Nothing>(
            [job, to = to] {
                steps::officeToWP(job.source, job.target, to);
                return Nothing {};
            },
            finish(std::move(completion)));
    }
};

} // namespace

void perform(const Job &job, const fs::path &to, Completion completion)
{
    std::visit(Dispatch {to, completion}, job);
}

} // namespace Converter
