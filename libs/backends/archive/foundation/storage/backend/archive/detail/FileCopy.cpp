#include <foundation/storage/backend/archive/detail/FileCopy.h>

#include <foundation/storage/backend/archive/detail/Failure.h>

#include <algorithm>
#include <vector>

namespace foundation::storage::backend::archive::detail {

using provider::InterruptSignal;
using provider::TransactionStatus;

namespace {

constexpr std::size_t stepSize = 4 * 1024 * 1024;

bool isStopped(const provider::InterruptCallback& interrupt) {
  return interrupt && interrupt() == InterruptSignal::Abort;
}

/// Asks as often as a copy of that many bytes would.
bool isStoppedDuring(std::uint64_t size, const provider::InterruptCallback& interrupt) {
  for (std::uint64_t done = 0; done < size; done += stepSize)
    if (isStopped(interrupt))
      return true;
  return false;
}

/// @return none where it was stopped
std::shared_ptr<StagedContent> copyOf(const StagedContent& original, const provider::InterruptCallback& interrupt) {
  auto copy = std::make_shared<StagedContent>();
  std::vector<char> buffer(static_cast<std::size_t>(std::min<std::uint64_t>(original.size(), stepSize)));
  while (const auto got = original.read(copy->size(), buffer.data(), buffer.size())) {
    copy->write(std::nullopt, buffer.data(), got);
    if (isStopped(interrupt))
      return nullptr;
  }
  return copy;
}

}  // namespace

TransactionStatus copyAside(Archive& archive, const Place& source, const Place& destination,
                            provider::ReplacementPolicy policy, const provider::InterruptCallback& interrupt) {
  archive.requireWritten(source.location);
  const auto original = archive.content(source);
  archive.requireCanPut(destination, policy, &source);
  auto copy = original;
  if (original.staged) {
    copy.staged = at(destination.location, [&] { return copyOf(*original.staged, interrupt); });
    if (!copy.staged)
      return TransactionStatus::Aborted;
  } else if (isStoppedDuring(original.size.value_or(0), interrupt)) {
    return TransactionStatus::Aborted;
  }
  archive.put(copy, destination, policy, &source);
  return TransactionStatus::Completed;
}

}  // namespace foundation::storage::backend::archive::detail
