#include "ClassicRTF.h"

#include "GraphicSteps.h"
#include "render/RTFDowngrade.h"
#include "render/RsvgRenderer.h"
#include "render/SvgBitmap.h"
#include "support/PlatformError.h"

#include "richtext/HtmlReader.h"
#include "richtext/OdtReader.h"
#include "richtext/ReadError.h"
#include "richtext/RtfWriter.h"

namespace Converter::steps {
namespace {

// RTF readers take PNG but not SVG: WordPerfect graphics come out of the
// decoding as SVG and go into the RTF drawn.
std::string drawnPicture(const std::string &svg, int width, int height, richtext::Losses &losses)
{
    if (std::optional<std::string> bitmap = SvgBitmap::lone(svg))
        return std::move(*bitmap);
    try {
        return drawPNG(svg, width, height);
    } catch (const RsvgRenderer::Failure &) {
        losses.add(richtext::loss::unreadablePictures);
        return {};
    }
}

std::string modernRTF(const Decoded &decoded, richtext::Losses &losses)
{
    richtext::RtfWriter writer([&losses](const std::string &svg, int width, int height) {
        return drawnPicture(svg, width, height, losses);
    });
    try {
        if (decoded.type == Decoded::Type::html)
            richtext::HtmlReader::read(decoded.data, writer);
        else
            richtext::OdtReader::read(decoded.data, writer);
    } catch (const richtext::ReadError &error) {
        throw PlatformError(error.what());
    }
    if (writer.rtf().empty())
        throw PlatformError("The document could not be written as RTF.");
    for (const std::string &kind : writer.losses().kinds()) {
        // A picture the decoding could not read reaches the writer in its WordPerfect form, which
        // RTF cannot hold either: the same picture, said once.
        if (kind != richtext::loss::rtfPictureFormats || !losses.has(richtext::loss::unreadablePictures))
            losses.add(kind);
    }
    return writer.rtf();
}

} // namespace

RTFDowngrade::Charset downgradeCharset(RTFCharset charset)
{
    return charset == RTFCharset::mac ? RTFDowngrade::Charset::mac : RTFDowngrade::Charset::ansi;
}

richtext::Losses writeClassicRTF(const Decoded &decoded, RTFCharset charset, const std::filesystem::path &to)
{
    richtext::Losses losses = decoded.losses;
    // Nothing touches the destination until the RTF exists: a document that
    // cannot be read leaves an older file where it was.
    const std::string rtf = modernRTF(decoded, losses);
    int unmapped = 0;
    writeWhole(to, RTFDowngrade::classic(rtf, downgradeCharset(charset), &unmapped));
    // Windows ANSI loses nothing: what it has no byte for goes as a Unicode escape.
    if (unmapped > 0)
        losses.add(richtext::loss::charactersMacRoman);
    return losses;
}

} // namespace Converter::steps
