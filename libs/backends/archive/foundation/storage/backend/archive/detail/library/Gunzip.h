#pragma once

#include <foundation/storage/backend/archive/detail/Container.h>

#include <zlib.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// Decodes a gzip (RFC 1952), of one member or several, and checks what libarchive does not: the checksum and the size
/// of each. For one thread at a time.
class Gunzip {
 public:
  /// Whether it begins as one does.
  static bool isBegun(Input& input);

  Gunzip();
  Gunzip(const Gunzip&) = delete;
  Gunzip& operator=(const Gunzip&) = delete;
  ~Gunzip();

  /// The next part of what was compressed, until the next call; empty at the end. What comes behind the last member, as
  /// on tapes, is left out. Throws `Fault`, and what the input throws.
  std::string_view next(Input& input);

  /// How much has come out, in bytes.
  std::uint64_t produced() const { return produced_; }

 private:
  bool refill(Input& input);
  bool beginMember(Input& input);

  z_stream stream_{};
  std::vector<char> in_, out_;
  std::uint64_t consumed_ = 0;  ///< of the container, in bytes
  std::uint64_t produced_ = 0;
  bool isInMember_ = true;
  bool isAtEnd_ = false;
};

}  // namespace foundation::storage::backend::archive::detail::library
