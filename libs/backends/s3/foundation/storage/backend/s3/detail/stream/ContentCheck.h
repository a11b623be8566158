#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/wire/Digest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::stream {

/// Compares content that is read, from the beginning to the end, with the checksum that the store has of it: the MD5 of
/// an object stored in one piece, else, where the object says how it was written, the MD5 of its parts' MD5s.
class ContentCheck {
 public:
  explicit ContentCheck(const client::ObjectInfo& object);

  /// Takes note of bytes that were read. What was seen before, and what leaves a gap, does not count.
  /// @return false when all content was seen and is not what was stored, now or before
  bool accepts(std::uint64_t offset, std::string_view bytes);

 private:
  void add(std::string_view bytes);
  void endPart();
  std::string found() const;

  const std::uint64_t size_;
  std::string expected_;        ///< empty where nothing is known
  std::uint64_t partSize_ = 0;  ///< as it was written; 0: in one piece
  std::uint64_t seen_ = 0;      ///< bytes from the beginning on
  wire::Md5Hasher hasher_;      ///< of the current part
  int number_ = 1;              ///< of that
  std::uint64_t partEnd_ = 0;
  std::string digests_;  ///< of the parts before
  bool isWrong_ = false;
};

}  // namespace foundation::storage::backend::s3::detail::stream
