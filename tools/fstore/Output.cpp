#include "Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace fstore {

void Output::write(std::string_view bytes) noexcept {
  if (error_ == 0 && std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
    error_ = errno;
}

void Output::finish(Report& report) noexcept {
  using foundation::storage::provider::ErrorCode;
  if (std::fflush(stdout) != 0 && error_ == 0)
    error_ = errno;
  if (error_ != 0)
    report.fail("standard output", error_ == ENOSPC ? ErrorCode::NoSpaceLeft : ErrorCode::IOError,
                std::generic_category().message(error_));
}

bool Output::isTerminal() noexcept { return isatty(STDOUT_FILENO) == 1; }

}  // namespace fstore
