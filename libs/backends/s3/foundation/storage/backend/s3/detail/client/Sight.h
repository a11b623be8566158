#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <chrono>
#include <optional>
#include <string>

namespace foundation::storage::backend::s3::detail::client {

/// An object as it was found at one moment.
struct Sight {
  ObjectInfo object;
  boost::posix_time::ptime seen;  ///< when, by the store's clock

  /// Whether it can have been written within that time before it was seen. The store's times are whole seconds.
  bool canBeAsYoungAs(std::chrono::steady_clock::duration age) const;
};

/// Nothing where there is no such object, or no such bucket.
std::optional<Sight> look(Exchange& exchange, const std::string& bucket, const std::string& key,
                          http::Interrupt& interrupt);

}  // namespace foundation::storage::backend::s3::detail::client
