#include "host/view/frame_line.h"

#include <algorithm>

#include "host/text/text_width.h"

namespace pelagrim_host {
namespace {

constexpr std::string_view kReset = "\x1b[0m";

std::string_view attributes(Ink ink, bool colours) {
  switch (ink) {
    case Ink::kPlain:
      return "";
    case Ink::kTitle:
      return colours ? "\x1b[1;97;44m" : "\x1b[1;7m";
    case Ink::kHeading:
      return "\x1b[1;4m";
    case Ink::kStrong:
      return "\x1b[1m";
    case Ink::kFaint:
      return "\x1b[2m";
    case Ink::kBar:
      return colours ? "\x1b[36m" : "";
    case Ink::kWarning:
      return colours ? "\x1b[1;33m" : "\x1b[1m";
  }
  return "";
}

}  // namespace

FrameLine& FrameLine::add(std::string_view text, Ink ink) {
  const FittedText fitted = fitText(text, columns_ - used_);
  if (fitted.columns == 0) return *this;
  const std::string_view marks = attributes(ink, colours_);
  text_.append(marks).append(fitted.text).append(marks.empty() ? "" : kReset);
  used_ += fitted.columns;
  return *this;
}

FrameLine& FrameLine::padTo(size_t column, Ink ink) {
  const size_t end = std::min(column, columns_);
  return end <= used_ ? *this : add(std::string(end - used_, ' '), ink);
}

FrameLine& FrameLine::addRight(std::string_view text, Ink ink) {
  const size_t width = textWidth(text);
  if (used_ + width > columns_) return *this;
  return padTo(columns_ - width, ink).add(text, ink);
}

std::string FrameLine::text() {
  padTo(columns_);
  return text_;
}

}  // namespace pelagrim_host
