// odt2wp5's path: arbitrary bytes to the ODT reader (zipped or flat) and what it emits to a
// WordPerfect writer, so that the reader's parsing and the writers' handling of any callback order
// are both exercised. A ReadError is the expected answer to most inputs.

#include "richtext/OdtReader.h"
#include "richtext/ReadError.h"
#include "richtext/wordperfect/WordPerfectWriter.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// Text in SVG and StarView pictures loads fontconfig, whose caches LeakSanitizer reports as leaks at
// every check: fontconfig reaches them in ways it cannot follow.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using richtext::wordperfect::WordPerfectWriter;
    // The length picks the version, so mutations reach both writers at no extra cost per input.
    const auto writer = WordPerfectWriter::create(size % 2 ? WordPerfectWriter::Version::wp5
                                                           : WordPerfectWriter::Version::wp6);
    // Small limits keep a zip bomb from looking like a slow input.
    richtext::InflateLimits limits;
    limits.entryBytes = 8u << 20;
    limits.totalBytes = 16u << 20;
    try {
        richtext::OdtReader::read(std::string_view(reinterpret_cast<const char *>(data), size), *writer,
                                  limits);
    } catch (const richtext::ReadError &) {
    }
    return 0;
}
