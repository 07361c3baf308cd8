#include "GraphicSteps.h"

#include "support/ConversionError.h"
#include "DocumentSteps.h"
#include "support/PlatformError.h"
#include "render/RsvgRenderer.h"
#include "render/SvgImages.h"
#include "tools/ConversionTools.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace Converter::steps {

Drawing svgBytes(const std::filesystem::path &source)
{
    const std::string svg = ConversionTools::runBundled("wpg2svg", {source.string()});
    if (svg.empty())
        throw ConversionError::conversionFailed("");
    Drawing drawing;
    int undrawn = 0;
    std::ifstream file(source, std::ios::binary);
    const std::string wpg((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    drawing.svg =
        SvgImages::compressBitmaps(SvgImages::drawMetafiles(SvgImages::placeWpg1Bitmaps(svg, wpg), &undrawn));
    if (undrawn > 0)
        drawing.losses.add(richtext::loss::unreadablePictures);
    return drawing;
}

std::string drawPNG(const std::string &svg, int width, int height)
{
    const auto tool = ConversionTools::toolURL("svg2png");
    if (!tool)
        return RsvgRenderer::renderPNG(svg, width, height);
    std::string path = (std::filesystem::temp_directory_path() / "quillmorph-drawing-XXXXXX").string();
    const int fd = ::mkstemp(path.data());
    if (fd < 0)
        return RsvgRenderer::renderPNG(svg, width, height);
    std::size_t done = 0;
    while (done < svg.size()) {
        const ssize_t wrote = ::write(fd, svg.data() + done, svg.size() - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            break;
        done += static_cast<std::size_t>(wrote);
    }
    ::close(fd);
    ConversionTools::Output output;
    if (done == svg.size())
        output =
            ConversionTools::run(*tool, {path, std::to_string(width), std::to_string(height)}, "svg2png");
    removeQuietly(path);
    if (done != svg.size())
        throw RsvgRenderer::Failure("the drawing could not be handed over");
    if (output.stdout.empty())
        throw RsvgRenderer::Failure(output.stderr.empty() ? "svg2png drew nothing" : output.stderr);
    return std::move(output.stdout);
}

void writeWhole(const std::filesystem::path &destination, const std::string &bytes)
{
    removeQuietly(destination);
    const int fd = ::open(destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        throw PlatformError::fromErrno(errno);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t wrote = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0) {
            const int error = wrote < 0 ? errno : ENOSPC;
            ::close(fd);
            removeQuietly(destination); // a half-written picture is worse than none
            throw PlatformError::fromErrno(error);
        }
        done += static_cast<std::size_t>(wrote);
    }
    if (::close(fd) != 0) {
        const int error = errno;
        removeQuietly(destination);
        throw PlatformError::fromErrno(error);
    }
}

} // namespace Converter::steps
