#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace foundation::storage::testing {

inline std::uint32_t crcOf(const std::string& bytes) {
  return static_cast<std::uint32_t>(
      crc32_z(0, static_cast<const Bytef*>(static_cast<const void*>(bytes.data())), bytes.size()));
}

/// Compresses with deflate (RFC 1951), without any header.
class Deflater {
 public:
  Deflater() {
    if (deflateInit2(&stream_, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK)
      throw std::runtime_error("deflateInit2 failed");
  }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater() { deflateEnd(&stream_); }

  /// @param flush  Z_FULL_FLUSH: what was given can be repeated as often as one likes; Z_FINISH: it is the end
  std::string add(const std::string& bytes, int flush) {
    auto input = bytes;
    std::string out(deflateBound(&stream_, bytes.size()) + 64, '\0');
    stream_.next_in = static_cast<Bytef*>(static_cast<void*>(input.data()));
    stream_.avail_in = static_cast<uInt>(input.size());
    stream_.next_out = static_cast<Bytef*>(static_cast<void*>(out.data()));
    stream_.avail_out = static_cast<uInt>(out.size());
    if (deflate(&stream_, flush) == Z_STREAM_ERROR || stream_.avail_in != 0)
      throw std::runtime_error("deflate failed");
    out.resize(out.size() - stream_.avail_out);
    return out;
  }

 private:
  z_stream stream_{};
};

inline std::string deflated(const std::string& bytes) { return Deflater().add(bytes, Z_FINISH); }

/// What `beginning` and then so many MiB of zeros deflate to, without deflating them all.
inline std::string deflatedZeros(const std::string& beginning, std::size_t mebibytes) {
  Deflater deflater;
  auto bytes = deflater.add(beginning, Z_FULL_FLUSH);
  const auto zeros = deflater.add(std::string(std::size_t{1} << 20, '\0'), Z_FULL_FLUSH);
  bytes.reserve(bytes.size() + mebibytes * zeros.size() + 64);
  for (; mebibytes > 0; --mebibytes)
    bytes += zeros;
  return bytes + deflater.add("", Z_FINISH);
}

}  // namespace foundation::storage::testing
