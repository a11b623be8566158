#include <foundation/storage/provider/TransactionalStream.h>

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>

#include <exception>
#include <sstream>

namespace foundation::storage::provider {
namespace {

/// Writes what the exception being handled says, and what is nested in it. The texts of the library's own
/// failures show whole locations, and so perhaps passwords: of those the code is given, and the location as it
/// may stand in a log.
void writeReason(std::ostream& out) {
  try {
    throw;
  } catch (const Exception& failure) {
    out << failure.getErrorCode() << " at " << toLogText(failure.getStorageIRI());
  } catch (const ByteStreamFailure& failure) {
    out << failure.getErrorCode();
  } catch (const std::exception& failure) {
    out << failure.what();
    try {
      std::rethrow_if_nested(failure);
    } catch (...) {
      out << ", because of: ";
      writeReason(out);
    }
  } catch (...) {
    out << "an exception of unknown type";
  }
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
    if (!logger.passes(log::Level::detail))
      return;
    std::ostringstream text;
    text << "Exception caught: ";
    writeReason(text);
    logger.write(log::Level::detail, text.str());
  } catch (...) {  // no memory for the record; the abort has failed all the same
  }
}

}  // namespace foundation::storage::provider
