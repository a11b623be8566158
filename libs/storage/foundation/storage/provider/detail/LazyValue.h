#pragma once

#include <foundation/storage/provider/detail/OnceWord.h>

#include <cstdint>

namespace foundation::storage::provider::detail {

/// A value that is computed on the first request and kept, with the promises of `OnceWord`.
///
/// It takes one word until it is computed: locations hold many of these, and most are never asked for.
/// For the same reason the producer is not stored but handed in by the one accessor that owns the value.
template <class T>
class LazyValue {
 public:
  LazyValue() noexcept = default;
  LazyValue(const LazyValue&) = delete;
  LazyValue& operator=(const LazyValue&) = delete;
  ~LazyValue() { delete peek(); }

  /// The value, computed by `produce()` if this is the first request.
  template <class Producer>
  const T& get(const Producer& produce) const {
    return *toPointer(word_.get([&produce] { return toWord(new T(produce())); }));
  }

  /// The value, or null where it was never asked for. Not to be called while others may ask for it.
  T* peek() const noexcept { return toPointer(word_.peek()); }

 private:
  static std::uint64_t toWord(T* value) { return reinterpret_cast<std::uintptr_t>(value); }
  static T* toPointer(std::uint64_t word) { return reinterpret_cast<T*>(static_cast<std::uintptr_t>(word)); }

  OnceWord word_;
};

}  // namespace foundation::storage::provider::detail
