#include "GraphicSteps.h"

#include "support/ConversionError.h"
#include "DocumentSteps.h"
#include "support/PlatformError.h"
#include "render/SvgImages.h"
#include "tools/ConversionTools.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Converter::steps {

Drawing svgBytes(const std::filesystem::path &source)
{
    const std::string svg = ConversionTools::runBundled("wpg2svg", {source.string()});
    if (svg.empty())
        throw ConversionError::conversionFailed("");
    Drawing drawing;
    int undrawn = 0;
    drawing.svg = SvgImages::compressBitmaps(SvgImages::drawMetafiles(svg, &undrawn));
    if (undrawn > 0)
        drawing.losses.add(richtext::loss::unreadablePictures);
    return drawing;
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
