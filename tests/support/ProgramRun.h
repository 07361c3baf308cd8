#pragma once

#include <string>
#include <vector>

// One run of a program, with everything it wrote to stdout and stderr.
struct ProgramRun {
    // Runs argv[0] (a path) with the given arguments; cwd, when not empty, is its working folder.
    static ProgramRun of(const std::vector<std::string> &argv, const std::string &cwd = {});

    int status = -1; // the exit status, or 128 + the signal that ended it
    std::string out;
    std::string err;

    // One LibreOffice run (soffice at that path) for many inputs, with a private profile in
    // profileDir: each output in outdir, named after its input; inputFilter names the import filter.
    static ProgramRun libreOffice(const std::string &soffice, const std::string &profileDir,
                                  const std::string &format, const std::vector<std::string> &inputs,
                                  const std::string &outdir, const std::string &inputFilter = {});
};
