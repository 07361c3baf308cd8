#pragma once

#include "Decoded.h"
#include "render/RTFDowngrade.h"
#include "settings/Targets.h"

#include <filesystem>

namespace Converter::steps {

// The last stage of a WordPerfect -> RTF job, on the main thread: reads the
// decoded document with our rich-text library, writes it as RTF, rewrites
// that as classic RTF in `charset` and writes the file. A document that
// cannot be read, or a file that cannot be written, is a PlatformError with
// the reader's or the system's words; an older file at `to` survives a
// document that cannot be read.
// The rewrite's charset for the user's choice.
RTFDowngrade::Charset downgradeCharset(RTFCharset charset);

// Returns what the RTF could not carry, the decoding's losses included.
richtext::Losses writeClassicRTF(const Decoded &decoded, RTFCharset charset, const std::filesystem::path &to);

} // namespace Converter::steps
