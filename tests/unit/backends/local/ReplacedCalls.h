#pragma once

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

namespace foundation::storage::backend::local {

/// Puts other system calls in the place of the system's for the time of a scope. Not while another one does.
class ReplacedCalls {
 public:
  explicit ReplacedCalls(const detail::SystemCalls& calls) : calls_(calls) { detail::setSystemCalls(calls_); }
  ~ReplacedCalls() { detail::setSystemCalls(detail::realSystemCalls); }
  ReplacedCalls(const ReplacedCalls&) = delete;
  ReplacedCalls& operator=(const ReplacedCalls&) = delete;

 private:
  const detail::SystemCalls calls_;
};

}  // namespace foundation::storage::backend::local
