#include "richtext/HtmlReader.h"
#include "richtext/ReadError.h"
#include "richtext/RtfWriter.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// Arbitrary markup through the HTML reader into the RTF writer: a ReadError
// for nothing to read, a best-effort document for the rest, never a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    richtext::RtfWriter writer;
    try {
        richtext::HtmlReader::read(std::string_view(reinterpret_cast<const char *>(data), size), writer);
    } catch (const richtext::ReadError &) {
    }
    return 0;
}
