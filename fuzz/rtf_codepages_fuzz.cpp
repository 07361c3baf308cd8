#include "tools/RtfCodePages.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Any bytes, mostly RTF-looking: never a crash, and text only ever grows
// (an escape is replaced by a longer one, or kept).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string rtf = "{\\rtf1" + std::string(reinterpret_cast<const char *>(data), size);
    const std::string rewritten = RtfCodePages::unicodeEscaped(rtf);
    if (rewritten.size() < rtf.size() - 2)
        __builtin_trap();
    return 0;
}
