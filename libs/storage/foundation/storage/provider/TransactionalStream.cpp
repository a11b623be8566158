#include <foundation/storage/provider/TransactionalStream.h>

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/log/detail/ExceptionChain.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>

#include <sstream>

namespace foundation::storage::provider {
namespace {

/// What the exception being handled says. The texts of the library's own failures show whole locations, and
/// so perhaps passwords: of those the code is given, and the location as it may stand in a log.
std::string reasonForLog() {
  std::ostringstream text;
  try {
    throw;
  } catch (const Exception& failure) {
    text << failure.getErrorCode() << " at " << toLogText(failure.getStorageIRI());
  } catch (const ByteStreamFailure& failure) {
    text << failure.getErrorCode();
  } catch (...) {
    text << log::detail::current_exception_chain_as_string();
  }
  return text.str();
}

}  // namespace

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
      logger.write(log::Level::detail, "Exception caught: " + reasonForLog());
  } catch (...) {  // no memory for the record; the abort has failed all the same
  }
}

}  // namespace foundation::storage::provider
