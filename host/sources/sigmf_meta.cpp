#include "host/sources/sigmf_meta.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "host/text/letter_case.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

using nlohmann::json;

constexpr int kMaxDepth = 32;
constexpr size_t kMaxValues = 1'000'000;

/// Builds what matters of a text, global and captures, and drops the rest while it is read, as
/// annotations may be many. (The library's own filter goes through all of a list again at the end
/// of each of its members.)
// NOLINTNEXTLINE(bugprone-exception-escape): the library's empty value does not throw
class WantedMembers final : public nlohmann::json_sax<json> {
 public:
  json takeRoot() { return std::move(root_); }

  bool null() override { return put(nullptr); }
  bool boolean(bool value) override { return put(value); }
  bool number_integer(number_integer_t value) override { return put(value); }
  bool number_unsigned(number_unsigned_t value) override { return put(value); }
  bool number_float(number_float_t value, const string_t&) override { return put(value); }
  bool string(string_t& value) override { return put(std::move(value)); }
  bool binary(binary_t&) override { return false; }  // not of text
  bool key(string_t& name) override {
    if (depth_ == 1) wanted_ = name == "global" || name == "captures";
    if (wanted_) key_ = std::move(name);
    return true;
  }
  bool start_object(size_t) override { return open(json::object()); }
  bool start_array(size_t) override { return open(json::array()); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool parse_error(size_t byte, const std::string&, const json::exception& error) override {
    if (dynamic_cast<const json::parse_error*>(&error) == nullptr) {  // a number out of range
      throw SigmfError("its metadata are not JSON that can be read");
    }
    throw SigmfError(fmt::format("its metadata are not JSON (at byte {})", byte));
  }

 private:
  /// Where the value is now; null for one that is dropped.
  json* place(json value) {
    if (depth_ == 0) return &(root_ = std::move(value));
    if (!wanted_) return nullptr;
    if (++values_ > kMaxValues) throw SigmfError("its metadata hold too many values");
    json& parent = *open_.back();
    if (parent.is_object()) return &(parent[key_] = std::move(value));
    return &parent.emplace_back(std::move(value));
  }
  bool put(json value) { return place(std::move(value)), true; }
  bool open(json value) {
    if (depth_ == kMaxDepth) throw SigmfError("its metadata are nested too deeply");
    json* const opened = place(std::move(value));
    if (opened != nullptr) open_.push_back(opened);
    // A list at the top has no members that are wanted.
    if (depth_++ == 0) wanted_ = false;
    return true;
  }
  bool close() {
    if (--depth_ == 0 || wanted_) open_.pop_back();
    // The member of the outermost object is over with what it holds.
    if (depth_ == 1) wanted_ = false;
    return true;
  }

  json root_;
  std::vector<json*> open_;  ///< from root_ on, each in the one before; none that is dropped
  std::string key_;
  size_t values_ = 0;
  int depth_ = 0;
  bool wanted_ = false;
};

json parseJson(std::string_view text) {
  if (text.size() > kMaxSigmfMetaBytes) {
    throw SigmfError(fmt::format("its metadata are longer than {} bytes", kMaxSigmfMetaBytes));
  }
  WantedMembers members;
  json::sax_parse(text.begin(), text.end(), &members);
  return members.takeRoot();
}

/// The member of `object`, or null if it is missing.
const json* find(const json& object, const char* key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

std::optional<double> numberIn(const json& object, const char* key) {
  const json* const value = find(object, key);
  if (value == nullptr) return std::nullopt;
  if (!value->is_number() || !std::isfinite(value->get<double>())) {
    throw SigmfError(fmt::format("{} is not a number", key));
  }
  return value->get<double>();
}

uint64_t countIn(const json& object, const char* key, uint64_t otherwise) {
  const json* const value = find(object, key);
  if (value == nullptr) return otherwise;
  if (!value->is_number_unsigned()) {
    throw SigmfError(fmt::format("{} is not a whole number from 0 on", key));
  }
  return value->get<uint64_t>();
}

std::string textIn(const json& object, const char* key) {
  const json* const value = find(object, key);
  if (value == nullptr) return "";
  if (!value->is_string()) throw SigmfError(fmt::format("{} is not text", key));
  return value->get<std::string>();
}

/// ci16_le and the like.
void readDatatype(const std::string& datatype, SigmfMeta& meta) {
  if (datatype.empty()) throw SigmfError("it has no core:datatype");
  std::string_view rest = datatype;
  const bool is_real = rest.starts_with('r');
  const bool has_order = rest.ends_with("_le") || rest.ends_with("_be");
  meta.big_endian = rest.ends_with("_be");
  if (has_order) rest.remove_suffix(3);
  rest = rest.substr(std::min<size_t>(rest.size(), 1));
  // SigMF writes i for signed, the raw formats write s.
  std::string name = fmt::format("c{}", rest);
  if (name.size() > 1 && name[1] == 'i') {
    name[1] = 's';
  } else if (name.size() > 1 && name[1] == 's') {
    name[1] = '?';
  }
  meta.format = findSampleFormat(name);
  if ((!is_real && datatype[0] != 'c') || meta.format == nullptr) {
    throw SigmfError("its core:datatype is not a known one");
  }
  meta.datatype = datatype;
  if (is_real) {
    throw SigmfError(fmt::format(
        "its samples are real ({}), not complex, so this is not an I/Q recording", datatype));
  }
  if (has_order == (meta.format->component_bytes == 1)) {
    throw SigmfError(fmt::format("its core:datatype {} {}", datatype,
                                 has_order ? "has a byte order, which single bytes do not have"
                                           : "lacks the byte order, _le or _be"));
  }
}

std::string readSha512(const json& global) {
  const std::string sha512 = textIn(global, "core:sha512");
  const auto is_hex = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
  if (!sha512.empty() &&
      (sha512.size() != 128 || !std::all_of(sha512.begin(), sha512.end(), is_hex))) {
    throw SigmfError("its core:sha512 is not 128 hexadecimal digits");
  }
  return lowerCase(sha512);
}

SigmfCapture readCapture(const json& object) {
  if (!object.is_object()) throw SigmfError("one of its captures is not an object");
  SigmfCapture capture;
  capture.sample_start = countIn(object, "core:sample_start", 0);
  capture.header_bytes = countIn(object, "core:header_bytes", 0);
  capture.frequency_hz = numberIn(object, "core:frequency");
  const std::string start = textIn(object, "core:datetime");
  if (start.find('T') != std::string::npos) capture.start_unix_ms = parseMoment(start);
  return capture;
}

}  // namespace

SigmfMeta parseSigmfMeta(std::string_view text) {
  const json root = parseJson(text);
  const json* const global = root.is_object() ? find(root, "global") : nullptr;
  if (global == nullptr || !global->is_object()) {
    throw SigmfError("its metadata have no \"global\" object");
  }
  SigmfMeta meta;
  readDatatype(textIn(*global, "core:datatype"), meta);
  const uint64_t channels = countIn(*global, "core:num_channels", 1);
  if (channels != 1) {
    throw SigmfError(fmt::format("it has {} channels; only one can be surveyed", channels));
  }
  const json* const metadata_only = find(*global, "core:metadata_only");
  if (metadata_only != nullptr && *metadata_only != false) {
    throw SigmfError("it holds only metadata (core:metadata_only), no samples");
  }
  meta.sample_rate_hz = numberIn(*global, "core:sample_rate");
  meta.sha512 = readSha512(*global);
  meta.dataset = textIn(*global, "core:dataset");
  meta.offset = countIn(*global, "core:offset", 0);
  meta.trailing_bytes = countIn(*global, "core:trailing_bytes", 0);
  if (const json* const captures = find(root, "captures")) {
    if (!captures->is_array()) throw SigmfError("its captures are not a list");
    for (const json& capture : *captures) meta.captures.push_back(readCapture(capture));
  }
  if (meta.captures.empty()) meta.captures.emplace_back().sample_start = meta.offset;
  return meta;
}

std::vector<SigmfSegment> sigmfSegments(const SigmfMeta& meta, uint64_t data_bytes) {
  const uint64_t sample_bytes = meta.format->sampleBytes();
  const uint64_t usable = data_bytes - std::min(data_bytes, meta.trailing_bytes);
  const auto pastTheEnd = [](size_t index) {
    return SigmfError(fmt::format("capture {} reaches past the end of the data", index + 1));
  };
  std::vector<SigmfSegment> segments;
  uint64_t headers = 0;  // skipped so far; together with the samples before, never more than usable
  std::optional<double> centre_hz;
  for (size_t i = 0; i < meta.captures.size(); ++i) {
    const SigmfCapture& capture = meta.captures[i];
    const bool is_last = i + 1 == meta.captures.size();
    if (capture.sample_start < meta.offset ||
        (!is_last && meta.captures[i + 1].sample_start < capture.sample_start)) {
      throw SigmfError("its captures are not in the order of their samples");
    }
    const uint64_t index = capture.sample_start - meta.offset;
    if (index > (usable - headers) / sample_bytes ||
        capture.header_bytes > usable - headers - index * sample_bytes) {
      throw pastTheEnd(i);
    }
    headers += capture.header_bytes;
    if (capture.frequency_hz) centre_hz = capture.frequency_hz;
    const uint64_t first_byte = headers + index * sample_bytes;
    const uint64_t waiting = (usable - first_byte) / sample_bytes;
    const uint64_t samples =
        is_last ? waiting : meta.captures[i + 1].sample_start - capture.sample_start;
    if (samples > waiting) throw pastTheEnd(i + 1);
    segments.push_back({first_byte, samples, centre_hz, capture.start_unix_ms});
  }
  return segments;
}

}  // namespace pelagrim_host
