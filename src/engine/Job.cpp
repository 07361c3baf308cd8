#include "Job.h"

namespace {

template <typename... F> struct Overloaded : F... {
    using F::operator()...;
};
template <typename... F> Overloaded(F...) -> Overloaded<F...>;

} // namespace

std::string_view jobName(const Job &job)
{
    return std::visit(Overloaded{
                          [](const JobCase::wpToODT &) { return "wpToODT"; },
                          [](const JobCase::wpToRTF &) { return "wpToRTF"; },
                          [](const JobCase::wpgToPNG &) { return "wpgToPNG"; },
                          [](const JobCase::wpgToSVG &) { return "wpgToSVG"; },
                          [](const JobCase::odtToWP &) { return "odtToWP"; },
                          [](const JobCase::officeToWP &) { return "officeToWP"; },
                      },
                      job);
}

const std::filesystem::path &jobSource(const Job &job)
{
    return std::visit([](const auto &payload) -> const std::filesystem::path & { return payload.source; },
                      job);
}
