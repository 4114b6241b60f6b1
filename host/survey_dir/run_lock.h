#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// The right to survey into a directory: one run at a time.
///
/// The lock is advisory and is held on the file survey.lock, which is never deleted. The system
/// frees it when the process ends, however it ends, and it works across NFS if the server has
/// locks. Others may not read the file: who can, can hold a lock on it and keep runs out.
class RunLock {
 public:
  /// Takes the lock. Throws TryAgainLater, naming the directory and the holder, while another run
  /// has it, and std::runtime_error if the file cannot be created.
  explicit RunLock(const std::filesystem::path& survey_dir);
  ~RunLock();
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;

  /// Why the directory is not protected: its file system has no locks. A line for the user.
  const std::optional<std::string>& lack() const { return lack_; }

 private:
  int file_ = -1;
  std::optional<std::string> lack_;
};

}  // namespace pelagrim_host
