#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <zlib.h>

namespace foundation::storage::backend::archive::detail::zip {

/// Compresses contents (RFC 1951), one after the other, each a part at a time.
class Deflater {
 public:
  Deflater();
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater();

  /// Appends what comes out of `bytes` to `out`.
  void add(std::string_view bytes, std::string& out) { run(bytes, Z_NO_FLUSH, out); }
  /// The same, but without making it any smaller.
  void addStored(std::string_view bytes, std::string& out);
  /// Ends the content; what is added then begins another one.
  void finish(std::string& out);

 private:
  /// @param bytes  fewer than 2^32
  void setLevel(int level, std::string& out);
  void run(std::string_view bytes, int flush, std::string& out);

  z_stream stream_{};
};

}  // namespace foundation::storage::backend::archive::detail::zip
