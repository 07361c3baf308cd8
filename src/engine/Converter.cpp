#include "Converter.h"

#include "Background.h"
#include "ClassicRTF.h"
#include "DocumentSteps.h"
#include "GraphicSteps.h"
#include "WordPerfectSteps.h"
#include "render/SVGRasterizer.h"
#include "support/ConversionError.h"
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
        SVGRasterizer::setDrawer(steps::drawPNG);
        QThreadPool *pool = QThreadPool::globalInstance();
        pool->setMaxThreadCount(std::max(4, 2 * QThread::idealThreadCount()));
    });
}

} // namespace detail

namespace {

using detail::background;
using detail::Result;

// The main-thread step of the jobs whose background step is all their work.
std::function<void(Result<Losses>)> finish(Completion completion)
{
    return [completion = std::move(completion)](const Result<Losses> &result) {
        if (const auto *error = std::get_if<std::exception_ptr>(&result))
            return completion(*error, {});
        completion(nullptr, std::get<Losses>(result));
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
void rasterize(const steps::Drawing &drawing, const fs::path &to, const Completion &completion)
{
    SVGRasterizer::create()->renderPNG(
        drawing.svg, [to, completion, losses = drawing.losses](const SVGRasterizer::Result &png) {
            if (const auto *error = std::get_if<std::exception_ptr>(&png)) {
                try {
                    std::rethrow_exception(*error);
                } catch (const SVGRasterizer::Failure &failure) {
                    return completion(
                        std::make_exception_ptr(ConversionError::conversionFailed(failure.what())), {});
                } catch (...) {
                    return completion(*error, {});
                }
            }
            const Outcome written = writeCatching(to, std::get<std::string>(png));
            completion(written, written ? Losses() : losses);
        });
}

// A graphic's SVG made on a worker, then `use` on the main thread.
void withDrawing(const fs::path &source, Completion completion,
                 std::function<void(const steps::Drawing &, const Completion &)> use)
{
    background<steps::Drawing>(
        [source] { return steps::svgBytes(source); },
        [completion = std::move(completion), use = std::move(use)](const Result<steps::Drawing> &drawing) {
            if (const auto *error = std::get_if<std::exception_ptr>(&drawing))
                return completion(*error, {});
            use(std::get<steps::Drawing>(drawing), completion);
        });
}

struct Dispatch {
    const fs::path &to;
    Completion &completion;

    void operator()(const JobCase::wpToODT &job)
    {
        background<Losses>([job, to = to] { return steps::writeODTPackage(job.source, job.password, to); },
                           finish(std::move(completion)));
    }

    void operator()(const JobCase::wpToRTF &job)
    {
        background<Decoded>(
            [source = job.source, password = job.password] { return steps::documentBytes(source, password); },
            [charset = job.charset, to = to,
             completion = std::move(completion)](const Result<Decoded> &decoded) {
                if (const auto *error = std::get_if<std::exception_ptr>(&decoded))
                    return completion(*error, {});
                Losses losses;
                try {
                    losses = steps::writeClassicRTF(std::get<Decoded>(decoded), charset, to);
                } catch (...) {
                    return completion(std::current_exception(), {});
                }
                completion(nullptr, losses);
            });
    }

    void operator()(const JobCase::wpgToPNG &job)
    {
        withDrawing(job.source, std::move(completion),
                    [to = to](const steps::Drawing &drawing, const Completion &done) {
                        rasterize(drawing, to, done);
                    });
    }

    void operator()(const JobCase::wpgToSVG &job)
    {
        withDrawing(job.source, std::move(completion),
                    [to = to](const steps::Drawing &drawing, const Completion &done) {
                        const Outcome written = writeCatching(to, drawing.svg);
                        done(written, written ? Losses() : drawing.losses);
                    });
    }

    void operator()(const JobCase::odtToWP &job)
    {
        background<Losses>([job, to = to] { return steps::generateWP(job.source, job.target, to); },
                           finish(std::move(completion)));
    }

    void operator()(const JobCase::officeToWP &job)
    {
        background<Losses>([job, to = to] { return steps::officeToWP(job.source, job.target, to); },
                           finish(std::move(completion)));
    }
};

} // namespace

void perform(const Job &job, const fs::path &to, Completion completion)
{
    std::visit(Dispatch{to, completion}, job);
}

} // namespace Converter
