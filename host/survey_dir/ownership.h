#pragma once

#include <filesystem>

namespace pelagrim_host {

/// Throws std::runtime_error where the directory, or a file or link in it that a run reads or
/// writes, belongs to somebody else: whoever planted it could have this user overwrite a file, or
/// survey what is not meant. Own are the files of this user and of root, and under sudo those of
/// the user who called it; a link of one's own is followed, to a file that has to be one's own as
/// well.
void requireOwnFiles(const std::filesystem::path& survey_dir);

}  // namespace pelagrim_host
