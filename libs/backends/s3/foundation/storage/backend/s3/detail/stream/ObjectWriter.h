#pragma once

#include <foundation/storage/backend/s3/detail/stream/Limits.h>
#include <foundation/storage/backend/s3/detail/stream/Streams.h>
#include <foundation/storage/backend/s3/detail/stream/Upload.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::stream {

/// Writes an object from its beginning to its end: in one request where it fits into a part, else by an upload. What is
/// kept of the object before is copied on the server, or read where it is too small for that. If others change the
/// object between that and the end, what they have done is lost, but content never is a mixture: it is copied only as
/// long as it is what was found at the beginning.
class ObjectWriter {
 public:
  /// Sends nothing.
  ObjectWriter(client::Client client, std::string key, WriteMode mode, const Limits& limits = {});

  /// With what is kept.
  std::uint64_t size() const { return size_; }

  /// Throws where a part has failed, this time or before. After that it may only be ended.
  void write(std::string_view bytes);
  /// Makes the object what was written. May be tried again where it throws, but for a failure of `write`.
  void publish();
  /// Ends what is under way, and removes what was stored; as `Upload`'s.
  /// @{
  void abort();
  void abandon() noexcept;
  /// @}

 private:
  bool keepsByCopying() const;
  wire::Headers headers() const;
  void begin();
  void copyKept();
  void readKept();
  void flush();
  void send();
  void putWhole();
  std::string eTag() const;
  bool isThere(const client::StoreFailure& failure) const;

  const client::Client client_;
  const std::string key_;
  const WriteMode mode_;
  const Limits limits_;
  std::uint64_t size_;
  std::size_t copied_ = 0;  ///< ranges of what is kept
  bool isKeptRead_ = false;
  bool wasTried_ = false;    ///< to publish by an upload
  bool mayBeThere_ = false;  ///< published by an attempt whose answer was lost
  std::string buffer_;
  std::unique_ptr<Upload> upload_;
};

}  // namespace foundation::storage::backend::s3::detail::stream
