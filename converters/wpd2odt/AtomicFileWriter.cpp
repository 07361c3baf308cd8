#include "AtomicFileWriter.h"

#include "ConverterError.h"

#include <system_error>

namespace {

template <typename Step> auto reported(const std::string &destination, Step step)
{
    try {
        return step();
    } catch (const std::system_error &error) {
        throw ConverterError::cannotWriteDestination(destination, error.code().value());
    }
}

} // namespace

AtomicFileWriter::AtomicFileWriter(std::string destinationPath) : destination(std::move(destinationPath))
{
    AtomicFile::setHiddenPrefix(".wpd2odt-");
    reported(destination, [&] { file.emplace(destination); });
}

void AtomicFileWriter::write(std::string_view bytes)
{
    reported(destination, [&] { file->write(bytes); });
}

void AtomicFileWriter::commit()
{
    reported(destination, [&] { file->commit(); });
}
