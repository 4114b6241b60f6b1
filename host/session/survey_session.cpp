#include "host/session/survey_session.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <exception>
#include <limits>
#include <span>
#include <thread>
#include <vector>

#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();

/// Short enough that a dwell ends on time and the display moves, long enough that the call and the
/// look at the clock cost nothing, and small enough for the processor's cache.
size_t usualBlockSamples(double rate_hz) {
  return static_cast<size_t>(std::clamp(rate_hz / 20.0, 1024.0, 65536.0));
}

uint64_t samplesOf(std::optional<double> seconds, double rate_hz) {
  if (!seconds || *seconds * rate_hz >= 9e18) return kNoLimit;
  return static_cast<uint64_t>(std::llround(*seconds * rate_hz));
}

}  // namespace

SurveySession::SurveySession(const PluginLibrary& plugin, IqSource& source, HostServices& services,
                             SurveyClock& clock, SurveyView& report,
                             const SessionSettings& settings)
    : iq_(plugin.iq()),
      host_client_(plugin.hostClient()),
      source_(source),
      services_(services),
      clock_(clock),
      report_(report),
      settings_(settings),
      panel_(plugin.panel()),
      block_samples_(settings.block_samples > 0 ? settings.block_samples
                                                : usualBlockSamples(source.sampleRateHz())),
      most_samples_(samplesOf(settings.duration_seconds, source.sampleRateHz())) {
  if (host_client_ != nullptr) host_client_->attach(services_.table());
}

SurveySession::~SurveySession() {
  if (host_client_ != nullptr) host_client_->attach(nullptr);
}

SessionResult SurveySession::run(const std::function<bool()>& stop,
                                 const std::function<bool()>& rescan) {
  begun_ = std::chrono::steady_clock::now();
  start();
  if (settings_.passes && !dwells_) {
    iq_.destroy(handle_);
    throw PluginError(
        "the plug-in's panel counts no dwells, which --passes needs; give --duration SECONDS");
  }

  std::exception_ptr failure;
  try {
    deliver(stop, rescan);
  } catch (...) {
    failure = std::current_exception();  // whatever failed, what was gathered is saved
  }
  end();
  report_.finished(panel_.read());
  if (failure) std::rethrow_exception(failure);
  return {samples_, dwells_ ? std::optional(dwells_before_ + dwells_->dwells_done) : std::nullopt};
}

void SurveySession::start() {
  source_.settle();
  told_centre_hz_ = source_.centreHz();
  handle_ = iq_.create(source_.sampleRateHz(), told_centre_hz_);
  // The plug-in has its settings file by now, with what it lacked.
  if (settings_.dwell_length_seconds) dwell_length_seconds_ = settings_.dwell_length_seconds();
  dwells_ = panel_.countDwells();
  beginDwell();
  reportMessages();
}

void SurveySession::end() {
  iq_.destroy(handle_);
  reportMessages();
  countDwells(told_centre_hz_);
}

void SurveySession::deliver(const std::function<bool()>& stop,
                            const std::function<bool()>& rescan) {
  std::vector<std::complex<float>> block(block_samples_);
  while (samples_ < most_samples_ && !passesAreDone() && !stop()) {
    if (rescan()) {
      end();
      dwells_before_ += dwells_ ? dwells_->dwells_done : 0;
      start();
    }
    // A recording may go on later and at another centre.
    if (const auto recorded_ms = source_.nextUnixMs()) clock_.leapTo(*recorded_ms);
    if (source_.centreHz() != told_centre_hz_) retune();
    const size_t count = source_.read(std::span(block).first(nextBlockSize()));
    if (count == 0) break;
    // The clock stands at the end of the block when the plug-in looks at it.
    clock_.advance(count);
    samples_ += count;
    const double looked_at_hz = told_centre_hz_;
    iq_.process(handle_, reinterpret_cast<const float*>(block.data()), count);

    const auto request = services_.takeTuneRequest();
    if (request && request->answer == kTuneAccepted) retune();
    // Every dwell that is evaluated leaves a line, so without one there is nothing new to count.
    if (reportMessages() || request) countDwells(looked_at_hz);
    if (request) report_.tuned(*request, told_centre_hz_);
    report_.progress(progress(), panel_);
    if (settings_.realtime) waitForSamples(stop);
  }
}

size_t SurveySession::nextBlockSize() const {
  return static_cast<size_t>(std::min<uint64_t>(block_samples_, most_samples_ - samples_));
}

bool SurveySession::passesAreDone() const {
  if (!settings_.passes || !dwells_) return false;
  return dwells_->dwells_done / dwells_->dwellsPerPass() >= *settings_.passes;
}

void SurveySession::retune() {
  source_.settle();
  told_centre_hz_ = source_.centreHz();
  iq_.retune(handle_, told_centre_hz_);
  beginDwell();
}

/// Passes on all waiting lines and returns whether there were any.
bool SurveySession::reportMessages() {
  std::array<char, 256> line = {};
  bool any = false;
  while (iq_.poll_text(handle_, line.data(), line.size()) != 0) {
    report_.message(displayText(line.data()));
    any = true;
  }
  return any;
}

/// `looked_at_hz`: the centre of the dwell that may have ended.
void SurveySession::countDwells(double looked_at_hz) {
  const uint32_t before = dwells_ ? dwells_->dwells_done : 0;
  dwells_ = panel_.countDwells();
  if (!dwells_ || dwells_->dwells_done == before) return;
  SurveyProgress done = progress();
  done.centre_hz = looked_at_hz;
  report_.dwellDone(done);
  if (settings_.after_dwell) settings_.after_dwell();
  beginDwell();
}

SurveyProgress SurveySession::progress() const {
  SurveyProgress progress;
  progress.centre_hz = told_centre_hz_;
  progress.rate_hz = source_.sampleRateHz();
  progress.unix_ms = clock_.nowMs();
  progress.samples = samples_;
  progress.overflows = source_.overflows();
  progress.dwell_elapsed_seconds = static_cast<double>(progress.unix_ms - dwell_begun_ms_) / 1000.0;
  progress.dwell_length_seconds = dwell_length_seconds_;
  progress.dwells = dwells_;
  progress.wanted_passes = settings_.passes;
  progress.wanted_seconds = settings_.duration_seconds;
  return progress;
}

/// Sleeps until the samples delivered so far would have arrived, in naps that notice `stop`.
void SurveySession::waitForSamples(const std::function<bool()>& stop) const {
  constexpr std::chrono::duration<double> kNap(0.1);
  const std::chrono::duration<double> due(static_cast<double>(samples_) / source_.sampleRateHz());
  while (!stop()) {
    const auto wait = due - (std::chrono::steady_clock::now() - begun_);
    if (wait.count() <= 0.0) return;
    std::this_thread::sleep_for(std::min(kNap, std::chrono::duration<double>(wait)));
  }
}

}  // namespace pelagrim_host
