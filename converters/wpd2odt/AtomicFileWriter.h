#pragma once

#include <string>
#include <string_view>

// Writes a file so that its destination only ever holds the old file or the complete new one:
// the bytes go to a temporary file in the same folder, which is renamed over the destination
// once written and synced. The temporary file is removed if anything fails before that.
class AtomicFileWriter {
public:
    // Creates the temporary file; throws ConversionError if the folder cannot take it.
    explicit AtomicFileWriter(std::string destination);
    ~AtomicFileWriter();

    AtomicFileWriter(const AtomicFileWriter &) = delete;
    AtomicFileWriter &operator=(const AtomicFileWriter &) = delete;

    // Both throw ConversionError naming the destination.
    void write(std::string_view bytes);
    void commit();

private:
    [[noreturn]] void fail(int error);
    void discard();

    std::string destination;
    std::string temporary;
    int fd = -1;
};
