#include "plugin/message_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "files/c_locale.h"

namespace pelagrim {

void MessageLog::logLine(std::string line) {
  if (lines.size() < kMaxLines) lines.push_back(std::move(line));
}

bool MessageLog::takeLine(char* buf, size_t len) noexcept {
  if (lines.empty()) return false;
  const std::string& oldest = lines.front();
  const size_t bytes = std::min(oldest.size(), len - 1);
  std::copy_n(oldest.data(), bytes, buf);
  buf[bytes] = '\0';
  lines.erase(lines.begin());
  return true;
}

std::string messageText(size_t buffer_bytes, const char* format, ...) {
  char text[256] = "";
  const CLocale c_locale;
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, std::min(buffer_bytes, sizeof text), format, arguments);
  va_end(arguments);
  return text;
}

}  // namespace pelagrim
