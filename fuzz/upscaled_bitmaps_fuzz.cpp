#include "render/UpscaledBitmaps.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

// Reads the input front to back; zeros once it runs out.
struct Bytes {
    const std::uint8_t *data;
    std::size_t size;
    std::uint8_t next()
    {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }
    double length() { return (static_cast<int>(next()) - 64) / 8.0 * (next() % 4 == 0 ? 1000 : 1); }
};

// A valid PNG of the input's pixels, so that the geometry and the sampling
// (not the image decoders) get the fuzzer's attention.
std::string bitmapURI(Bytes &in)
{
    const int width = in.next() % 16 + 1;
    const int height = in.next() % 16 + 1;
    const bool alpha = in.next() % 2;
    GdkPixbuf *pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, alpha, 8, width, height);
    guchar *pixels = gdk_pixbuf_get_pixels(pixbuf);
    const int stride = gdk_pixbuf_get_rowstride(pixbuf);
    for (int row = 0; row < height; ++row) {
        for (int i = 0; i < width * (alpha ? 4 : 3); ++i)
            pixels[row * stride + i] = in.next();
    }
    gchar *png = nullptr;
    gsize size = 0;
    gdk_pixbuf_save_to_buffer(pixbuf, &png, &size, "png", nullptr, nullptr);
    g_object_unref(pixbuf);
    gchar *base64 = g_base64_encode(reinterpret_cast<guchar *>(png), size);
    std::string uri = std::string("data:image/png;base64,") + base64;
    g_free(base64);
    g_free(png);
    return uri;
}

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

} // namespace

// Enlarged bitmaps in arbitrary upright placements, or arbitrary markup:
// never a crash, and always markup back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Bytes in{data, size};
    const int canvasWidth = in.next() + 1;
    const int canvasHeight = in.next() + 1;
    std::string markup;
    if (in.next() % 4 == 0) {
        markup.assign(reinterpret_cast<const char *>(in.data), in.size);
    } else {
        static const char *const fits[] = {"", "none", "xMidYMid", "xMinYMin slice"};
        const std::string viewBox = number(in.length()) + " " + number(in.length()) + " " +
                                    number(in.length()) + " " + number(in.length());
        const std::string transform = "translate(" + number(in.length()) + " " + number(in.length()) +
                                      ") scale(" + number(in.length()) + " " + number(in.length()) + ")";
        const std::string fit = fits[in.next() % 4];
        const std::string box = "x=\"" + number(in.length()) + "\" y=\"" + number(in.length()) +
                                "\" width=\"" + number(in.length()) + "\" height=\"" + number(in.length()) +
                                "\"";
        markup = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" + viewBox +
                 "\" preserveAspectRatio=\"" + fit + "\"><g transform=\"" + transform + "\"><image " + box +
                 " preserveAspectRatio=\"" + fits[in.next() % 4] + "\" href=\"" + bitmapURI(in) +
                 "\"/></g></svg>";
    }
    const std::string result = UpscaledBitmaps::resample(markup, canvasWidth, canvasHeight);
    if (result.empty() && !markup.empty())
        __builtin_trap(); // markup in, markup out
    return 0;
}
