#include "host/text_output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace pelagrim_host {

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
  // Both calls may fail; a stream in error takes nothing more and says so each time.
  std::fwrite(text.data(), 1, text.size(), stream_);
  std::fflush(stream_);
}

}  // namespace pelagrim_host
