#include "WmfRenderer.h"

#include <libwmf/api.h>
#include <libwmf/gd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <mutex>

namespace WmfRenderer {
namespace {

constexpr std::size_t placeableSize = 22;
constexpr std::size_t standardHeaderSize = 18;

unsigned word(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) |
           static_cast<unsigned>(static_cast<unsigned char>(bytes[at + 1])) << 8;
}

bool isPlaceable(std::string_view bytes)
{
    return bytes.size() >= placeableSize + standardHeaderSize && bytes.starts_with("\xD7\xCD\xC6\x9A");
}

bool isStandardHeader(std::string_view bytes, std::size_t at)
{
    if (bytes.size() < at + standardHeaderSize)
        return false;
    const unsigned type = word(bytes, at);
    return (type == 1 || type == 2) && word(bytes, at + 2) == 9 &&
           (word(bytes, at + 4) == 0x100 || word(bytes, at + 4) == 0x300);
}

// The metafile as long as its header says it is, zero-padded when it is shorter.
std::string padded(std::string_view metafile)
{
    const std::size_t start = isPlaceable(metafile) ? placeableSize : 0;
    const std::size_t words = word(metafile, start + 6) | std::size_t(word(metafile, start + 8)) << 16;
    std::string bytes(metafile);
    const std::size_t declared = start + words * 2;
    // A few bytes short is a sloppy writer; far shorter is a broken file libwmf must refuse itself.
    if (declared > bytes.size() && declared - bytes.size() <= 16)
        bytes.resize(declared, '\0');
    return bytes;
}

int appendToString(void *context, char *buffer, int length)
{
    static_cast<std::string *>(context)->append(buffer, static_cast<std::size_t>(std::max(length, 0)));
    return length;
}

// libwmf keeps font and device state that is not documented as thread-safe.
std::mutex libraryLock;

class Api {
public:
    Api()
    {
        wmfAPI_Options options{};
        options.function = wmf_gd_function;
        const unsigned long flags =
            WMF_OPT_FUNCTION | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
        if (wmf_api_create(&api, flags, &options) != wmf_E_None) {
            if (api)
                wmf_api_destroy(api);
            api = nullptr;
        }
    }
    ~Api()
    {
        if (api)
            wmf_api_destroy(api);
    }
    Api(const Api &) = delete;
    Api &operator=(const Api &) = delete;
    wmfAPI *get() const { return api; }

private:
    wmfAPI *api = nullptr;
};

bool isMetafile(std::string_view bytes)
{
    return isPlaceable(bytes) ? isStandardHeader(bytes, placeableSize) : isStandardHeader(bytes, 0);
}

} // namespace

std::optional<std::string> renderPNG(std::string_view metafile, unsigned longSide)
{
    if (!isMetafile(metafile) || longSide == 0)
        return std::nullopt;
    std::string bytes = padded(metafile);

    const std::lock_guard lock(libraryLock);
    Api api;
    if (!api.get())
        return std::nullopt;
    wmf_gd_t *device = WMF_GD_GetData(api.get());
    if (!(device->flags & WMF_GD_SUPPORTS_PNG))
        return std::nullopt;
    if (wmf_mem_open(api.get(), reinterpret_cast<unsigned char *>(bytes.data()),
                     static_cast<long>(bytes.size())) != wmf_E_None)
        return std::nullopt;
    wmfD_Rect box{};
    unsigned width = 0;
    unsigned height = 0;
    if (wmf_scan(api.get(), 0, &box) != wmf_E_None ||
        wmf_display_size(api.get(), &width, &height, 72, 72) != wmf_E_None || width == 0 || height == 0)
        return std::nullopt;

    const double scale = static_cast<double>(longSide) / std::max(width, height);
    device->type = wmf_gd_png;
    device->bbox = box;
    device->width = std::max(1u, static_cast<unsigned>(std::lround(width * scale)));
    device->height = std::max(1u, static_cast<unsigned>(std::lround(height * scale)));
    std::string png;
    device->flags |= WMF_GD_OUTPUT_MEMORY | WMF_GD_OWN_BUFFER;
    device->sink.context = &png;
    device->sink.function = appendToString;
    if (wmf_play(api.get(), 0, &box) != wmf_E_None || !png.starts_with("\x89PNG"))
        return std::nullopt;
    return png;
}

} // namespace WmfRenderer
