#pragma once

#include <filesystem>

namespace pelagrim_host {

/// Throws std::runtime_error if the directory, a link on the way to it, or a file or link in it
/// that a run reads or writes, belongs to somebody else, who could make this user overwrite a file
/// or survey something unintended. The user's own files count as safe, and root's, and under sudo
/// those of the user who called it. A safe link is followed, to a file that must be safe as well.
/// What does not exist counts as safe.
void requireOwnFiles(const std::filesystem::path& survey_dir);

}  // namespace pelagrim_host
