#include "host/session/survey_session.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();
constexpr int64_t kMaxDwellMs = int64_t{1} << 52;  // no sum of it and a time overflows
constexpr double kMaxClockLeadSeconds = 2.0;       // less is nothing to people

/// Short enough that dwells end on time and the display moves, long enough that the call and the
/// clock cost nothing, and small enough for the processor's cache.
size_t usualBlockSamples(double rate_hz) {
  return static_cast<size_t>(std::clamp(rate_hz / 20.0, 1024.0, 65536.0));
}

uint64_t samplesOf(std::optional<double> seconds, double rate_hz) {
  if (!seconds || *seconds * rate_hz >= 9e18) return kNoLimit;
  return static_cast<uint64_t>(std::llround(*seconds * rate_hz));
}

}  // namespace

SurveySession::SurveySession(const PluginLibrary& plugin, IqSource& source, ClockPolicy clock,
                             SurveyView& view, const SessionSettings& settings)
    : iq_(plugin.iq()),
      host_client_(plugin.hostClient()),
      view_(view),
      settings_(settings),
      clock_(clock, source.sampleRateHz()),
      rate_hz_(source.sampleRateHz()),
      layout_(source.layout()),
      source_samples_(source.lengthSamples()),
      // What a receiver that waits for us has sent before a tune would be thrown away.
      may_read_ahead_(source.isLive() || !source.canTune()),
      chunk_samples_(settings.block_samples > 0 ? settings.block_samples
                                                : usualBlockSamples(source.sampleRateHz())),
      panel_(plugin.panel()),
      max_samples_(samplesOf(settings.duration_seconds, source.sampleRateHz())),
      told_centre_hz_(source.centreHz()) {
  ChunkReader reader(source, chunk_samples_, clock.clocks().steady_ms);
  feed_ = settings.has_reader_thread
              ? feedWithReaderThread(std::move(reader), source.isLive(), settings.buffer_bytes,
                                     settings.end_reading)
              : feedOnThisThread(std::move(reader));
  services_ = std::make_unique<HostServices>(*feed_, clock_, settings.may_tune);
  if (host_client_ != nullptr) host_client_->attach(services_->table());
}

SurveySession::~SurveySession() {
  if (host_client_ != nullptr) host_client_->attach(nullptr);
}

SessionResult SurveySession::run(const std::function<bool()>& stop,
                                 const std::function<bool()>& rescan) {
  begun_ = samples_came_ = std::chrono::steady_clock::now();
  tell(start());
  // A receiver is read from now on. The first dwell begins with its first samples, and not before
  // the plug-in has read its files, which takes a while for a large list.
  if (!clock_.followsSamples()) centre_to_tell_hz_ = told_centre_hz_;
  if (settings_.passes && !dwells_) {
    iq_.destroy(handle_);
    throw PluginError(
        "the plug-in's panel counts no dwells, which --passes needs; give --duration SECONDS");
  }

  std::exception_ptr failure;
  try {
    play(stop, rescan);
  } catch (...) {
    failure = std::current_exception();  // whatever failed, the survey is saved first
  }
  feed_->end();
  tell(end());
  view_.finished(panel_.read());
  if (failure) std::rethrow_exception(failure);
  SessionResult result{samples_, overflows_, feed_->droppedSamples(), damage_, std::nullopt};
  if (dwells_) result.dwells_done = dwells_before_ + dwells_->dwells_done;
  return result;
}

void SurveySession::play(const std::function<bool()>& stop, const std::function<bool()>& rescan) {
  while (samples_ < max_samples_ && !passesAreDone() && !stop()) {
    if (rescan()) {
      tell(end());
      dwells_before_ += dwells_ ? dwells_->dwells_done : 0;
      tell(start());
    }
    const SampleChunk* const chunk = nextChunk();
    if (chunk != nullptr && chunk->failure) std::rethrow_exception(chunk->failure);
    if (chunk != nullptr && chunk->samples == 0) {
      damage_ = chunk->damage;
      break;
    }
    if (chunk != nullptr) tell(feed(nextBlock(*chunk)));
    showSnapshot();
    if (settings_.realtime) waitForSamples(stop);
  }
}

// ---- samples ------------------------------------------------------------------------------------

/// The chunk that the next block is part of; null where no samples have come for a moment.
const SampleChunk* SurveySession::nextChunk() {
  const SampleChunk* chunk = feed_->front(readLimit());
  const auto is_passed = [this](const SampleChunk& front) {
    return front.samples > 0 && (taken_ == front.samples || front.tunes != tunes_);
  };
  while (chunk != nullptr && is_passed(*chunk)) {
    feed_->release();
    taken_ = 0;
    chunk = feed_->front(readLimit());
  }
  return chunk;
}

