// wpd2odt: converts a WordPerfect document to OpenDocument text, either as an .odt package at
// DEST or as one flat XML document on standard output.

#include "AtomicFileWriter.h"
#include "CommandLine.h"
#include "ConversionError.h"
#include "OdtConverter.h"
#include "WordPerfectDocument.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

namespace {

// Every failure is exactly one line on stderr, even when a path holds a newline.
void report(std::string message)
{
    for (char &c : message) {
        if (static_cast<unsigned char>(c) < 0x20)
            c = '?';
    }
    std::fprintf(stderr, "wpd2odt: %s\n", message.c_str());
}

void writeToStandardOutput(const std::string &bytes)
{
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
        throw ConversionError::cannotWriteDestination("standard output", errno ? errno : EIO);
}

int run(const CommandLine &line)
{
    const WordPerfectDocument document = WordPerfectDocument::open(line.source, line.password);
    if (line.toStandardOutput) {
        // Nothing reaches standard output until the whole document is ready: a caller takes
        // empty output as failure.
        writeToStandardOutput(OdtConverter::toFlatXml(document));
        return 0;
    }
    // Created before the conversion so that an unwritable destination is reported at once.
    AtomicFileWriter output(line.destination);
    output.write(OdtConverter::toPackage(document));
    output.commit();
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // A reader that goes away must give a write error, not kill the process without a word.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const CommandLine line = CommandLine::parse({argv + 1, argv + argc});
        if (line.helpRequested) {
            std::puts(CommandLine::usage());
            return 0;
        }
        return run(line);
    } catch (const CommandLine::UsageError &error) {
        report(std::string(error.what()) + "; " + CommandLine::usage());
        return 2;
    } catch (const ConversionError &error) {
        report(error.what());
    } catch (const std::bad_alloc &) {
        report("out of memory");
    } catch (const std::exception &error) {
        report(std::string("conversion failed: ") + error.what());
    } catch (...) {
        report("conversion failed for an unknown reason");
    }
    return 1;
}
