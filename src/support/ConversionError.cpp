#include "ConversionError.h"

namespace {

const char *caseName(ConversionError::Case kind)
{
    switch (kind) {
    case ConversionError::Case::toolMissing:
        return "toolMissing";
    case ConversionError::Case::conversionFailed:
        return "conversionFailed";
    case ConversionError::Case::officeToolFailed:
        return "officeToolFailed";
    case ConversionError::Case::wrongPassword:
        break;
    }
    return "wrongPassword";
}

} // namespace

ConversionError::ConversionError(Case kind, std::string text)
    : kind(kind), text(std::move(text)),
      spelled(kind == Case::wrongPassword ? caseName(kind)
                                          : std::string(caseName(kind)) + "(\"" + this->text + "\")")
{
}
