#include <foundation/storage/provider/detail/StreamCopy.h>

#include <foundation/storage/provider/ByteStreamDevice.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/FailureConversion.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/provider/detail/ZeroedBuffer.h>

namespace foundation::storage::provider::detail {
namespace {

constexpr std::size_t blockSize = 4 * 1024 * 1024;

constexpr ByteStreamOpenOptions destinationOptions{.access = ByteStreamAccess::ReadWrite,
                                                   .create = ByteStreamCreate::Create,
                                                   .truncate = ByteStreamTruncate::TruncateExisting,
                                                   .append = ByteStreamAppend::Overwrite};

/// The blocks of a copy: the first is read before the destination is opened, so that a source that
/// cannot be read leaves the destination alone.
class Blocks {
 public:
  explicit Blocks(std::unique_ptr<ByteStream> source) : source_(std::move(source)) { readNext(); }

  bool hasBlock() const { return size_ > 0; }
  void readNext() { size_ = source_->read(buffer_.data(), static_cast<std::int64_t>(blockSize)); }

  /// Writes the whole block.
  /// @return whether the last write took anything
  template <class Device>
  bool writeTo(const Device& device) const {
    for (std::int64_t done = 0; done < size_;) {
      const auto written = device.write(buffer_.data() + done, size_ - done);
      if (written <= 0)
        return false;
      done += written;
    }
    return true;
  }

 private:
  ZeroedBuffer buffer_{blockSize};
  std::unique_ptr<ByteStream> source_;
  std::int64_t size_ = 0;
};

template <class Device>
TransactionStatus copyBlocks(Blocks& blocks, const Device& device, const InterruptCallback& interrupt) {
  while (blocks.hasBlock()) {
    const bool tookAll = blocks.writeTo(device);
    if (interrupt && interrupt() == InterruptSignal::Abort)
      return TransactionStatus::Aborted;
    if (!tookAll)
      return TransactionStatus::Completed;
    blocks.readNext();
  }
  return TransactionStatus::Completed;
}

TransactionStatus copyAtomically(Blocks& blocks, const StorageItem& destination, const InterruptCallback& interrupt) {
  auto stream = destination.openTransactionalStream(destinationOptions);
  const TransactionalStreamDevice device(stream);
  const auto status = copyBlocks(blocks, device, interrupt);
  device.close(status == TransactionStatus::Aborted ? StreamClosePolicy::Abort : StreamClosePolicy::Commit);
  return status;
}

TransactionStatus copyPlainly(Blocks& blocks, const StorageItem& destination, const InterruptCallback& interrupt) {
  auto stream = destination.openStream(destinationOptions);
  const ByteStreamDevice device(stream);
  const auto status = copyBlocks(blocks, device, interrupt);
  try {
    device.close();
  } catch (const ByteStreamFailure& failure) {
    throw toException(failure, destination.getLocation());
  }
  return status;
}

}  // namespace

TransactionStatus copyThroughStreams(const StorageItem& source, const StorageItem& destination,
                                     const CopyFileOptions& options) {
  Blocks blocks(source.openReadOnlyStream());
  return options.transactionPolicy == TransactionPolicy::Atomic
             ? copyAtomically(blocks, destination, options.interruptCallback)
             : copyPlainly(blocks, destination, options.interruptCallback);
}

}  // namespace foundation::storage::provider::detail
