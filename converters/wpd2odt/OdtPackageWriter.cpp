#include "OdtPackageWriter.h"

#include "OdfXmlWriter.h"

#include <zip.h>

#include <memory>
#include <stdexcept>

namespace {

const char *const odtMediaType = "application/vnd.oasis.opendocument.text";

struct SourceRelease {
    void operator()(zip_source_t *source) const { zip_source_free(source); }
};
struct ArchiveDiscard {
    void operator()(zip_t *archive) const { zip_discard(archive); }
};
using SourcePointer = std::unique_ptr<zip_source_t, SourceRelease>;
using ArchivePointer = std::unique_ptr<zip_t, ArchiveDiscard>;

[[noreturn]] void fail(const std::string &what, zip_error_t *error)
{
    throw std::runtime_error("cannot build the package: " + what + ": " + zip_error_strerror(error));
}

void addEntry(zip_t *archive, const std::string &path, const std::string &data, bool compress)
{
    zip_source_t *source = zip_source_buffer(archive, data.data(), data.size(), 0);
    if (!source)
        fail(path, zip_get_error(archive));
    const zip_int64_t index = zip_file_add(archive, path.c_str(), source, 0);
    if (index < 0) {
        zip_source_free(source);
        fail(path, zip_get_error(archive));
    }
    if (zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                 compress ? ZIP_CM_DEFLATE : ZIP_CM_STORE, 0) != 0)
        fail(path, zip_get_error(archive));
}

std::string readAll(zip_source_t *source)
{
    zip_error_t *error = zip_source_error(source);
    if (zip_source_open(source) != 0)
        fail("reading back", error);
    std::string bytes;
    char buffer[65536];
    zip_int64_t count = 0;
    while ((count = zip_source_read(source, buffer, sizeof buffer)) > 0)
        bytes.append(buffer, static_cast<size_t>(count));
    zip_source_close(source);
    if (count < 0)
        fail("reading back", error);
    return bytes;
}

} // namespace

void OdtPackageWriter::add(std::string path, std::string mediaType, std::string data)
{
    entries.push_back({std::move(path), std::move(mediaType), std::move(data)});
}

std::string OdtPackageWriter::manifest() const
{
    // ODF 1.1, like the documents libodfgen 0.1 writes: its manifest has no version attributes.
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">\n"
        " <manifest:file-entry manifest:full-path=\"/\" manifest:media-type=\"";
    xml += odtMediaType;
    xml += "\"/>\n";
    for (const Entry &entry : entries) {
        xml += " <manifest:file-entry manifest:full-path=\"";
        appendEscapedXml(xml, entry.path, true);
        xml += "\" manifest:media-type=\"";
        appendEscapedXml(xml, entry.mediaType, true);
        xml += "\"/>\n";
    }
    xml += "</manifest:manifest>\n";
    return xml;
}

std::string OdtPackageWriter::write() const
{
    zip_error_t error;
    zip_error_init(&error);
    // The archive is built in memory and written out by the caller in one go, so a failure here
    // never touches the file system.
    SourcePointer memory(zip_source_buffer_create(nullptr, 0, 0, &error));
    if (!memory)
        fail("memory buffer", &error);
    ArchivePointer archive(zip_open_from_source(memory.get(), ZIP_TRUNCATE, &error));
    if (!archive)
        fail("opening", &error);
    // The archive now owns one reference; keep ours so the bytes outlive zip_close.
    zip_source_keep(memory.get());

    const std::string mimetype = odtMediaType;
    const std::string manifestXml = manifest();
    addEntry(archive.get(), "mimetype", mimetype, false);
    addEntry(archive.get(), "META-INF/manifest.xml", manifestXml, true);
    for (const Entry &entry : entries)
        addEntry(archive.get(), entry.path, entry.data, true);

    if (zip_close(archive.get()) != 0)
        fail("writing", zip_get_error(archive.get()));
    // zip_close has freed the archive; only a failed close leaves it to be discarded.
    static_cast<void>(archive.release());
    return readAll(memory.get());
}
