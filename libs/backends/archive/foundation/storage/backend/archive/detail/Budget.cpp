#include <foundation/storage/backend/archive/detail/Budget.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <string>

namespace foundation::storage::backend::archive::detail {

void Budget::note(std::size_t entry, std::uint64_t bytes) {
  auto& given = given_[entry];
  auto before = given.load(std::memory_order_relaxed);
  while (before < bytes && !given.compare_exchange_weak(before, bytes, std::memory_order_relaxed)) {
  }
  if (before >= bytes)
    return;
  if (total_.fetch_add(bytes - before, std::memory_order_relaxed) + (bytes - before) > limits_.totalSize)
    throw Fault(provider::ErrorCode::FileTooLarge, "the archive's entries give more than the " +
                                                       std::to_string(limits_.totalSize) +
                                                       " bytes that the option max-total-size allows");
}

void Budget::requireRatio(const Limits& limits, std::uint64_t produced, std::uint64_t consumed) {
  if (produced <= Limits::freeOfRatio || produced / limits.ratio <= consumed)
    return;
  throw Fault(provider::ErrorCode::FileTooLarge, "more than " + std::to_string(limits.ratio) +
                                                     " bytes come out of one, which is what the option max-ratio "
                                                     "allows");
}

}  // namespace foundation::storage::backend::archive::detail
