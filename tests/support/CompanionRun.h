#pragma once

#include "Companion.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <variant>
#include <vector>

// Runs the companion on these arguments to its end and returns its exit
// status; -1 when the arguments are refused or it never finishes.
inline int runCompanion(const std::vector<std::string> &args, Settings &settings, PasswordSource &passwords,
                        std::ostream &out, int defaultJobs = 2, double seconds = 60)
{
    const auto parsed = parseArguments(args, defaultJobs);
    if (!std::holds_alternative<CompanionOptions>(parsed)) {
        ADD_FAILURE() << "arguments refused";
        return -1;
    }
    Companion companion(std::get<CompanionOptions>(parsed), settings, passwords, out);
    if (std::get<CompanionOptions>(parsed).dryRun)
        return companion.dryRun();
    int status = -1;
    QObject::connect(&companion, &Companion::finished, [&](int s) { status = s; });
    companion.start();
    if (!testing_support::waitUntil([&] { return status != -1; }, seconds))
        ADD_FAILURE() << "the companion never finished";
    return status;
}
