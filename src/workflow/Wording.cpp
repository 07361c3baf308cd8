#include "Wording.h"

#include <cctype>
#include <vector>

#include "support/ConversionError.h"

FailureText describeFailure(const std::exception_ptr &error, const std::string &name)
{
    try {
        std::rethrow_exception(error);
    } catch (const ConversionError &conversion) {
        switch (conversion.which()) {
        case ConversionError::Case::toolMissing:
            return {"A required conversion tool is missing.",
                    "\u201C" + conversion.payload() +
                        "\u201D could not be found among Quillmorph\u2019s converters."};
        case ConversionError::Case::conversionFailed:
            return {"I was unable to convert " + name + ".",
                    "It may be a file type that the conversion software cannot read."};
        case ConversionError::Case::officeToolFailed:
            return {"I was unable to read " + name + ".", conversion.payload().empty()
                                                              ? "The document converter could not open it."
                                                              : conversion.payload()};
        case ConversionError::Case::wrongPassword:
            break;
        }
        return {"Incorrect password.", name + " could not be decrypted."};
    } catch (const std::exception &other) {
        return {"I could not convert " + name + ".", other.what()};
    } catch (...) {
        return {"I could not convert " + name + ".", "An unexpected error occurred."};
    }
}

namespace {

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string officeKind(const InputFile &file)
{
    std::vector<std::uint8_t> header;
    try {
        header = readFileHeader(file.url, 512);
    } catch (const std::exception &) {
    }
    std::string start(header.begin(), header.end());
    if (start.rfind("PK\x03\x04", 0) == 0 || start.rfind("\xD0\xCF\x11\xE0", 0) == 0)
        return "Word document";
    if (start.substr(0, 8).find("{\\rtf") != std::string::npos)
        return "RTF document";
    for (char &c : start)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (start.find("<html") != std::string::npos || start.find("<!doctype html") != std::string::npos ||
        start.find("<head") != std::string::npos)
        return "Web page";
    const std::string ext = lowercaseExtension(file.url);
    if (ext == "doc" || ext == "docx")
        return "Word document";
    if (ext == "rtf")
        return "RTF document";
    if (ext == "html" || ext == "htm")
        return "Web page";
    return "Plain text";
}

} // namespace

std::string describeKind(const InputFile &file)
{
    using Kind = InputFile::Kind;
    const std::string encrypted = file.isEncrypted ? ", encrypted" : "";
    switch (file.kind) {
    case Kind::wpDocument: {
        std::string family = versionFamilyOf(file);
        if (family.rfind("WordPerfect", 0) != 0)
            return "WordPerfect document" + encrypted; // so named, with no prefix to say more
        if (endsWith(family, ", encrypted"))
            family.resize(family.size() - std::string(", encrypted").size());
        const std::string container = " (in an OLE container)";
        const bool contained = endsWith(family, container);
        if (contained)
            family.resize(family.size() - container.size());
        if (family == "WordPerfect 6 or later")
            family = "WordPerfect 6";
        return family + " document" + (contained ? " in an OLE container" : "") + encrypted;
    }
    case Kind::wpGraphic:
        return "WordPerfect graphic";
    case Kind::openDocument:
        return "OpenDocument text";
    case Kind::office:
        return officeKind(file);
    case Kind::unknown:
        break;
    }
    return "Unknown type";
}
