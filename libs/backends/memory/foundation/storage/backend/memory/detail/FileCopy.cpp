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
  tree.requireCanPut(*original.content, destination, policy);
  const Tree::File copy{tree.makeContent(), original.isWritable};
  const auto append = [&](std::uint64_t most) {
    const auto copied = copy.content->appendFrom(*original.content, most);
    if (!copied)
      throw refusal(provider::ErrorCode::NoSpaceLeft, destination.location, u"The store is full");
    return *copied > 0;
  };
  if (!interrupt)
    append(FileContent::maximumSize);
  while (interrupt && append(stepSize))
    if (interrupt() == InterruptSignal::Abort)
      return TransactionStatus::Aborted;
  tree.put(copy, *original.content, destination, policy);
  return TransactionStatus::Completed;
}

}  // namespace foundation::storage::backend::memory::detail