SurveySession::Block SurveySession::nextBlock(const SampleChunk& chunk) {
  Block block{{}, chunk.centre_hz, std::nullopt, chunk.begun_steady_ms, chunk.received_steady_ms};
  if (taken_ == 0) block.unix_ms = chunk.unix_ms;
  const uint64_t wanted = std::min(max_samples_ - samples_, leftInDwell(block.unix_ms));
  const size_t count = std::min<uint64_t>(wanted, chunk.samples - taken_);
  const std::byte* const bytes = chunk.bytes.data() + taken_ * layout_.sampleBytes();
  if (layout_.isReady()) {
    block.samples = {reinterpret_cast<const std::complex<float>*>(bytes), count};
  } else {
    floats_.resize(std::max(floats_.size(), count));
    layout_.toFloats(bytes, count, floats_.data());
    block.samples = std::span(floats_).first(count);
  }
  taken_ += count;
  position_ = chunk.first_sample + taken_;
  overflows_ = chunk.overflows;
  samples_came_ = std::chrono::steady_clock::now();
  return block;
}

/// How many samples the dwell in progress still takes, at least 1, where the clock follows the
/// samples. `unix_ms`: of the first of them, where that is known.
uint64_t SurveySession::leftInDwell(std::optional<int64_t> unix_ms) const {
  if (!clock_.followsSamples() || dwell_length_ms_ == 0) return kNoLimit;
  SurveyClock clock = clock_;
  if (unix_ms) clock.leapTo(*unix_ms);
  return std::max<uint64_t>(clock.samplesUntil(dwell_begun_ms_ + dwell_length_ms_), 1);
}

/// How many samples may be read in all by now.
uint64_t SurveySession::readLimit() const {
  if (!clock_.followsSamples()) return kNoLimit;
  uint64_t ahead = max_samples_ - samples_;
  if (!may_read_ahead_) {
    const bool knows_dwells = dwell_length_ms_ > 0;
    ahead = std::min<uint64_t>(ahead, knows_dwells ? leftInDwell({}) : chunk_samples_);
  }
  return ahead < kNoLimit - position_ ? position_ + ahead : kNoLimit;
}

// ---- the plug-in --------------------------------------------------------------------------------

SurveySession::News SurveySession::start() {
  if (settings_.before_start) settings_.before_start();
  clock_.followWall();
  told_clock_was_set_ = false;
  handle_ = iq_.create(rate_hz_, told_centre_hz_);
  if (settings_.observer != nullptr) settings_.observer->started(rate_hz_, told_centre_hz_);
  beginDwell();
  if (settings_.dwell_length_ms) {
    dwell_length_ms_ = std::clamp<int64_t>(settings_.dwell_length_ms(), 0, kMaxDwellMs);
  }
  dwells_ = panel_.countDwells();
  return {.started = true, .messages = takeMessages()};
}

SurveySession::News SurveySession::feed(const Block& block) {
  News news;
  const auto warn = [&news](std::optional<std::string> line) {
    if (line) news.warnings.push_back(*std::move(line));
  };
  // A recording may continue later and at another centre.
  if (block.unix_ms) clock_.leapTo(*block.unix_ms);
  if (centre_to_tell_hz_ || block.centre_hz != told_centre_hz_) {
    warn(check_.judge());
    clock_.receivedAt(block.begun_steady_ms);
    retune(block.centre_hz);
  }
  check_.take(block.samples, block.centre_hz);
  const double looked_at_hz = told_centre_hz_;
  process(block);

  auto tuned = services_->takeTuneRequest();
  // Of several requests in one call the last is told of, but any of them may have been accepted.
  const bool has_moved = tuned && tuned->outcome.tunes > tunes_;
  if (tuned) news.tune = std::move(tuned->request);
  news.messages = takeMessages();
  // Every evaluated dwell leaves a message, so without one there is nothing new to count.
  if (news.tune || !news.messages.empty()) news.dwell_done = countDwells(looked_at_hz);
  warn(clockNews());
  const bool dwell_is_over = news.tune || news.dwell_done || dwellLengthIsOver();
  if (dwell_is_over) {
    beginDwell();
    if (told_clock_was_set_) {
      // The plug-in reads its dwell's start anew when it is told of a centre, the same one too.
      clock_.followWall();
      told_clock_was_set_ = false;
      if (!has_moved) retune(told_centre_hz_);
    }
  }
  if (dwell_is_over || check_.isDue()) warn(check_.judge());
  if (has_moved) {
    tunes_ = tuned->outcome.tunes;
    position_ = tuned->outcome.next_sample;
    centre_to_tell_hz_ = tuned->outcome.centre_hz;
  }
  news.centre_hz = centreHz();
  return news;
}

SurveySession::News SurveySession::end() {
  News news;
  if (handle_ == nullptr) return news;  // it could not be started again
  if (centre_to_tell_hz_) retune(*centre_to_tell_hz_);
  iq_.destroy(handle_);
  news.messages = takeMessages();
  handle_ = nullptr;
  news.dwell_done = countDwells(told_centre_hz_);
  if (auto line = check_.judge()) news.warnings.push_back(*std::move(line));
  return news;
}

