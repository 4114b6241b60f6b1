#include "host/text_output.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace pelagrim_host {
namespace {

int g_output_error = 0;  ///< the last of standard output; one thread writes

}  // namespace

TextOutput::TextOutput(std::FILE* stream) : stream_(stream), is_terminal_(false) {
  const char* const kind = std::getenv("TERM");
  is_terminal_ = isatty(fileno(stream)) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

size_t TextOutput::columns() const {
  constexpr size_t kUsualColumns = 80;
  winsize size = {};
  if (ioctl(fileno(stream_), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
  return size.ws_col;
}

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
