#include "host/report/report_data.h"

#include <fmt/format.h>

#include <iterator>
#include <optional>

#include "host/report/report_words.h"
#include "survey/settings.h"

namespace pelagrim_host {
namespace {

std::vector<std::pair<std::string, std::string>> readableSettings(const SurveyFiles& survey) {
  std::vector<std::pair<std::string, std::string>> readable;
  if (const auto& settings = survey.settings) {
    readable.emplace_back("Threshold",
                          fmt::format("{:.4g} dB over the noise floor", settings->threshold_db));
    readable.emplace_back("Dwell", fmt::format("{:.6g} s", settings->dwell_seconds));
    readable.emplace_back("Raster", fmt::format("{:.6g} kHz", settings->raster_hz / 1e3));
    readable.emplace_back("Band set", fmt::format("{:.4f} to {:.4f} MHz", settings->start_hz / 1e6,
                                                  settings->stop_hz / 1e6));
    readable.emplace_back("Sweep", settings->sweep ? "yes" : "no");
  }
  readable.emplace_back("File", survey.results_path.string());
  return readable;
}

/// What the reader of a comparison should know: what it could not compare, and why it may mislead.
std::vector<std::string> comparisonRemarks(const Comparison& comparison, const SurveyFiles& survey,
                                           const SurveyFiles& old) {
  std::vector<std::string> remarks;
  const std::string path = old.results_path.string();
  if (comparison.is_continued) {
    remarks.push_back(fmt::format(
        "{} is an earlier state of this survey: more or less often is by the looks since, and a "
        "channel that is no longer seen is not gone but seen less often",
        path));
  }
  if (comparison.gone_outside_band > 0) {
    remarks.push_back(fmt::format("{}: left out {} outside the band of the newer survey", path,
                                  channelCount(comparison.gone_outside_band)));
  }
  if (comparison.new_outside_old_band > 0) {
    remarks.push_back(fmt::format("{}: {} outside its band cannot be called new", path,
                                  channelCount(comparison.new_outside_old_band)));
  }
  const auto& now = survey.settings;
  const auto& before = old.settings;
  if (now && before &&
      (now->dwell_seconds != before->dwell_seconds || now->threshold_db != before->threshold_db)) {
    remarks.push_back(fmt::format(
        "{} had dwells of {:.6g} s and a threshold of {:.4g} dB, this survey {:.6g} s and {:.4g} "
        "dB: that alone changes what is found, and how often",
        path, before->dwell_seconds, before->threshold_db, now->dwell_seconds, now->threshold_db));
  }
  return remarks;
}

}  // namespace

ReportData makeReport(const SurveyFiles& survey, const SurveyFiles* old) {
  ReportData report;
  report.band_plan = survey.band_plan;
  report.settings = readableSettings(survey);
  report.remarks = surveyRemarks(survey);
  report.is_compared = old != nullptr;
  report.times_are_guesses = survey.timesAreGuesses();
  if (old == nullptr) {
    report.channels = withoutComparison(survey.rows.channels);
  } else {
    const double raster_hz = survey.settings.value_or(pelagrim::Settings{}).raster_hz;
    report.old_times_are_guesses = old->timesAreGuesses();
    const bool may_be_continued =
        !survey.memory || !old->memory || areOfOneSource(*survey.memory, *old->memory);
    Comparison comparison =
        compareSurveys(survey.rows.channels, old->rows.channels, raster_hz, may_be_continued);
    dropChangesOutsideBands(comparison, survey.settings, old->settings);
    report.settings.emplace_back("Compared with", old->results_path.string());
    const auto add = [&report](std::vector<std::string> remarks) {
      std::move(remarks.begin(), remarks.end(), std::back_inserter(report.remarks));
    };
    add(surveyRemarks(*old));
    add(comparisonRemarks(comparison, survey, *old));
    report.channels = std::move(comparison.channels);
  }
  report.layout = layOutBand(report.channels, report.band_plan, survey.settings);
  return report;
}

}  // namespace pelagrim_host
