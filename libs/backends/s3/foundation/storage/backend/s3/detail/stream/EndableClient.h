#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/http/Interrupt.h>

#include <memory>

namespace foundation::storage::backend::s3::detail::stream {

/// A client whose requests can be ended by themselves; they end with those of the client that it comes from, too.
class EndableClient {
 public:
  explicit EndableClient(const client::Client& origin);

  const client::Client& get() const { return client_; }
  /// Ends those under way and all to come: they throw `http::Interrupted`.
  void end() noexcept { interrupt_->raise(); }

 private:
  client::Client origin_;
  std::shared_ptr<http::Interrupt> interrupt_;
  client::Client client_;
  http::Interrupt::Listener listener_;
};

}  // namespace foundation::storage::backend::s3::detail::stream
