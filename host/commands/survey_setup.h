#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/survey_options.h"
#include "host/sources/iq_source.h"
#include "host/survey_dir/survey_settings_file.h"

namespace pelagrim_host {

constexpr double kDefaultDwellSeconds = 20.0;  ///< the plug-in's, where survey.cfg has none

/// The directory for the survey's files: as the command line says, else the environment's
/// ORVANE_SURVEY_DIR (null when unset), else `fallback`.
std::filesystem::path chooseSurveyDirectory(const Options& options, const char* from_environment,
                                            const std::string& fallback);

/// Makes sure that the directory is there and can be written to. Returns whether it was created.
/// Throws std::runtime_error, naming it.
bool createSurveyDirectory(const std::filesystem::path& survey_dir);

/// The keys of survey.cfg that the command line sets.
std::vector<SettingEdit> settingsAsked(const Options& options);

/// The further keys to set where there is no survey.cfg yet. The plug-in would sweep 144 to 146 MHz
/// with 20 s to a slice: a source that cannot be tuned is surveyed as it is, in dwells that fit
/// between its own changes of the centre, and a simulated band takes short dwells. What is `asked`
/// for stands.
std::vector<SettingEdit> settingsForSource(const Options& options, const IqSource& source,
                                           const std::vector<SettingEdit>& asked);

/// Why a survey with these settings would find nothing in a source that cannot be tuned, with the
/// remedy; nothing when it would.
std::optional<std::string> bandMismatch(const std::string& settings, const IqSource& source);

/// Which of a recording's samples a survey with these settings would drop, as its centre changes
/// before a dwell is over, with the remedy; nothing where dwells fit.
std::optional<std::string> dwellMismatch(const std::string& settings, const IqSource& source);

}  // namespace pelagrim_host
