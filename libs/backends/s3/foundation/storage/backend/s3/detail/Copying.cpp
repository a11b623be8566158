#include <foundation/storage/backend/s3/detail/Copying.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/stream/Streams.h>

namespace foundation::storage::backend::s3::detail {

using client::StoreFailure;
using provider::ErrorCode;
using provider::InterruptSignal;
using provider::TransactionStatus;

bool copyObject(const client::Client& client, const Place& source, const client::ObjectInfo& object,
                const Place& destination, const std::function<bool()>& proceed) {
  return at(destination.location, [&] {
    try {
      return stream::copyObject(client, source.key, object, destination.key, proceed);
    } catch (const StoreFailure& failure) {
      if (failure.errorCode() == ErrorCode::ResourceNotFound || failure.errorCode() == ErrorCode::ResourceInUse)
        at(source.location, [] { throw; });
      throw;
    }
  });
}

TransactionStatus copyFile(Session& session, const Place& source, const Place& destination,
                           provider::ReplacementPolicy policy, const provider::InterruptCallback& interrupt) {
  const auto object = requireFile(session, source);
  requireDestination(session, destination, policy);
  if (destination.key == source.key)
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"A file cannot be copied onto itself");
  std::function<bool()> proceed;
  if (interrupt)
    proceed = [&interrupt] { return interrupt() == InterruptSignal::Continue; };
  // Asked here, too, as a copy of one step would ask only once.
  if ((proceed && !proceed()) || !copyObject(session.client, source, object, destination, proceed))
    return TransactionStatus::Aborted;
  session.folders.written(destination.key);
  return TransactionStatus::Completed;
}

}  // namespace foundation::storage::backend::s3::detail
