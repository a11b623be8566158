#include <foundation/storage/provider/detail/CaughtFailure.h>

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/log/detail/ExceptionChain.h>

#include <new>

namespace foundation::storage::provider::detail {

void logCaughtFailure(std::string_view what) noexcept {
  try {
    const log::diagnostic_logger logger("foundation::storage::provider");
    logger.write(log::Level::error, what);
    if (logger.passes(log::Level::detail))
      logger.write(log::Level::detail, "Exception caught: " + log::detail::current_exception_chain_as_string());
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace foundation::storage::provider::detail
