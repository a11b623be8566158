#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/stream/EndableClient.h>

#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::stream {

/// Fetches the content of an object piece by piece. The first fetches small objects whole. As long as the pieces are
/// asked for in order they grow up to the size of a part, and ever more are fetched ahead in parallel, so many at most
/// as a stream may send parts. Elsewhere it begins with a small piece again.
class ReadAhead {
 public:
  /// Fetches the first piece; throws `client::StoreFailure` where there is no object.
  ReadAhead(client::Client client, std::string key);
  /// Ends what is under way.
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  const client::ObjectInfo& object() const { return object_; }

  /// The bytes from `position` on, which lies before the end: one at least, and as many as there are without another
  /// request. They hold until the next call. After a failure it can be tried again.
  std::string_view at(std::uint64_t position);

 private:
  struct Fetch {
    client::Range range;
    std::future<std::string> bytes;

    std::uint64_t end() const { return range.offset + range.size; }
  };

  std::uint64_t end() const { return offset_ + bytes_.size(); }
  void leapTo(std::uint64_t position);
  void goOn();
  void fetch(std::uint64_t offset, std::launch policy);
  void take();
  void beginAnewAt(std::uint64_t position);
  void endAll() noexcept;
  int mostAhead() const;

  const client::Client client_;
  const std::string key_;
  std::unique_ptr<EndableClient> endable_;
  client::ObjectInfo object_;
  std::uint64_t offset_ = 0;  ///< of the current piece
  std::string bytes_;         ///< of that
  std::deque<Fetch> coming_;  ///< pieces behind it
  std::uint64_t step_ = 0;    ///< size of the piece fetched last
  int inOrder_ = 0;           ///< pieces since the last leap, less one after a leap
};

}  // namespace foundation::storage::backend::s3::detail::stream
