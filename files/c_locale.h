#pragma once

#include <locale.h>

#include <new>

namespace pelagrim {

/// While it lives, this thread reads and writes numbers with a decimal point, whatever locale the
/// host has set; other threads and the host's own locale are left alone. Hold it around
/// formatting and scanning only, never across a call into the host.
class CLocale {
 public:
  /// Throws std::bad_alloc if there is no memory for a locale.
  CLocale() : c_(newlocale(LC_ALL_MASK, "C", nullptr)) {
    if (c_ == nullptr) throw std::bad_alloc();
    hosts_ = uselocale(c_);
  }
  ~CLocale() {
    uselocale(hosts_);
    freelocale(c_);
  }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;

 private:
  locale_t c_;
  locale_t hosts_;
};

}  // namespace pelagrim
