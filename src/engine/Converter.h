#pragma once

#include "Job.h"
#include "richtext/Losses.h"

#include <exception>
#include <filesystem>
#include <functional>

// Runs a Job off the main thread and reports once, on the main thread.
// The outcome is null on success, or the error exactly as it was thrown:
// a ConversionError, or a PlatformError passed through unwrapped. The losses
// say what a successful output could not carry (empty on failure).
namespace Converter {

using Outcome = std::exception_ptr;
using Losses = richtext::Losses;
using Completion = std::function<void(Outcome, Losses)>;

// Returns at once. Needs a running QCoreApplication to deliver the completion.
void perform(const Job &job, const std::filesystem::path &to, Completion completion);

} // namespace Converter
