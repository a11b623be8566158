#pragma once

#include "Report.h"

#include <cstddef>
#include <string_view>

namespace fstore {

/// Standard output, written in large pieces and checked: a full disk behind it is a failure of the
/// command.
class Output {
 public:
  void write(std::string_view bytes) noexcept;

  /// To be called at the end; what could not be written is reported.
  void finish(Report& report) noexcept;

  /// Whether somebody reads it on a terminal.
  static bool isTerminal() noexcept;

  /// Whether writing failed, so that more of it is pointless.
  bool hasFailed() const noexcept { return error_ != 0; }

 private:
  int error_ = 0;
};

}  // namespace fstore
