#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace fstore {

/// Standard output could not be written. It ends the command: nobody would see the rest.
class OutputFailure : public std::system_error {
 public:
  explicit OutputFailure(int error) : std::system_error(error, std::generic_category()) {}
};

/// Standard output, buffered, with every failure noticed. Whoever is done calls `flush()`: destroying it
/// drops what is still buffered.
class Output {
 public:
  Output();

  /// Throws `OutputFailure`; so does `flush()`.
  void write(std::string_view bytes);
  void flush();

  bool isTerminal() const { return isTerminal_; }

 private:
  bool isTerminal_;
  std::string buffer_;
};

}  // namespace fstore
