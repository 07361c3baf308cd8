#include "ConverterError.h"
#include "OdtConverter.h"
#include "WordPerfectDocument.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <unistd.h>

// Mutated WordPerfect files through wpd2odt's own path: libwpd's reading,
// our handling of what it emits, and the flat OpenDocument writing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // wpd2odt reads from a path; a file in shared memory keeps this fast.
    static const std::string path = "/dev/shm/quillmorph-fuzz-" + std::to_string(getpid()) + ".wpd";
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    try {
        const WordPerfectDocument document = WordPerfectDocument::open(path, std::nullopt);
        richtext::Losses losses;
        (void)OdtConverter::toFlatXml(document, losses);
    } catch (const ConverterError &) {
    }
    return 0;
}
