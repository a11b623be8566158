#pragma once

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/TransactionalStream.h>
#include <foundation/storage/testing/Faults.h>

#include <memory>
#include <string>

/// What a `FaultyProvider` puts around the streams and listings of its inner provider.
namespace foundation::storage::testing::detail {

/// Fails as its plan says.
/// @tparam Stream  `ByteStream`, or `TransactionalStream`, which is closed by `FaultyTransaction` instead
template <class Stream>
class FaultyStream final : public provider::ByteStream {
 public:
  FaultyStream(std::unique_ptr<Stream> inner, std::shared_ptr<Faults> faults, const provider::StorageIRI& location);

  Stream& inner() { return *inner_; }

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override;

  std::shared_ptr<Faults> faults_;
  Faults::OpenStream open_;
  std::string name_;
  std::unique_ptr<Stream> inner_;
};

/// Dropping it drops the inner transaction, which aborts itself.
class FaultyTransaction final : public provider::TransactionalStream {
 public:
  FaultyTransaction(std::unique_ptr<provider::TransactionalStream> inner, std::shared_ptr<Faults> faults,
                    const provider::StorageIRI& location);

 private:
  void doClose(const provider::StreamClosePolicy& policy) override;
  provider::ByteStream& doGetByteStream() override { return stream_; }

  std::shared_ptr<Faults> faults_;
  provider::StorageIRI location_;
  FaultyStream<provider::TransactionalStream> stream_;
};

class FaultyListing final : public provider::IFolderEntryIterator {
 public:
  FaultyListing(std::unique_ptr<provider::IFolderEntryIterator> inner, std::shared_ptr<Faults> faults,
                provider::StorageIRI location);

  provider::FolderEntry current() const override { return inner_->current(); }
  bool hasNext() const override;
  void next() override;
  void reset() override;

 private:
  std::unique_ptr<provider::IFolderEntryIterator> inner_;
  std::shared_ptr<Faults> faults_;
  provider::StorageIRI location_;
};

}  // namespace foundation::storage::testing::detail
