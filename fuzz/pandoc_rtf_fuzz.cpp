#include "tools/PandocRtf.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Any bytes behind an RTF opening: never a crash, and the document's own
// opening group always survives (only groups inside it are ever dropped).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string rtf = "{\\rtf1" + std::string(reinterpret_cast<const char *>(data), size);
    const std::string rewritten = PandocRtf::prepared(rtf);
    if (rewritten.compare(0, 6, "{\\rtf1") != 0)
        __builtin_trap();
    return 0;
}
