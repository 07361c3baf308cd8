#include "OfficeImport.h"

#include "ConversionTools.h"

#include <mutex>

namespace fs = std::filesystem;

namespace ConversionTools {
namespace {

std::mutex placesMutex;
std::optional<std::vector<fs::path>> overriddenPlaces;

std::vector<fs::path> libreOfficePlaces()
{
    std::lock_guard lock(placesMutex);
    if (overriddenPlaces)
        return *overriddenPlaces;
    return {"/usr/bin/soffice", "/usr/lib/libreoffice/program/soffice"};
}

} // namespace

std::optional<fs::path> libreOfficeURL()
{
    for (const auto &place : libreOfficePlaces()) {
        if (isExecutableFile(place))
            return place;
    }
    return std::nullopt;
}

void overrideLibreOfficePlaces(std::optional<std::vector<fs::path>> places)
{
    std::lock_guard lock(placesMutex);
    overriddenPlaces = std::move(places);
}

} // namespace ConversionTools
