#include <foundation/storage/backend/s3/detail/Opening.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/stream/Streams.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>
#include <foundation/storage/provider/SafeByteStream.h>

#include <utility>

namespace foundation::storage::backend::s3::detail {

using client::StoreFailure;
using provider::ByteStream;
using provider::ByteStreamAccess;
using provider::ByteStreamAppend;
using provider::ByteStreamCreate;
using provider::ByteStreamOpenOptions;
using provider::ByteStreamTruncate;
using provider::ErrorCode;
using provider::StreamClosePolicy;
using provider::TransactionalStream;

namespace {

stream::Target targetAt(const SessionPtr& session, const Place& place) {
  return {session->client, place.key, place.location};
}

/// What is done when a file has come to be.
std::function<void()> publishedIn(const SessionPtr& session, const Place& place) {
  return [session, key = place.key] { session->folders.written(key); };
}

stream::WriteMode modeFor(const Session& session, const Place& place, const ByteStreamOpenOptions& options) {
  const bool keeps = options.truncate == ByteStreamTruncate::PreserveExisting;
  if (!keeps && options.create == ByteStreamCreate::Create)
    return {};
  auto object =
      options.create == ByteStreamCreate::NeverCreate ? requireFile(session, place) : findFile(session, place);
  if (!keeps || !object)
    return {};
  if (options.append == ByteStreamAppend::Overwrite && object->size > 0)
    throw refusal(ErrorCode::UnsupportedOperation, place.location,
                  u"What is there can be replaced or appended to, but not written into");
  return {.kept = std::move(object)};
}

/// What is written to a transaction; that is closed by others.
class TransactionContent final : public ByteStream {
 public:
  explicit TransactionContent(TransactionalStream& transaction) : transaction_(transaction) {}

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override { return transaction_.read(buffer, count); }
  std::int64_t doWrite(const char* buffer, std::int64_t count) override { return transaction_.write(buffer, count); }
  std::streampos doSeek(std::int64_t offset, int origin) override { return transaction_.seek(offset, origin); }
  void doClose() override {}

  TransactionalStream& transaction_;
};

}  // namespace

std::unique_ptr<ByteStream> openForReading(const SessionPtr& session, const Place& place) {
  return at(place.location, [&] {
    if (place.isRoot())
      throw noFile(*session, place);
    try {
      return stream::openReading(targetAt(session, place));
    } catch (const StoreFailure& failure) {
      if (failure.errorCode() == ErrorCode::ResourceNotFound)
        throw noFile(*session, place);
      throw;
    }
  });
}

std::unique_ptr<ByteStream> openForWriting(const SessionPtr& session, const Place& place,
                                           const ByteStreamOpenOptions& options) {
  requireRoomForFile(*session, place);
  auto mode = modeFor(*session, place, options);
  return at(place.location, [&] {
    return stream::openWriting(targetAt(session, place), std::move(mode), publishedIn(session, place));
  });
}

std::unique_ptr<TransactionalStream> openTransactionally(const SessionPtr& session, const Place& place,
                                                         const ByteStreamOpenOptions& options) {
  requireRoomForFile(*session, place);
  if (options.create == ByteStreamCreate::NeverCreate)
    requireFile(*session, place);
  std::shared_ptr<TransactionalStream> transaction = at(place.location, [&] {
    return stream::openTransaction(targetAt(session, place), {}, publishedIn(session, place));
  });
  const bool isReadable = options.access == ByteStreamAccess::ReadWrite;
  auto content =
      std::make_shared<provider::SafeByteStream>(std::make_unique<TransactionContent>(*transaction), isReadable, true);
  // A folder may have come to be there since.
  const auto finish = [session, place, transaction](const StreamClosePolicy& policy) {
    if (policy == StreamClosePolicy::Commit && hasFolder(*session, place))
      throw refusal(ErrorCode::InvalidLocation, place.location, u"This is a folder");
    transaction->close(policy);
  };
  return std::make_unique<provider::GenericTransactionalStream<ByteStream>>(std::move(content), finish);
}

void truncateToSize(const SessionPtr& session, const Place& place, std::uint64_t newSize) {
  const auto object = requireFile(*session, place);
  at(place.location, [&] { stream::resizeObject(targetAt(session, place), object, newSize); });
}

}  // namespace foundation::storage::backend::s3::detail
