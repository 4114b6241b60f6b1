#pragma once

#include <optional>
#include <string>

#include "host/sources/gain_setting.h"
#include "host/survey_dir/survey_settings.h"
#include "survey/settings.h"

namespace pelagrim_host {

/// The settings in force, in one line, and which of them come from survey.cfg rather than from this
/// command line or the defaults. `gain`: of a receiver, empty for others.
std::string inForceText(const pelagrim::Settings& settings, const SurveySettings& from_file,
                        const std::string& gain);

/// "gain 30 dB", "gain auto", "gain LNA 20 dB, IF 8 dB", "gain left to the driver".
std::string gainText(const std::optional<GainSetting>& gain);

}  // namespace pelagrim_host
