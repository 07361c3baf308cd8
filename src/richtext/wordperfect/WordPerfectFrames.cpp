// The document's metadata and its pictures: what the WordPerfect writers take from outside the
// text flow.

#include "WordPerfectWriter.h"
#include "richtext/Base64.h"

#include "Properties.h"
#include "WpgImage.h"

#include <cmath>

namespace richtext::wordperfect {

using librevenge::RVNGPropertyList;

void WordPerfectWriter::setDocumentMetaData(const RVNGPropertyList &propList)
{
    DocumentSummary &summary = documentSummary;
    summary.title = textOf(propList, "dc:title");
    summary.author = textOf(propList, "meta:initial-creator");
    if (summary.author.empty())
        summary.author = textOf(propList, "dc:creator");
    summary.subject = textOf(propList, "dc:subject");
    summary.description = textOf(propList, "dc:description");
    summary.keywords = textOf(propList, "meta:keyword");
    if (summary.keywords.empty())
        summary.keywords = textOf(propList, "meta:keywords");
}

void WordPerfectWriter::openFrame(const RVNGPropertyList &propList)
{
    const auto width = inchesOf(propList, "svg:width");
    const auto height = inchesOf(propList, "svg:height");
    // A frame that gives only its width grows with its text: height 0.
    if (width && *width > 0)
        frameSize = std::make_pair(*width, height && *height > 0 ? *height : 0.0);
    else
        frameSize.reset();
    // A frame anchored to its paragraph or page keeps its offset; one in the line is a character.
    framePlacement = BoxPlacement();
    const std::string anchor = textOf(propList, "text:anchor-type");
    const std::string horizontal = textOf(propList, "style:horizontal-pos");
    const std::string horizontalTo = textOf(propList, "style:horizontal-rel");
    const std::string verticalTo = textOf(propList, "style:vertical-rel");
    const int textWidth = pageSetup().width - pageSetup().left - pageSetup().right;
    const int boxWidth = frameSize ? wpu(frameSize->first) : 0;
    // No reader takes a box's wrap from the file, and text runs beside a placed box: one nearly as
    // wide as the text (a floating table, a banner) stands in its own line instead.
    const bool narrow = boxWidth > 0 && boxWidth * 5 < textWidth * 3;
    // A frame in its paragraph that lets no text beside it (wrap none): the text goes below it.
    frameAlone = textOf(propList, "style:wrap") == "none" && (anchor == "paragraph" || anchor == "char");
    if ((anchor == "paragraph" || anchor == "char" || anchor == "page") && narrow && !frameAlone) {
        BoxPlacement &at = framePlacement;
        const bool page = anchor == "page";
        at.anchor = page ? BoxPlacement::Anchor::page : BoxPlacement::Anchor::paragraph;
        at.x = wpu(inchesOf(propList, "svg:x").value_or(0));
        at.y = wpu(inchesOf(propList, "svg:y").value_or(0));
        const bool fromPaper = horizontalTo == "page" || horizontalTo == "page-start-margin";
        if (horizontal == "center") {
            at.centred = true;
        } else if (horizontal == "right" || horizontal == "outside") {
            at.x = std::max(0, textWidth - boxWidth) + (page ? pageSetup().left : 0);
        } else if (horizontal == "left" || horizontal == "inside") {
            at.x = page ? pageSetup().left : 0;
        } else if (page && !fromPaper) {
            at.x += pageSetup().left;
        } else if (!page && fromPaper) {
            at.x -= pageSetup().left;
        }
        if (page && verticalTo != "page")
            at.y += pageSetup().top;
    } else if (anchor == "paragraph" || anchor == "char") {
        // Measured from the paragraph, or from the page when the paragraph opens the page.
        const int y = wpu(inchesOf(propList, "svg:y").value_or(0));
        const bool fromPage = paragraphOpensPage && streams.size() == 1;
        if (verticalTo.empty() || verticalTo == "paragraph" || verticalTo == "paragraph-content" ||
            (fromPage && verticalTo == "page-content"))
            framePlacement.drop = std::max(0, y);
        else if (fromPage && verticalTo == "page")
            framePlacement.drop = std::max(0, y - pageSetup().top);
    }
    // A box in its own line centred across the text: its content may stand there too.
    if (framePlacement.anchor == BoxPlacement::Anchor::character && anchor != "as-char")
        framePlacement.centred = horizontal == "center";
    // A picture centred on its own line (anchored to its paragraph, not standing in the text). One
    // small enough for the paragraph's words to run beside it leaves them where they stand: centring
    // them would move the whole paragraph for a mark.
    frameCentred = horizontal == "center" && anchor != "as-char" && (frameAlone || boxWidth * 4 >= textWidth);
}

void WordPerfectWriter::closeFrame()
{
    frameSize.reset();
    frameCentred = false;
    frameAlone = false;
    framePlacement = BoxPlacement();
}

void WordPerfectWriter::insertBinaryObject(const RVNGPropertyList &propList)
{
    if (hidden)
        return;
    const librevenge::RVNGProperty *data = propList["office:binary-data"];
    std::optional<Raster> raster;
    bool readable = false; // in a format of its own, not a damaged one of ours
    if (data) {
        // Damaged base64 is no picture; librevenge's own decoder would throw.
        const librevenge::RVNGBinaryData bytes = richtext::decodeBase64(data->getStr().cstr());
        if (bytes.getDataBuffer()) {
            const std::string_view picture(reinterpret_cast<const char *>(bytes.getDataBuffer()),
                                           bytes.size());
            raster = decodeRaster(picture);
            readable = !isRasterFormat(picture);
        }
    }
    if (!raster) {
        // WMF, BMP and the like: WordPerfect Graphics holds no such data.
        lose(readable ? loss::pictureFormats : loss::unreadablePictures);
        return;
    }
    // Without a frame size the picture keeps its own size.
    const bool sized = frameSize && frameSize->second > 0;
    const double width = sized ? frameSize->first : raster->width / raster->pixelsPerInch;
    const double height = sized ? frameSize->second : raster->height / raster->pixelsPerInch;
    // WordPerfect's box sits in the line like a character: a centred picture that opens its paragraph
    // centres the paragraph instead.
    Stream &stream = streams.back();
    if (frameCentred && !stream.paragraphContent && stream.paragraph.justification != 2) {
        ParagraphFormat centred = stream.paragraph;
        centred.justification = 2;
        writeParagraphFormat(stream.paragraph, centred);
        stream.paragraph = centred;
    }
    text(U"");
    // A picture placed beside the text stands where it was, as a text box does, where libwpd reads
    // such a box.
    if (writesTextBoxes() && boxDepth == 0 && !inSubDocument() &&
        framePlacement.anchor != BoxPlacement::Anchor::character)
        placement = framePlacement;
    writeImage(*raster, std::max(1, wpu(width)), std::max(1, wpu(height)));
    placement = BoxPlacement();
    if (frameAlone)
        streams.back().lineAfterPicture = true;
    streams.back().lineHeights += std::max(1, wpu(height)); // a header's height, for the room below it
}

} // namespace richtext::wordperfect
