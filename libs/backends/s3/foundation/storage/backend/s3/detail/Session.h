#pragma once

#include <foundation/storage/backend/s3/detail/KnownFolders.h>
#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <memory>
#include <utility>

namespace foundation::storage::backend::s3::detail {

/// What operations work with. Those that have begun, and streams and listings, go on with the one that they began with,
/// whatever the provider is configured to meanwhile.
struct Session {
  explicit Session(client::Client bucket) : client(std::move(bucket)) {}

  client::Client client;
  KnownFolders folders;
};

using SessionPtr = std::shared_ptr<Session>;

}  // namespace foundation::storage::backend::s3::detail