/// Whether the dwell in progress has had its time. A live clock has gone on since the plug-in read
/// it, so there nobody knows.
bool SurveySession::dwellLengthIsOver() const {
  return clock_.followsSamples() && dwell_length_ms_ > 0 &&
         clock_.nowMs() - dwell_begun_ms_ >= dwell_length_ms_;
}

/// Says once that the wall clock was set. What has been received goes by the clock as it was.
std::optional<std::string> SurveySession::clockNews() {
  const double lead_seconds = static_cast<double>(clock_.wallLeadMs()) / 1000.0;
  if (told_clock_was_set_ || std::abs(lead_seconds) <= kMaxClockLeadSeconds) return std::nullopt;
  told_clock_was_set_ = true;
  return fmt::format(
      "the system's clock was set {} by {:.0f} s; times in the list follow it from the next dwell "
      "on",
      lead_seconds > 0.0 ? "forward" : "back", std::abs(lead_seconds));
}

/// One call of the plug-in, which must see the clock at the end of the block.
void SurveySession::process(const Block& block) {
  if (settings_.observer != nullptr) {
    clock_.receivedAt(block.begun_steady_ms);
    settings_.observer->samples(block.samples, clock_.nowMs(), feed_->droppedSamples());
  }
  clock_.advance(block.samples.size());
  clock_.receivedAt(block.received_steady_ms);
  samples_ += block.samples.size();
  iq_.process(handle_, reinterpret_cast<const float*>(block.samples.data()), block.samples.size());
}

void SurveySession::retune(double centre_hz) {
  told_centre_hz_ = centre_hz;
  centre_to_tell_hz_.reset();
  iq_.retune(handle_, centre_hz);
  if (settings_.observer != nullptr) settings_.observer->retuned(centre_hz);
  beginDwell();
}

std::vector<std::string> SurveySession::takeMessages() {
  std::vector<std::string> messages;
  std::array<char, 256> line = {};
  while (iq_.poll_text(handle_, line.data(), line.size()) != 0) {
    messages.push_back(displayText(line.data()));
  }
  return messages;
}

/// What to report about the dwell at `looked_at_hz`, if it has been evaluated.
std::optional<SurveyProgress> SurveySession::countDwells(double looked_at_hz) {
  const uint32_t before = dwells_ ? dwells_->dwells_done : 0;
  dwells_ = panel_.countDwells();
  if (!dwells_ || dwells_->dwells_done == before) return std::nullopt;
  if (settings_.observer != nullptr) settings_.observer->dwellEvaluated(clock_.nowMs());
  SurveyProgress done = progress();
  done.centre_hz = looked_at_hz;
  return done;
}

bool SurveySession::passesAreDone() const {
  if (!settings_.passes || !dwells_) return false;
  return dwells_->dwells_done / dwells_->dwellsPerPass() >= *settings_.passes;
}

SurveyProgress SurveySession::progress() const {
  SurveyProgress progress;
  progress.centre_hz = centreHz();
  progress.rate_hz = rate_hz_;
  progress.unix_ms = clock_.nowMs();
  progress.samples = samples_;
  progress.overflows = overflows_;
  progress.dropped_samples = feed_->droppedSamples();
  const std::chrono::duration<double> stalled = std::chrono::steady_clock::now() - samples_came_;
  progress.stalled_seconds = stalled.count();
  progress.dwell_elapsed_seconds = static_cast<double>(progress.unix_ms - dwell_begun_ms_) / 1000.0;
  progress.dwells = dwells_;
  progress.wanted_passes = settings_.passes;
  progress.wanted_seconds = settings_.duration_seconds;
  progress.wanted_samples = source_samples_;
  return progress;
}

// ---- the view -----------------------------------------------------------------------------------

void SurveySession::tell(const News& news) {
  if (news.started) view_.started();
  for (const std::string& line : news.messages) view_.message(line);
  for (const std::string& line : news.warnings) view_.warning(line);
  if (news.dwell_done) {
    view_.dwellDone(*news.dwell_done);
    if (settings_.after_dwell) settings_.after_dwell();
  }
  if (news.tune) view_.tuned(*news.tune, news.centre_hz);
}

void SurveySession::showSnapshot() {
  if (const auto rows = view_.wantsSnapshot()) view_.snapshot({progress(), panel_.read(*rows)});
}

// ---- pace ---------------------------------------------------------------------------------------

/// Sleeps until the samples delivered so far would have arrived, in naps short enough to notice
/// `stop`.
void SurveySession::waitForSamples(const std::function<bool()>& stop) const {
  constexpr std::chrono::duration<double> kNap(0.1);
  const std::chrono::duration<double> due(static_cast<double>(samples_) / rate_hz_);
  while (!stop()) {
    const auto wait = due - (std::chrono::steady_clock::now() - begun_);
    if (wait.count() <= 0.0) return;
    std::this_thread::sleep_for(std::min(kNap, std::chrono::duration<double>(wait)));
  }
}

}  // namespace pelagrim_host
