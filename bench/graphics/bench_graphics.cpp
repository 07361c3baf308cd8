#include "support/ConversionError.h"
#include "render/SVGRasterizer.h"
#include "tools/ConversionTools.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

// bench_graphics render OUTDIR FILE.wpg…  — for each graphic writes NAME.svg,
//   NAME.html (the page a web engine is given: the SVG inline at W×H pixels)
//   and NAME.png (ours), and prints "NAME W H milliseconds".
// bench_graphics compare A.png B.png — prints the mean absolute difference per
//   channel and the share of pixels whose channels all lie within ±16.

namespace fs = std::filesystem;

namespace {

void writeFile(const fs::path &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string page(const std::string &markup, int w, int h)
{
    return "<!DOCTYPE html><html><head><meta "
           "charset=\"utf-8\"><style>\nhtml,body{margin:0;padding:0;background:#fff}\n"
           "svg{width:" +
           std::to_string(w) + "px;height:" + std::to_string(h) +
           "px;display:block}\n"
           "</style></head><body>" +
           markup + "</body></html>";
}

int render(const fs::path &out, int argc, char **argv)
{
    fs::create_directories(out);
    for (int i = 3; i < argc; ++i) {
        const fs::path source = argv[i];
        const std::string name = source.stem().string();
        const std::string svg = ConversionTools::run("/usr/bin/wpg2svg", {source.string()}, "wpg2svg").stdout;
        if (svg.empty() || svg.find("<svg") == std::string::npos) {
            std::printf("%s - - no-svg\n", name.c_str());
            continue;
        }
        writeFile(out / (name + ".svg"), svg);
        auto rasterizer = SVGRasterizer::create();
        QElapsedTimer timer;
        timer.start();
        bool done = false;
        std::string png;
        rasterizer->renderPNG(svg, [&](SVGRasterizer::Result result) {
            if (auto *bytes = std::get_if<std::string>(&result))
                png = *bytes;
            done = true;
        });
        while (!done)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const double ms = timer.nsecsElapsed() / 1e6;
        const int w = static_cast<int>(rasterizer->pixelSize.width);
        const int h = static_cast<int>(rasterizer->pixelSize.height);
        writeFile(out / (name + ".html"), page(svg.substr(svg.find("<svg")), w, h));
        writeFile(out / (name + ".png"), png);
        std::printf("%s %d %d %.1f%s\n", name.c_str(), w, h, ms, png.empty() ? " failed" : "");
    }
    return 0;
}

int compare(const char *a, const char *b)
{
    const QImage first = QImage(a).convertToFormat(QImage::Format_RGB32);
    const QImage second = QImage(b).convertToFormat(QImage::Format_RGB32);
    if (first.isNull() || second.isNull() || first.size() != second.size()) {
        std::printf("size-mismatch %dx%d %dx%d\n", first.width(), first.height(), second.width(),
                    second.height());
        return 1;
    }
    double sum = 0;
    long long within = 0;
    for (int y = 0; y < first.height(); ++y) {
        const auto *p = reinterpret_cast<const QRgb *>(first.constScanLine(y));
        const auto *q = reinterpret_cast<const QRgb *>(second.constScanLine(y));
        for (int x = 0; x < first.width(); ++x) {
            const int dr = std::abs(qRed(p[x]) - qRed(q[x]));
            const int dg = std::abs(qGreen(p[x]) - qGreen(q[x]));
            const int db = std::abs(qBlue(p[x]) - qBlue(q[x]));
            sum += dr + dg + db;
            within += (dr <= 16 && dg <= 16 && db <= 16) ? 1 : 0;
        }
    }
    const double pixels = static_cast<double>(first.width()) * first.height();
    std::printf("%.3f %.3f\n", sum / (3 * pixels), 100.0 * within / pixels);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const fs::path state = fs::temp_directory_path() / "quillmorph-bench-state";
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "render" && argc > 3)
        return render(argv[2], argc, argv);
    if (mode == "compare" && argc == 4)
        return compare(argv[2], argv[3]);
    std::fprintf(stderr, "usage: bench_graphics render OUTDIR FILE.wpg... | compare A.png B.png\n");
    return 2;
}
