#pragma once

#include "TestSupport.h"
#include "engine/Converter.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

// Runs one job through the engine and waits for its completion; `losses`,
// when given, receives what the output could not carry.
inline std::exception_ptr performAndWait(const Job &job, const std::filesystem::path &to,
                                         Converter::Losses *losses = nullptr)
{
    std::exception_ptr outcome;
    bool done = false;
    Converter::perform(job, to, [&](Converter::Outcome result, const Converter::Losses &lost) {
        outcome = result;
        if (losses)
            *losses = lost;
        done = true;
    });
    if (!testing_support::waitUntil([&] { return done; }))
        ADD_FAILURE() << "no completion";
    return outcome;
}

// "success", or the error as it spells itself (e.g. conversionFailed("")).
inline std::string outcomeText(const std::exception_ptr &outcome)
{
    try {
        if (outcome)
            std::rethrow_exception(outcome);
    } catch (const std::exception &error) {
        return error.what();
    }
    return "success";
}
