#include "host/survey_dir/survey_settings_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace pelagrim_host {
namespace {

constexpr std::string_view kBlanks = " \t";

constexpr const char* kNewFileHead =
    "# Written by pelagrim-survey. A key that is not here has its default: start, stop,\n"
    "# threshold_db, dwell_seconds, raster_hz, sweep.\n";

/// Where the value of a key stands in a text, blanks around it left out.
struct ValuePlace {
  size_t begin;
  size_t length;
};

std::string_view withoutBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<ValuePlace> findPlace(std::string_view text, std::string_view key) {
  std::optional<ValuePlace> place;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    std::string_view line = text.substr(begin, end - begin);
    line = line.substr(0, line.find('\r'));
    const size_t equals = line.find('=');
    if (equals != std::string_view::npos && withoutBlanks(line.substr(0, equals)) == key &&
        equals + 1 < line.size()) {
      const std::string_view value = withoutBlanks(line.substr(equals + 1));
      const size_t at =
          value.empty() ? begin + line.size() : static_cast<size_t>(value.data() - text.data());
      place = ValuePlace{at, value.size()};
    }
    begin = end + 1;
  }
  return place;
}

/// Where links lead, also where nothing is there yet.
std::filesystem::path endOfLinks(std::filesystem::path path) {
  constexpr int kMostLinks = 40;  // as the system follows
  std::error_code error;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i) {
    path = path.parent_path() / std::filesystem::read_symlink(path, error);
  }
  return path;
}

std::string setOne(std::string text, const SettingEdit& edit) {
  const auto place = findPlace(text, edit.key);
  if (!place) {
    if (!text.empty() && text.back() != '\n') text += '\n';
    return text + fmt::format("{} = {}\n", edit.key, edit.value);
  }
  size_t length = place->length;
  if (edit.key != "sweep") {
    length = std::min(length, text.find_first_of(" \t#", place->begin) - place->begin);
  }
  return text.replace(place->begin, length, edit.value);
}

[[noreturn]] void fail(const char* what, const std::filesystem::path& path, int reason) {
  throw std::runtime_error(fmt::format("cannot {} {}: {}; name another directory with --dir", what,
                                       path.string(), std::generic_category().message(reason)));
}

}  // namespace

std::optional<std::string> findSetting(std::string_view text, std::string_view key) {
  const auto place = findPlace(text, key);
  if (!place) return std::nullopt;
  return std::string(withoutBlanks(text.substr(place->begin, place->length)));
}

std::optional<double> findNumber(std::string_view text, std::string_view key) {
  const auto value = findSetting(text, key);
  if (!value) return std::nullopt;
  // As the plug-in reads it: 0 where there is no number. This program sets no locale.
  const double number = std::strtod(value->c_str(), nullptr);
  return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

bool asksToSweep(std::string_view text) {
  return findSetting(text, "sweep").value_or("").find_first_of("nN") == std::string::npos;
}

std::string withSettings(std::string_view text, const std::vector<SettingEdit>& edits) {
  std::string edited(text);
  for (const SettingEdit& edit : edits) edited = setOne(std::move(edited), edit);
  return edited;
}

std::filesystem::path settingsPath(const std::filesystem::path& survey_dir) {
  return survey_dir / "survey.cfg";
}

std::optional<std::string> readSettings(const std::filesystem::path& survey_dir) {
  const auto path = settingsPath(survey_dir);
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return std::nullopt;
  if (std::filesystem::is_directory(path, error)) fail("read", path, EISDIR);
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) fail("read", path, errno);
  return text;
}

void editSettings(const std::filesystem::path& survey_dir, const std::vector<SettingEdit>& edits) {
  const auto old_text = readSettings(survey_dir);
  const std::string text = withSettings(old_text.value_or(kNewFileHead), edits);
  if (old_text == text) return;
  // A link stays a link: the file that it leads to is replaced.
  std::error_code error;
  const auto path = endOfLinks(settingsPath(survey_dir));
  auto fresh_path = path;
  fresh_path += ".new";
  {
    errno = 0;
    std::ofstream file(fresh_path, std::ios::binary);
    file << text;
    file.close();
    if (!file) fail("write", fresh_path, errno);
  }
  if (old_text) {
    std::filesystem::permissions(fresh_path, std::filesystem::status(path).permissions(), error);
  }
  std::filesystem::rename(fresh_path, path, error);
  if (error) fail("replace", path, error.value());
}

}  // namespace pelagrim_host
