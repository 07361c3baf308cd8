#include "DocumentSteps.h"

#include "support/ConversionError.h"
#include "support/Log.h"
#include "tools/ConversionTools.h"

#include <vector>

namespace fs = std::filesystem;

namespace Converter::steps {
namespace {

std::vector<std::string> passwordArguments(const std::optional<std::string> &password)
{
    if (password && !password->empty())
        return {"--password", *password};
    return {};
}

// An absent password means nothing was known to be encrypted; a present one
// that yields nothing is taken to be wrong.
[[noreturn]] void failFor(const std::optional<std::string> &password)
{
    if (password)
        throw ConversionError::wrongPassword();
    throw ConversionError::conversionFailed("");
}

ConversionTools::Output runQuietly(const std::string &tool, const std::vector<std::string> &args)
{
    try {
        return ConversionTools::runBundledCapturing(tool, args);
    } catch (...) {
        return {};
    }
}

bool isNonEmptyFile(const fs::path &path)
{
    std::error_code error;
    return fs::is_regular_file(path, error) && fs::file_size(path, error) > 0 && !error;
}

} // namespace

void removeQuietly(const fs::path &path)
{
    std::error_code ignored;
    fs::remove(path, ignored);
}

richtext::Losses writeODTPackage(const fs::path &source, const std::optional<std::string> &password,
                                 const fs::path &destination)
{
    removeQuietly(destination);
    std::vector<std::string> args = passwordArguments(password);
    args.push_back(source.string());
    args.push_back(destination.string());
    const ConversionTools::Output output = ConversionTools::runBundledCapturing("wpd2odt", args);
    if (isNonEmptyFile(destination))
        return richtext::Losses::fromStderr(output.stderr);
    removeQuietly(destination);
    failFor(password);
}

Decoded documentBytes(const fs::path &source, const std::optional<std::string> &password)
{
    const std::vector<std::string> passwordArgs = passwordArguments(password);

    std::vector<std::string> args{"--stdout"};
    args.insert(args.end(), passwordArgs.begin(), passwordArgs.end());
    args.push_back(source.string());
    if (ConversionTools::Output odt = runQuietly("wpd2odt", args); !odt.stdout.empty())
        return {std::move(odt.stdout), Decoded::Type::openDocumentText,
                richtext::Losses::fromStderr(odt.stderr)};

    Log::write("wpd2odt produced nothing; falling back to wpd2html");
    args = passwordArgs;
    args.push_back(source.string());
    if (ConversionTools::Output html = runQuietly("wpd2html", args); !html.stdout.empty())
        return {std::move(html.stdout), Decoded::Type::html, {}};
    failFor(password);
}

} // namespace Converter::steps
