#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <variant>

// Draws SVG markup at about 2000 pixels on its longer side and returns PNG
// bytes. One rasterizer serves one graphic; it keeps itself alive until it
// has reported, once, on the main thread.
class SVGRasterizer : public std::enable_shared_from_this<SVGRasterizer> {
public:
    struct Size {
        double width = 0;
        double height = 0;
        bool operator==(const Size &) const = default;
    };
    // Why a drawing failed, in a fixed text ("not valid SVG", "image too large", "snapshot failed").
    struct Failure : std::runtime_error {
        using std::runtime_error::runtime_error;
    };
    // PNG bytes, or the error: a Failure.
    using Result = std::variant<std::string, std::exception_ptr>;
    using Completion = std::function<void(Result)>;

    static std::shared_ptr<SVGRasterizer> create();

    // What draws the markup on a canvas of the given size and returns PNG
    // bytes, throwing on failure; RsvgRenderer::renderPNG unless replaced.
    // Set it before the first rasterizer starts.
    using Drawer = std::function<std::string(const std::string &markup, int width, int height)>;
    static void setDrawer(Drawer drawer);

    // Returns at once. Input that is not UTF-8, has no "<svg", or would need
    // too large a bitmap is refused before this returns; otherwise the
    // drawing happens on a worker and the completion runs later on the main thread.
    void renderPNG(const std::string &svg, Completion completion);

    // The bitmap's size in pixels, whole numbers once renderPNG has sized it.
    Size pixelSize;

    // The sizing rules, in points: a usable viewBox, else width and height,
    // else a US Letter page.
    static Size naturalSize(const std::string &markup);
    // The value of the first `name="…"` anywhere in the text (double quotes only).
    static std::optional<std::string> attribute(const std::string &name, const std::string &text);
    // A length's leading number; "in" counts 72 points, every other unit is ignored.
    static std::optional<double> lengthInPoints(const std::optional<std::string> &value);
    // The natural size scaled towards 2000 pixels (by 2 to 40), rounded.
    static Size scaledToPixels(Size natural);

    // How many rasterizers are still at work.
    static std::size_t activeCount() { return active.size(); }

private:
    SVGRasterizer() = default;
    void finish(Result result);

    Completion completion;
    static std::set<std::shared_ptr<SVGRasterizer>> active; // main thread only
};
