#include "host/sources/sigmf_archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <system_error>

#include "host/sources/iq_source.h"
#include "host/sources/sigmf_meta.h"

namespace pelagrim_host {
namespace {

constexpr std::string_view kMetaSuffix = ".sigmf-meta";
constexpr std::string_view kDataSuffix = ".sigmf-data";

bool leadsOut(const std::filesystem::path& name) {
  return name.is_absolute() || std::find(name.begin(), name.end(), "..") != name.end();
}

/// A tar file, read member by member.
class TarReader {
 public:
  explicit TarReader(const std::filesystem::path& path)
      : path_(path), archive_(archive_read_new(), archive_read_free) {
    constexpr size_t kBlockBytes = 1 << 18;
    // No compression: except for sparse members, what comes out is never larger than the file.
    archive_read_support_format_tar(archive_.get());
    std::error_code error;
    file_bytes_ = std::filesystem::file_size(path, error);
    if (error) fail(error.message());
    if (archive_read_open_filename(archive_.get(), path.c_str(), kBlockBytes) != ARCHIVE_OK) {
      failAsArchive();
    }
  }

  /// Moves to the next member. False at the end.
  bool next() {
    const int status = archive_read_next_header(archive_.get(), &entry_);
    if (status == ARCHIVE_EOF) return false;
    if (status < ARCHIVE_WARN) failAsArchive();
    const char* const name = archive_entry_pathname(entry_);
    name_ = name == nullptr ? "" : name;
    if (leadsOut(name_)) fail("it has a member whose name leads out of the archive");
    return true;
  }

  bool isFile(std::string_view suffix) const {
    return name_.ends_with(suffix) && archive_entry_filetype(entry_) == AE_IFREG &&
           archive_entry_hardlink(entry_) == nullptr;
  }

  std::string stem(std::string_view suffix) const {
    return name_.substr(0, name_.size() - suffix.size());
  }

  uint64_t memberBytes() const {
    const auto bytes = static_cast<uint64_t>(std::max<la_int64_t>(archive_entry_size(entry_), 0));
    if (bytes > file_bytes_) fail("it has a member that is longer than the archive");
    return bytes;
  }

  size_t read(std::span<std::byte> bytes) {
    size_t got = 0;
    while (got < bytes.size()) {
      const auto count = archive_read_data(archive_.get(), bytes.data() + got, bytes.size() - got);
      if (count < 0) failAsArchive();
      if (count == 0) break;
      got += static_cast<size_t>(count);
    }
    return got;
  }

  [[noreturn]] void fail(const std::string& reason) const {
    throw SourceError(fmt::format("{}: {}", path_.string(), reason));
  }

 private:
  [[noreturn]] void failAsArchive() const {
    const char* const reason = archive_error_string(archive_.get());
    fail(fmt::format("cannot be read as a tar archive: {}", reason == nullptr ? "?" : reason));
  }

  std::filesystem::path path_;
  std::unique_ptr<archive, int (*)(archive*)> archive_;
  archive_entry* entry_ = nullptr;
  std::string name_;
  uint64_t file_bytes_ = 0;
};

class ArchiveData final : public ByteStream {
 public:
  explicit ArchiveData(const std::filesystem::path& path) : tar_(path) {
    do {
      if (!tar_.next()) tar_.fail("its samples have gone");
    } while (!tar_.isFile(kDataSuffix));
    size_ = tar_.memberBytes();
  }

  size_t read(std::span<std::byte> bytes) override { return tar_.read(bytes); }
  std::optional<uint64_t> size() const override { return size_; }

 private:
  TarReader tar_;
  uint64_t size_;
};

}  // namespace

std::string sigmfArchiveMeta(const std::filesystem::path& path) {
  TarReader tar(path);
  std::optional<std::string> meta;
  std::optional<std::string> meta_stem;
  std::optional<std::string> data_stem;
  while (tar.next()) {
    const bool is_meta = tar.isFile(kMetaSuffix);
    if (!is_meta && !tar.isFile(kDataSuffix)) continue;
    auto& stem = is_meta ? meta_stem : data_stem;
    if (stem) tar.fail("it holds several recordings; unpack it and name one");
    stem = tar.stem(is_meta ? kMetaSuffix : kDataSuffix);
    const uint64_t bytes = tar.memberBytes();
    if (!is_meta) continue;
    if (bytes > kMaxSigmfMetaBytes) tar.fail("its metadata are too long");
    meta.emplace(bytes, '\0');
    tar.read(std::as_writable_bytes(std::span(*meta)));
  }
  if (!meta) tar.fail("it holds no .sigmf-meta file");
  if (!data_stem) tar.fail("it holds only metadata, no .sigmf-data file");
  if (meta_stem != data_stem) tar.fail("its metadata and its samples differ in name");
  return *meta;
}

std::unique_ptr<ByteStream> openSigmfArchiveData(const std::filesystem::path& path) {
  return std::make_unique<ArchiveData>(path);
}

}  // namespace pelagrim_host
