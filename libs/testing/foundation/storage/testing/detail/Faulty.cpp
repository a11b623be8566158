#include <foundation/storage/testing/detail/Faulty.h>

#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/testing/detail/Guarded.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::testing::detail {

using provider::ByteStream;
using provider::StreamClosePolicy;
using provider::TransactionalStream;

namespace {

/// For operations of streams.
/// @tparam Failure  the subclass of `ByteStreamFailure` that the operation throws
template <class Failure, class Call>
auto guardedStream(Faults& faults, Operation operation, const std::string& name, const Call& call) {
  const auto fail = [&](provider::ErrorCode code) {
    Failure failure(name + ": a fault was asked for", code);
    failure.setExceptionContexts({provider::ExceptionContext(u"fault")});
    throw failure;
  };
  return guarded(faults, operation, name, fail, call);
}

std::int64_t shortened(std::int64_t count, const Faults::Verdict& verdict) {
  return verdict.mostBytes ? std::min(count, *verdict.mostBytes) : count;
}

}  // namespace

template <class Stream>
FaultyStream<Stream>::FaultyStream(std::unique_ptr<Stream> inner, std::shared_ptr<Faults> faults,
                                   const provider::StorageIRI& location)
    : faults_(std::move(faults)), open_(*faults_), name_(toLogText(location)), inner_(std::move(inner)) {}

template <class Stream>
std::int64_t FaultyStream<Stream>::doRead(char* buffer, std::int64_t count) {
  return guardedStream<provider::ByteStreamReadFailure>(
      *faults_, Operation::Read, name_,
      [&](const Faults::Verdict& verdict) { return inner_->read(buffer, shortened(count, verdict)); });
}

template <class Stream>
std::int64_t FaultyStream<Stream>::doWrite(const char* buffer, std::int64_t count) {
  return guardedStream<provider::ByteStreamWriteFailure>(
      *faults_, Operation::Write, name_,
      [&](const Faults::Verdict& verdict) { return inner_->write(buffer, shortened(count, verdict)); });
}

template <class Stream>
std::streampos FaultyStream<Stream>::doSeek(std::int64_t offset, int origin) {
  return guardedStream<provider::ByteStreamSeekFailure>(
      *faults_, Operation::Seek, name_, [&](const Faults::Verdict&) { return inner_->seek(offset, origin); });
}

template <class Stream>
void FaultyStream<Stream>::doClose() {
  if constexpr (std::is_same_v<Stream, ByteStream>)
    guardedStream<provider::ByteStreamCloseFailure>(*faults_, Operation::CloseStream, name_,
                                                    [&](const Faults::Verdict&) { inner_->close(); });
}

template class FaultyStream<ByteStream>;
template class FaultyStream<TransactionalStream>;

FaultyTransaction::FaultyTransaction(std::unique_ptr<TransactionalStream> inner, std::shared_ptr<Faults> faults,
                                     const provider::StorageIRI& location)
    : faults_(faults), location_(location), stream_(std::move(inner), std::move(faults), location) {}

void FaultyTransaction::doClose(const StreamClosePolicy& policy) {
  const auto operation = policy == StreamClosePolicy::Commit ? Operation::Commit : Operation::Abort;
  guardedAt(*faults_, operation, location_, [&] { stream_.inner().close(policy); });
}

FaultyListing::FaultyListing(std::unique_ptr<provider::IFolderEntryIterator> inner, std::shared_ptr<Faults> faults,
                             provider::StorageIRI location)
    : inner_(std::move(inner)), faults_(std::move(faults)), location_(std::move(location)) {}

bool FaultyListing::hasNext() const {
  return guardedAt(*faults_, Operation::ListNext, location_, [&] { return inner_->hasNext(); });
}

void FaultyListing::next() {
  guardedAt(*faults_, Operation::ListNext, location_, [&] { inner_->next(); });
}

void FaultyListing::reset() {
  guardedAt(*faults_, Operation::List, location_, [&] { inner_->reset(); });
}

}  // namespace foundation::storage::testing::detail
