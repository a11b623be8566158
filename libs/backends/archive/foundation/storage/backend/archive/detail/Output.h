#pragma once

#include <foundation/storage/provider/TransactionalStream.h>

#include <cstdint>
#include <string_view>

namespace foundation::storage::backend::archive::detail {

/// Where an archive is written to, from its beginning to its end, through a buffer.
class Output {
 public:
  explicit Output(provider::TransactionalStream& stream) : stream_(stream) {}

  /// Throws what the stream throws.
  void write(std::string_view bytes);
  /// Hands on what the buffer holds; to be called at the end.
  void flush();

  /// How much was written, in bytes.
  std::uint64_t position() const { return position_; }

 private:
  static constexpr std::size_t bufferSize = 256 * 1024;

  void writeThrough(std::string_view bytes);

  provider::TransactionalStream& stream_;
  std::string buffer_;
  std::uint64_t position_ = 0;
};

}  // namespace foundation::storage::backend::archive::detail
