#include <foundation/storage/provider/detail/CaughtFailure.h>

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/log/detail/ExceptionChain.h>

namespace foundation::storage::provider::detail {

void logCaughtFailure(std::string_view what) {
  const log::diagnostic_logger logger("foundation::storage::provider");
  logger.write(log::Level::error, what);
  if (logger.passes(log::Level::detail))
    logger.write(log::Level::detail, "Exception caught: " + log::detail::current_exception_chain_as_string());
}

}  // namespace foundation::storage::provider::detail
