// svg2png SVG WIDTH HEIGHT: draws SVG markup on a white WIDTH×HEIGHT canvas and writes the PNG
// to standard output. The application draws pictures through it so that a large drawing's
// memory, or a crash in the libraries that read the picture, stays out of its own process.

#include "ConverterError.h"
#include "ConverterMain.h"
#include "RsvgRenderer.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace {

const char usage[] = "usage: svg2png SVG WIDTH HEIGHT";

int side(const char *text)
{
    int value = 0;
    const char *end = text + std::strlen(text);
    const auto [ptr, error] = std::from_chars(text, end, value);
    if (error != std::errc() || ptr != end || value < 1 || value > 20000)
        throw ConverterMain::UsageProblem(std::string("not a size in pixels: ") + text + "; " + usage);
    return value;
}

int run(const char *path, int width, int height)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw ConverterError::unreadableSource(path, errno);
    const std::string markup((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string png;
    try {
        png = RsvgRenderer::renderPNG(markup, width, height);
    } catch (const RsvgRenderer::Failure &failure) {
        std::string why = failure.what();
        while (!why.empty() && (why.back() == '\n' || why.back() == ' '))
            why.pop_back(); // librsvg ends its messages with a line break
        throw ConverterError::failed(why);
    }
    errno = 0;
    if (std::fwrite(png.data(), 1, png.size(), stdout) != png.size() || std::fflush(stdout) != 0)
        throw ConverterError::cannotWriteDestination("standard output", errno ? errno : EIO);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    return ConverterMain::run("svg2png", [&] {
        if (argc != 4)
            throw ConverterMain::UsageProblem(usage);
        return run(argv[1], side(argv[2]), side(argv[3]));
    });
}
