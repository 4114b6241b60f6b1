#include "host/process/text_output.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace pelagrim_host {
namespace {

int g_output_error = 0;  ///< the last one on standard output; only one thread writes

}  // namespace

void TextOutput::write(std::string_view text) {
  errno = 0;
  const bool written =
      std::fwrite(text.data(), 1, text.size(), stream_) == text.size() && std::fflush(stream_) == 0;
  if (!written && stream_ == stdout && errno != EPIPE) g_output_error = errno;
}

void requireOutput() {
  if (g_output_error == 0) return;
  throw std::runtime_error(
      fmt::format("cannot write to standard output: {}", std::strerror(g_output_error)));
}

}  // namespace pelagrim_host
