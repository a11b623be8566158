#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <chrono>
#include <optional>
#include <string>

namespace fstore {

struct WatchOptions {
  bool isRecursive = false;
  /// How often to look; none: the store's own events, and where it has none, every second.
  std::optional<std::chrono::milliseconds> period;
  Format format = Format::Text;
};

/// Prints a line for each change in a folder, or of a file, until the program is interrupted (SIGINT or
/// SIGTERM). That what is watched goes away ends it, too, and is reported.
///
/// The first such signal asks to stop, which may take until a look or a write is done; the second ends the program.
void watch(const Session& session, const std::string& argument, const WatchOptions& options);

}  // namespace fstore
