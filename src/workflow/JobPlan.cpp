#include "JobPlan.h"

#include "settings/Settings.h"

std::optional<JobPlan> planJob(const InputFile &file, InputFile::Kind treatAs, const Settings &settings)
{
    using Kind = InputFile::Kind;
    switch (treatAs) {
    case Kind::wpDocument:
        if (file.isEncrypted && file.wpVersionIsWP6)
            return std::nullopt;
        if (settings.documentTarget() == DocTarget::rtf)
            return JobPlan{JobCase::wpToRTF{file.url, std::nullopt, settings.rtfCharset()}, "rtf"};
        return JobPlan{JobCase::wpToODT{file.url, std::nullopt}, "odt"};
    case Kind::wpGraphic:
        if (settings.graphicTarget() == GraphicTarget::svg)
            return JobPlan{JobCase::wpgToSVG{file.url}, "svg"};
        return JobPlan{JobCase::wpgToPNG{file.url}, "png"};
    case Kind::openDocument:
    case Kind::office: {
        const WPTarget target = settings.wordPerfectTarget();
        const std::string ext(rawValue(target));
        if (treatAs == Kind::openDocument)
            return JobPlan{JobCase::odtToWP{file.url, target}, ext};
        return JobPlan{JobCase::officeToWP{file.url, target}, ext};
    }
    case Kind::unknown:
        break;
    }
    return std::nullopt;
}

Job withPassword(const Job &job, const std::string &password)
{
    if (const auto *odt = std::get_if<JobCase::wpToODT>(&job))
        return JobCase::wpToODT{odt->source, password};
    if (const auto *rtf = std::get_if<JobCase::wpToRTF>(&job))
        return JobCase::wpToRTF{rtf->source, password, rtf->charset};
    return job;
}
