#include "OdtConverter.h"

#include "ConverterError.h"
#include "EmbeddedPictures.h"
#include "EvenPageHeaders.h"
#include "OdfXmlWriter.h"
#include "OdtPackageWriter.h"
#include "WordPerfect5Layout.h"
#include "WordPerfectDocument.h"
#include "WriterDefaults.h"
#include "WpgToSvg.h"

#include <libodfgen/libodfgen.hxx>

#include <utility>

namespace {

void prepare(OdtGenerator &generator)
{
    // libwpd hands every embedded WordPerfect graphic over as "image/x-wpg".
    generator.registerEmbeddedImageHandler("image/x-wpg", &WpgToSvg::convert);
}

void requireOutput(const OdfXmlWriter &writer, const WordPerfectDocument &document)
{
    // Should libwpd report success without ever starting the document, there is nothing to write.
    if (writer.xml().empty())
        throw ConverterError::damagedDocument(document.path());
}

} // namespace

std::string OdtConverter::toFlatXml(const WordPerfectDocument &document, richtext::Losses &losses)
{
    WordPerfect5Layout::Contents layout = WordPerfect5Layout::read(document.contents());
    const richtext::Losses boxLosses = layout.losses;
    WordPerfect5Layout generator(std::move(layout));
    prepare(generator);
    OdfXmlWriter writer;
    EvenPageHeaders headers(writer);
    WriterDefaults defaults(headers);
    generator.addDocumentHandler(&defaults, ODF_FLAT_XML);
    document.parse(generator);
    requireOutput(writer, document);
    losses.add(boxLosses);
    losses.add(WpgToSvg::takeLosses());
    return writer.xml();
}

std::string OdtConverter::toPackage(const WordPerfectDocument &document, richtext::Losses &losses)
{
    EmbeddedPictures pictures;
    // Headers and footers live in styles.xml, so their pictures move out of it as well.
    OdfXmlWriter content(&pictures);
    OdfXmlWriter styles(&pictures);
    OdfXmlWriter meta;
    WordPerfect5Layout::Contents layout = WordPerfect5Layout::read(document.contents());
    const richtext::Losses boxLosses = layout.losses;
    WordPerfect5Layout generator(std::move(layout));
    prepare(generator);
    generator.addDocumentHandler(&content, ODF_CONTENT_XML);
    EvenPageHeaders styleHeaders(styles);
    WriterDefaults styleDefaults(styleHeaders);
    generator.addDocumentHandler(&styleDefaults, ODF_STYLES_XML);
    generator.addDocumentHandler(&meta, ODF_META_XML);
    document.parse(generator);
    requireOutput(content, document);

    OdtPackageWriter package;
    package.add("content.xml", "text/xml", content.xml());
    package.add("styles.xml", "text/xml", styles.xml());
    package.add("meta.xml", "text/xml", meta.xml());
    package.add("settings.xml", "text/xml", WriterDefaults::settingsXml());
    // Sub-documents libodfgen keeps apart (it makes them for charts and the like).
    const librevenge::RVNGStringVector objects = generator.getObjectNames();
    for (unsigned i = 0; i < objects.size(); ++i) {
        OdfXmlWriter object(&pictures);
        if (generator.getObjectContent(objects[i], &object))
            package.add(objects[i].cstr(), "text/xml", object.xml());
    }
    for (const EmbeddedPictures::Picture &picture : pictures.pictures())
        package.add(picture.path, picture.mediaType, picture.bytes);
    losses.add(boxLosses);
    losses.add(WpgToSvg::takeLosses());
    if (pictures.unrecognised() > 0)
        losses.add(richtext::loss::unreadablePictures);
    return package.write();
}
