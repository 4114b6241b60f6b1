#pragma once

#include <cstdint>

#include "host/commands/survey_options.h"
#include "host/commands/survey_setup.h"
#include "host/session/survey_view.h"
#include "host/sources/start_time.h"

namespace pelagrim_host {

/// Says before a long run what would make writeTruth fail after it, as far as that is known: throws
/// UsageError if --truth names a file of the survey itself or one in no directory.
void requirePlaceForTruth(const Options& options, const SurveySetup& setup);

/// If --truth asks for it, writes every transmission in the simulated band during a run of
/// `samples` samples, keeps an older file as NAME~, and tells the view. Throws FileError.
void writeTruth(const Options& options, const SurveySetup& setup, const StartTime& start,
                uint64_t samples, SurveyView& view);

}  // namespace pelagrim_host
