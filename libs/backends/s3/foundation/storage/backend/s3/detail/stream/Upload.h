#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/stream/EndableClient.h>
#include <foundation/storage/backend/s3/detail/stream/Tasks.h>

#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::backend::s3::detail::stream {

/// An object that is written in parts, several at once. Parts that fail are kept, so that they can be sent again.
class Upload {
 public:
  /// An object, or a piece of one, that becomes a part.
  struct Source {
    std::string key;
    std::string eTag;  ///< what it must be
    client::Range range;
  };

  /// Sends nothing.
  /// @param headers  to store with the object
  /// @param proceed  asked before each part and while waiting; where it says no, this throws `http::Interrupted`
  Upload(const client::Client& client, std::string key, wire::Headers headers, std::function<bool()> proceed = {});
  /// As `abandon`.
  ~Upload();
  Upload(const Upload&) = delete;
  Upload& operator=(const Upload&) = delete;

  int nextNumber() const { return static_cast<int>(parts_.size()) + 1; }

  /// Adds a part behind the others; waits while too many are under way. Throws the first failure of one, too; where it
  /// throws, nothing was added, and `bytes` are what they were.
  /// @{
  void add(std::string&& bytes);
  void add(Source source);
  /// @}

  /// Throws the first failure of a part since the last `retry`.
  void check() const;
  /// Sends again what has failed.
  void retry();
  /// Waits for the parts and puts them together. May be tried again where it throws.
  void complete(client::Existing existing);
  /// What the object has once that is done, if the store makes it the usual way. To be asked when the parts are there.
  std::string eTag() const { return client::eTagOfParts(stored()); }

  /// Ends what is under way and removes what was stored.
  void abort();
  /// The same for those who cannot wait for long, nor do anything about a failure; the log tells of it.
  void abandon() noexcept;

 private:
  using Send = std::function<wire::Part(const client::UploadId& upload, int number)>;
  struct Part {
    Send send;  ///< holds what is sent; none once it is stored
    wire::Part stored = {0, {}};
  };

  void makeRoom();
  void begin();
  void add(Send send, std::uint64_t size);
  void start(Part& part) noexcept;
  void run(Part& part) noexcept;
  void noteFailure(std::exception_ptr failure) noexcept;
  std::vector<wire::Part> stored() const;
  void waitForFewerThan(unsigned count);
  void abortWith(const std::shared_ptr<http::Interrupt>& interrupt);

  client::Client client_;
  EndableClient endable_;
  std::string key_;
  wire::Headers headers_;
  std::function<void()> ask_;
  std::optional<client::UploadId> id_;  ///< none before the first part, and after the end
  std::uint64_t size_ = 0;

  std::deque<Part> parts_;  ///< by number; one that is under way belongs to its task
  mutable std::mutex mutex_;
  std::exception_ptr failure_;  ///< the first one; guarded by the mutex

  Tasks tasks_;
};

}  // namespace foundation::storage::backend::s3::detail::stream
