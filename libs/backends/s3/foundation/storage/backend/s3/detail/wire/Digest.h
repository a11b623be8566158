#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::wire {

using Md5 = std::array<unsigned char, 16>;
using Sha256 = std::array<unsigned char, 32>;

Sha256 sha256(std::string_view bytes);
Md5 md5(std::string_view bytes);
Sha256 hmacSha256(std::string_view key, std::string_view text);

/// In lower case.
std::string hex(std::string_view bytes);
std::string base64(std::string_view bytes);

/// The bytes of a digest.
template <std::size_t size>
std::string_view bytesOf(const std::array<unsigned char, size>& digest) {
  return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

/// An MD5 that is made piece by piece.
class Md5Hasher {
 public:
  Md5Hasher();
  ~Md5Hasher();
  Md5Hasher(Md5Hasher&&) noexcept;
  Md5Hasher& operator=(Md5Hasher&&) noexcept;

  void add(std::string_view bytes);
  /// Of all that was added; then it begins anew.
  Md5 finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace foundation::storage::backend::s3::detail::wire
