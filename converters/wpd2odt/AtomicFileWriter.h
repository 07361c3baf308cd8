#pragma once

#include "AtomicFile.h"

#include <optional>
#include <string>
#include <string_view>

// The shared atomic writer, with failures as wpd2odt reports them (ConverterError naming the
// destination).
class AtomicFileWriter {
public:
    // Creates the file; throws if the folder cannot take it.
    explicit AtomicFileWriter(std::string destination);

    void write(std::string_view bytes);
    void commit();

private:
    std::string destination;
    std::optional<AtomicFile> file;
};
