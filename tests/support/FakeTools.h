#pragma once

#include "TestSupport.h"
#include "tools/ConversionTools.h"

#include <filesystem>
#include <string>

// A program folder whose Resources/Files holds shell scripts standing in for
// the converters, installed as the place where tools are looked up.
class FakeTools {
public:
    FakeTools() { ConversionTools::overrideProgramFolder(dir.path()); }
    ~FakeTools() { ConversionTools::overrideProgramFolder({}); }
    FakeTools(const FakeTools &) = delete;
    FakeTools &operator=(const FakeTools &) = delete;

    // The script records its arguments, one run per line, in <name>.args.
    void add(const std::string &name, const std::string &body)
    {
        testing_support::writeScript(folder() / name,
                                     "echo \"$*\" >> \"" + argsFile(name).string() + "\"\n" + body);
    }
    std::filesystem::path folder() const { return dir.path() / "Resources" / "Files"; }
    std::filesystem::path argsFile(const std::string &name) const { return dir.path() / (name + ".args"); }
    std::string argsOf(const std::string &name) const { return testing_support::readFile(argsFile(name)); }
    std::filesystem::path work(const std::string &name) const { return dir.path() / name; }

private:
    testing_support::TempDir dir;
};
