#pragma once

#include <fl/i18n/Convert.h>

#include <atomic>
#include <memory>
#include <string>

namespace foundation::core::except::detail {

/// The narrow text behind an exception's `what()`: made on the first request, by several threads at
/// once if they race (one result wins), and never shared between copies of an exception.
class CachedText {
 public:
  CachedText() = default;
  CachedText(const CachedText&) noexcept {}
  CachedText& operator=(const CachedText&) noexcept {
    reset();
    return *this;
  }
  ~CachedText() { reset(); }

  template <class Producer>
  const char* get(const Producer& producer) const noexcept {
    try {
      const std::string* known = text_.load(std::memory_order_acquire);
      if (known == nullptr) {
        auto fresh = std::make_unique<const std::string>(fl::i18n::to_string(producer()));
        if (text_.compare_exchange_strong(known, fresh.get(), std::memory_order_acq_rel))
          known = fresh.release();
      }
      return known->c_str();
    } catch (...) {
      return "failure whose text could not be made";
    }
  }

  void reset() const noexcept { delete text_.exchange(nullptr, std::memory_order_acq_rel); }

 private:
  mutable std::atomic<const std::string*> text_{nullptr};
};

}  // namespace foundation::core::except::detail
