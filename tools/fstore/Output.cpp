#include <fstore/Output.h>

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace fstore {
namespace {

constexpr std::size_t bufferSize = 64 * 1024;

void writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written > 0)
      bytes.remove_prefix(static_cast<std::size_t>(written));
    else if (written == 0 || errno != EINTR)
      throw OutputFailure(written == 0 ? ENOSPC : errno);
  }
}

}  // namespace

Output::Output() : isTerminal_(isatty(STDOUT_FILENO) == 1) {}

void Output::write(std::string_view bytes) {
  if (buffer_.size() + bytes.size() > bufferSize)
    flush();
  if (bytes.size() >= bufferSize)
    writeAll(bytes);
  else
    buffer_.append(bytes);
}

void Output::flush() {
  // Emptied first: after a failure nothing is written twice.
  const auto bytes = std::exchange(buffer_, {});
  writeAll(bytes);
}

}  // namespace fstore
