#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::storage::backend::archive::detail {

/// Gives the content of one entry, from its beginning on. For one thread at a time.
///
/// Operations throw `Fault`, and what the stream of the archive throws.
class ContentReader {
 public:
  ContentReader() = default;
  ContentReader(const ContentReader&) = delete;
  ContentReader& operator=(const ContentReader&) = delete;
  virtual ~ContentReader() = default;

  /// @param count  not 0
  /// @return the number of bytes; 0 at the end, and then the checksum was right where there is one
  virtual std::size_t read(char* buffer, std::size_t count) = 0;

  /// Whether `seek` goes anywhere.
  virtual bool isSeekable() const { return false; }

  /// Goes to a position, up to the end of the content, where that costs nothing; at least to the beginning where the
  /// reader can begin anew by itself.
  /// @return false where it does not: nothing has happened then
  virtual bool seek(std::uint64_t position) {
    static_cast<void>(position);
    return false;
  }
};

}  // namespace foundation::storage::backend::archive::detail
