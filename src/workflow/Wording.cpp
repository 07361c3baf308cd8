#include "Wording.h"

#include "support/ConversionError.h"

FailureText describeFailure(const std::exception_ptr &error, const std::string &name)
{
    try {
        std::rethrow_exception(error);
    } catch (const ConversionError &conversion) {
        switch (conversion.which()) {
        case ConversionError::Case::toolMissing:
            return {"A required conversion tool is missing.",
                    "\u201C" + conversion.payload() + "\u201D could not be found among Quillmorph\u2019s converters."};
        case ConversionError::Case::conversionFailed:
            return {"I was unable to convert " + name + ".",
                    "It may be a file type that the conversion software cannot read."};
        case ConversionError::Case::officeToolFailed:
            return {"I was unable to read " + name + ".", conversion.payload().empty()
                                                              ? "The document converter could not open it."
                                                              : conversion.payload()};
        case ConversionError::Case::wrongPassword: break;
        }
        return {"Incorrect password.", name + " could not be decrypted."};
    } catch (const std::exception &other) {
        return {"I could not convert " + name + ".", other.what()};
    } catch (...) {
        return {"I could not convert " + name + ".", "An unexpected error occurred."};
    }
}
