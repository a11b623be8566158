#pragma once

#include <foundation/storage/provider/detail/OnceState.h>

#include <memory>

namespace foundation::storage::provider::detail {

/// As `LazyValue`, but the value lies inside: for values that are asked for more often than not.
template <class T>
class InPlaceLazyValue {
 public:
  InPlaceLazyValue() noexcept {}  // NOLINT(modernize-use-equals-default): the union holds nothing yet
  InPlaceLazyValue(const InPlaceLazyValue&) = delete;
  InPlaceLazyValue& operator=(const InPlaceLazyValue&) = delete;
  ~InPlaceLazyValue() {
    if (once_.isDone())
      std::destroy_at(&value_);
  }

  /// The value, computed by `produce()` if this is the first request.
  template <class Producer>
  const T& get(const Producer& produce) const {
    once_.run([&] { std::construct_at(&value_, produce()); });
    return value_;
  }

 private:
  union {
    mutable T value_;
  };
  mutable OnceState once_;
};

}  // namespace foundation::storage::provider::detail
