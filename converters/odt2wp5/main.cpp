// odt2wp5 --wp6|--wp5 ODT DEST: writes an OpenDocument text (.odt or flat .fodt) as a
// WordPerfect 6.1 or 5.1 document.

#include "AtomicFile.h"
#include "ConverterError.h"
#include "ConverterMain.h"
#include "richtext/Losses.h"
#include "richtext/OdtReader.h"
#include "richtext/ReadError.h"
#include "richtext/ZipArchive.h"
#include "richtext/wordperfect/WordPerfectWriter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using richtext::wordperfect::WordPerfectWriter;

const char usage[] = "usage: odt2wp5 --wp6|--wp5 ODT DEST";

std::string readWhole(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw ConverterError::failed("cannot open " + path + ": " + std::strerror(errno));
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        throw ConverterError::failed("cannot read " + path);
    return bytes;
}

// A password-protected package still lists its parts; its manifest says how they are encrypted.
bool isEncryptedPackage(const std::string &bytes)
{
    if (bytes.rfind("PK", 0) != 0)
        return false;
    try {
        richtext::ZipArchive archive(bytes, {});
        const auto manifest = archive.read("META-INF/manifest.xml");
        return manifest && manifest->find("encryption-data") != std::string::npos;
    } catch (const richtext::ReadError &) {
        return false; // the reader says what is wrong with it
    }
}

// The destination only ever holds nothing, its old content or the whole new file.
void writeAtomically(const std::string &destination, const std::string &bytes)
{
    try {
        AtomicFile::setHiddenPrefix(".odt2wp5-");
        AtomicFile file(destination);
        file.write(bytes);
        file.commit();
    } catch (const std::system_error &error) {
        throw ConverterError::failed("cannot write " + destination + ": " +
                                     std::strerror(error.code().value()));
    }
}

int run(WordPerfectWriter::Version version, const std::string &source, const std::string &destination)
{
    const std::string bytes = readWhole(source);
    if (isEncryptedPackage(bytes))
        throw ConverterError::failed(
            "the document is encrypted (password-protected); it cannot be converted");
    const auto writer = WordPerfectWriter::create(version);
    richtext::OdtReader::read(bytes, *writer);
    if (writer->fileBytes().empty())
        throw ConverterError::failed("the document produced no WordPerfect output");
    writeAtomically(destination, writer->fileBytes());
    std::fputs(writer->losses().stderrLine("odt2wp5").c_str(), stderr);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    return ConverterMain::run("odt2wp5", [&] {
        if (argc != 4)
            throw ConverterMain::UsageProblem(usage);
        const std::string option = argv[1];
        if (option != "--wp6" && option != "--wp5")
            throw ConverterMain::UsageProblem("unknown option " + option + "; " + usage);
        try {
            return run(option == "--wp6" ? WordPerfectWriter::Version::wp6 : WordPerfectWriter::Version::wp5,
                       argv[2], argv[3]);
        } catch (const richtext::ReadError &error) {
            throw ConverterError::failed(error.what());
        }
    });
}
