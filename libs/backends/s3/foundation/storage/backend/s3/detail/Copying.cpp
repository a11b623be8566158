#include <foundation/storage/backend/s3/detail/Copying.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/stream/Streams.h>

namespace foundation::storage::backend::s3::detail {

using provider::InterruptSignal;
using provider::TransactionStatus;

TransactionStatus copyFile(Session& session, const Place& source, const Place& destination,
                           provider::ReplacementPolicy policy, const provider::InterruptCallback& interrupt) {
  const auto object = requireFile(session, source);
  requireDestination(session, destination, policy);
  if (destination.key == source.key)
    throw refusal(provider::ErrorCode::InvalidLocation, destination.location, u"A file cannot be copied onto itself");
  std::function<bool()> proceed;
  if (interrupt)
    proceed = [&interrupt] { return interrupt() == InterruptSignal::Continue; };
  // Asked here, too, as a copy of one step would ask only once.
  const bool isDone = (!proceed || proceed()) && at(destination.location, [&] {
                        return stream::copyObject(session.client, source.key, object, destination.key, proceed);
                      });
  if (!isDone)
    return TransactionStatus::Aborted;
  session.folders.written(destination.parentPrefix());
  return TransactionStatus::Completed;
}

}  // namespace foundation::storage::backend::s3::detail
