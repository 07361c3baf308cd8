#include "WordPerfectSteps.h"

#include "support/ConversionError.h"
#include "DocumentSteps.h"
#include "tools/ConversionTools.h"
#include "tools/OfficeImport.h"

namespace fs = std::filesystem;

namespace Converter::steps {
namespace {

// Removes a work folder when the step ends, however it ends.
class RemovedAtEnd {
public:
    explicit RemovedAtEnd(fs::path folder) : folder(std::move(folder)) {}
    ~RemovedAtEnd()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    RemovedAtEnd(const RemovedAtEnd &) = delete;
    RemovedAtEnd &operator=(const RemovedAtEnd &) = delete;

private:
    fs::path folder;
};

} // namespace

richtext::Losses generateWP(const fs::path &odt, WPTarget target, const fs::path &destination)
{
    removeQuietly(destination);
    const ConversionTools::Output output = ConversionTools::runBundledCapturing(
        "odt2wp5", {target == WPTarget::wp6 ? "--wp6" : "--wp5", odt.string(), destination.string()});
    std::error_code error;
    if (fs::is_regular_file(destination, error) && fs::file_size(destination, error) > 0 && !error)
        return richtext::Losses::fromStderr(output.stderr);
    removeQuietly(destination);
    throw ConversionError::conversionFailed("");
}

richtext::Losses officeToWP(const fs::path &source, WPTarget target, const fs::path &destination)
{
    const fs::path odt = ConversionTools::officeToODT(source);
    const RemovedAtEnd workFolder(odt.parent_path());
    return generateWP(odt, target, destination);
}

} // namespace Converter::steps
