#pragma once

#include <string>
#include <string_view>

// A file written so that its destination only ever holds the old file or the complete new one.
// The bytes go to an unnamed file in the destination's folder (O_TMPFILE), which is given a name
// and renamed over the destination once written and synced: a converter that is killed leaves
// nothing behind. On file systems without unnamed files a hidden temporary name is used instead,
// removed again on any failure short of being killed. Errors are std::system_error.
class AtomicFile {
public:
    explicit AtomicFile(std::string destination);
    ~AtomicFile();

    AtomicFile(const AtomicFile &) = delete;
    AtomicFile &operator=(const AtomicFile &) = delete;

    void write(std::string_view bytes);
    void commit();

    // The prefix of the hidden names this writer gives its files, e.g. ".wpd2odt-".
    static void setHiddenPrefix(std::string prefix);

private:
    [[noreturn]] void fail(int error);
    void discard();
    std::string freshName() const;

    std::string destination;
    std::string folder;
    std::string named; // the temporary name, when the file has one
    int fd = -1;
};
