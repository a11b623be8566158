#include <foundation/storage/backend/support/Log.h>

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/log/detail/ExceptionChain.h>

namespace foundation::storage::backend::support {
namespace {

const log::diagnostic_logger& logger() {
  static const log::diagnostic_logger logger("foundation::storage::provider");
  return logger;
}

}  // namespace

void logError(const std::string& text) { logger().write(log::Level::error, text); }

void logCaughtFailure(const char* what) noexcept {
  try {
    logError(what);
    if (logger().passes(log::Level::detail))
      logger().write(log::Level::detail, "Exception caught: " + log::detail::current_exception_chain_as_string());
  } catch (...) {  // the record is lost: nobody here could deal with it
  }
}

}  // namespace foundation::storage::backend::support
