#include "render/RTFDowngrade.h"

#include <cstddef>
#include <cstdint>
#include <string>

// The classic rewriting on arbitrary text, in both character sets: a pure
// transformation that must never throw or crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string rtf(reinterpret_cast<const char *>(data), size);
    (void)RTFDowngrade::classic(rtf, RTFDowngrade::Charset::ansi);
    (void)RTFDowngrade::classic(rtf, RTFDowngrade::Charset::mac);
    return 0;
}
