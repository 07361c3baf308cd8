#include "ZipArchive.h"

#include "ReadError.h"

#include <zip.h>

namespace richtext {
namespace {

std::string sizeInWords(std::size_t bytes)
{
    if (bytes >= (1u << 20))
        return std::to_string(bytes >> 20) + " MB";
    return std::to_string(bytes) + " bytes";
}

} // namespace

ZipArchive::ZipArchive(std::string_view bytes, InflateLimits limits) : data(bytes), limits(limits)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source = zip_source_buffer_create(data.data(), data.size(), 0, &error);
    if (source)
        archive = zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &error);
    if (!archive) {
        if (source)
            zip_source_free(source);
        const std::string reason = zip_error_strerror(&error);
        zip_error_fini(&error);
        throw ReadError("The document is not a readable zip package (" + reason + ").");
    }
    zip_error_fini(&error);
}

ZipArchive::~ZipArchive()
{
    if (archive)
        zip_discard(archive);
}

bool ZipArchive::contains(const std::string &name) const
{
    return zip_name_locate(archive, name.c_str(), 0) >= 0;
}

std::optional<std::string> ZipArchive::read(const std::string &name)
{
    const zip_int64_t index = zip_name_locate(archive, name.c_str(), 0);
    if (index < 0)
        return std::nullopt;
    const std::size_t allowed =
        std::min(limits.entryBytes, limits.totalBytes - std::min(inflated, limits.totalBytes));
    const std::string tooLarge = "The package entry " + name + " unpacks to more than " +
                                 sizeInWords(allowed) + ", so I did not unpack it.";
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat_index(archive, static_cast<zip_uint64_t>(index), 0, &stat) == 0 &&
        (stat.valid & ZIP_STAT_SIZE) && stat.size > allowed)
        throw ReadError(tooLarge);

    std::unique_ptr<zip_file_t, int (*)(zip_file_t *)> file(
        zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0), zip_fclose);
    if (!file)
        throw ReadError("The package entry " + name + " cannot be opened (" + zip_strerror(archive) + ").");
    // The stated size may lie: count what actually comes out.
    std::string bytes;
    char chunk[65536];
    for (;;) {
        const zip_int64_t count = zip_fread(file.get(), chunk, sizeof chunk);
        if (count < 0)
            throw ReadError("The package entry " + name + " is damaged (" + zip_file_strerror(file.get()) +
                            ").");
        if (count == 0)
            break;
        if (bytes.size() + static_cast<std::size_t>(count) > allowed)
            throw ReadError(tooLarge);
        bytes.append(chunk, static_cast<std::size_t>(count));
    }
    inflated += bytes.size();
    return bytes;
}

} // namespace richtext
