#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "host/view/frame_line.h"
#include "host/view/terminal_screen.h"

namespace pelagrim_host {

/// How the terminal can be drawn on.
struct FrameStyle {
  bool colours = false;
  bool unicode = false;
};

/// One picture for a window: lines that are filled from the top. Lines that do not fit are dropped.
class Frame {
 public:
  Frame(WindowSize window, FrameStyle style) : window_(window), style_(style) {}

  /// An empty line of the window's width.
  FrameLine line() const { return {window_.columns, style_.colours}; }

  void add(FrameLine line) {
    if (left() > 0) lines_.push_back(line.text());
  }

  /// Adds empty lines until `rows` are left.
  void padTo(size_t rows) {
    while (left() > rows) add(line());
  }

  size_t left() const { return window_.rows - lines_.size(); }
  size_t columns() const { return window_.columns; }

  /// Whether there is room for empty lines between its parts.
  bool roomy() const { return window_.rows >= kRoomyRows; }

  bool unicode() const { return style_.unicode; }

  /// The lines, one for every row of the window.
  std::vector<std::string> finish() {
    padTo(0);
    return std::move(lines_);
  }

 private:
  static constexpr size_t kRoomyRows = 16;

  WindowSize window_;
  FrameStyle style_;
  std::vector<std::string> lines_;
};

}  // namespace pelagrim_host
