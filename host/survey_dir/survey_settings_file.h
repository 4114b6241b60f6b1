#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pelagrim_host {

/// A key of survey.cfg and the value to give it.
struct SettingEdit {
  std::string key;
  std::string value;
};

/// The value of `key` in the text of a settings file, blanks around it removed: that of its last
/// line, as the plug-in takes it. Lines are "key = value"; "#" begins a comment line.
std::optional<std::string> findSetting(std::string_view text, std::string_view key);

/// The number that `key` holds, where it holds one.
std::optional<double> findNumber(std::string_view text, std::string_view key);

/// Whether the settings ask to sweep, which they do unless `sweep` has a value with an n in it.
bool asksToSweep(std::string_view text);

/// `text` with the keys of `edits` set and every other byte kept. A key takes its new value in its
/// last line, in place of the number there, so that a remark behind it stays; a value of sweep is
/// replaced whole, as every letter of it counts. A key that the text lacks gets a line at the end.
std::string withSettings(std::string_view text, const std::vector<SettingEdit>& edits);

/// The settings file of a survey directory.
std::filesystem::path settingsPath(const std::filesystem::path& survey_dir);

/// The text of the settings file of `survey_dir`, nothing when there is none. Throws
/// std::runtime_error, naming the file, when it cannot be read.
std::optional<std::string> readSettings(const std::filesystem::path& survey_dir);

/// Sets the keys in the settings file of `survey_dir`, which is replaced in one step; a missing
/// file is written with those keys alone, and the plug-in has its defaults for the rest. Throws
/// std::runtime_error, naming the file, when that fails.
void editSettings(const std::filesystem::path& survey_dir, const std::vector<SettingEdit>& edits);

}  // namespace pelagrim_host
