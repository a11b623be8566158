#include <foundation/storage/backend/memory/detail/FileCopy.h>

#include <foundation/storage/backend/memory/detail/Failure.h>

namespace foundation::storage::backend::memory::detail {

using provider::InterruptSignal;
using provider::TransactionStatus;

namespace {

constexpr std::uint64_t stepSize = 4 * 1024 * 1024;

}  // namespace

TransactionStatus copyAside(Tree& tree, const Place& source, const Place& destination,
                            provider::ReplacementPolicy policy, const std::function<InterruptSignal()>& interrupt) {
  const auto original = tree.file(source);
  tree.requireCopyable(*original.content, destination, policy);
  const Tree::File copy{tree.makeContent(), original.isWritable};
  for (;;) {
    const auto copied = copy.content->appendFrom(*original.content, interrupt ? stepSize : FileContent::maximumSize);
    if (!copied)
      throw refusal(provider::ErrorCode::NoSpaceLeft, destination.location, u"The store is full");
    if (*copied == 0)
      break;
    if (interrupt && interrupt() == InterruptSignal::Abort)
      return TransactionStatus::Aborted;
  }
  tree.put(copy, *original.content, destination, policy);
  return TransactionStatus::Completed;
}

}  // namespace foundation::storage::backend::memory::detail
