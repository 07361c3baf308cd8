#pragma once

#include "classify/InputFile.h"
#include "engine/Job.h"

#include <optional>
#include <string>

class Settings;

// Which job a classified file gets under the current settings, and the
// extension of its output. Shared by the app's starters and the companion.
struct JobPlan {
    Job job;         // with no password
    std::string ext; // the output's extension, without the dot
};

// The plan for `file` handled as `treatAs` (the classified kind, or
// wpDocument for an unknown file the user wants tried). Nothing for an
// encrypted WordPerfect 6 document, which libwpd cannot decrypt, and for
// the unknown kind itself.
std::optional<JobPlan> planJob(const InputFile &file, InputFile::Kind treatAs, const Settings &settings);

// The same job carrying the password the user typed (WordPerfect documents only).
Job withPassword(const Job &job, const std::string &password);
