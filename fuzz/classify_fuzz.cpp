#include "classify/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The first byte picks a name, so extension decisions are fuzzed as well;
// the rest is the file's header, cut to the 512 bytes the classifier reads.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const char *const names[] = {"a.wpd", "b.WPG", "c.fodt", "d.docx", "e", "f.tar.gz", "g.", ".txt"};
    const std::string name = size > 0 ? names[data[0] % 8] : "empty";
    std::vector<std::uint8_t> header(data + (size > 0 ? 1 : 0), data + std::min<std::size_t>(size, 513));
    const InputFile file = InputFile::classifyHeader(name, header);
    if (file.kind != InputFile::Kind::wpDocument && file.kind != InputFile::Kind::wpGraphic &&
        (file.isEncrypted || file.wpVersionIsWP6))
        __builtin_trap(); // the flags belong to WordPerfect files alone
    (void)versionFamily(header);
    (void)lowercaseExtension(name);
    return 0;
}
