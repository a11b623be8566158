#include <foundation/storage/backend/s3/detail/stream/Transaction.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

Transaction::Transaction(Target target, WriteMode mode, std::function<void()> published)
    : stream_(std::move(target), std::move(mode), std::move(published)) {}

void Transaction::doClose(const provider::StreamClosePolicy& policy) {
  const std::lock_guard lock(mutex_);
  if (policy == provider::StreamClosePolicy::Commit)
    stream_.commit();
  else
    stream_.abort();
}

}  // namespace foundation::storage::backend::s3::detail::stream
