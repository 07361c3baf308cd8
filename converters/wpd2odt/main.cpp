// wpd2odt: converts a WordPerfect document to OpenDocument text, either as an .odt package at
// DEST or as one flat XML document on standard output.

#include "AtomicFileWriter.h"
#include "CommandLine.h"
#include "ConverterMain.h"
#include "ConverterError.h"
#include "OdtConverter.h"
#include "WordPerfectDocument.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

namespace {

void writeToStandardOutput(const std::string &bytes)
{
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
        throw ConverterError::cannotWriteDestination("standard output", errno ? errno : EIO);
}

int run(const CommandLine &line)
{
    const WordPerfectDocument document = WordPerfectDocument::open(line.source, line.password);
    richtext::Losses losses;
    if (line.toStandardOutput) {
        // Nothing reaches standard output until the whole document is ready: a caller takes
        // empty output as failure.
        writeToStandardOutput(OdtConverter::toFlatXml(document, losses));
    } else {
        // Created before the conversion so that an unwritable destination is reported at once.
        AtomicFileWriter output(line.destination);
        output.write(OdtConverter::toPackage(document, losses));
        output.commit();
    }
    std::fputs(losses.stderrLine("wpd2odt").c_str(), stderr);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // A reader that goes away must give a write error, not kill the process without a word.
    std::signal(SIGPIPE, SIG_IGN);
    return ConverterMain::run("wpd2odt", [&] {
        CommandLine line;
        try {
            line = CommandLine::parse({argv + 1, argv + argc});
        } catch (const CommandLine::UsageError &error) {
            throw ConverterMain::UsageProblem(std::string(error.what()) + "; " + CommandLine::usage());
        }
        if (line.helpRequested) {
            std::puts(CommandLine::usage());
            return 0;
        }
        return run(line);
    });
}
