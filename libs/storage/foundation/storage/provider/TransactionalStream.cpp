#include <foundation/storage/provider/TransactionalStream.h>

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/log/detail/ExceptionChain.h>
#include <foundation/storage/provider/ByteStream.h>

namespace foundation::storage::provider {

TransactionalStream::~TransactionalStream() = default;

std::int64_t TransactionalStream::doRead(char* buffer, std::int64_t count) { return byteStream().read(buffer, count); }

std::int64_t TransactionalStream::doWrite(const char* buffer, std::int64_t count) {
  return byteStream().write(buffer, count);
}

std::streampos TransactionalStream::doSeek(std::int64_t offset, int origin) {
  return byteStream().seek(offset, origin);
}

void TransactionalStream::logFailedAbort() noexcept {
  try {
    const log::diagnostic_logger logger("foundation::storage::provider");
    logger.write(log::Level::error, "Error in aborting a transaction.");
    if (logger.passes(log::Level::detail))
      logger.write(log::Level::detail, "Exception caught: " + log::detail::current_exception_chain_as_string());
  } catch (...) {  // no memory for the record; the abort has failed all the same
  }
}

}  // namespace foundation::storage::provider
