#pragma once

#include <foundation/storage/backend/s3/detail/client/Settings.h>

#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// Where requests go.
class Endpoint {
 public:
  /// @param text  "http://" or "https://", host, perhaps a port, perhaps a '/'; throws `StoreFailure` for anything else
  Endpoint(std::string_view text, Addressing addressing);

  /// Where a bucket, or an object in it, is found.
  struct Place {
    std::string origin;  ///< scheme, host and port: what goes before the path in a URL
    std::string host;    ///< as the "Host" header gives it
    std::string path;    ///< encoded
  };
  /// The bucket goes into the path also where the host's name cannot hold it: where the host is an address, the bucket
  /// no label of a name, or one with dots, which no certificate for "*.HOST" covers. Throws `StoreFailure` for what can
  /// be no bucket, or no key.
  /// @param key  empty for the bucket itself
  Place place(const std::string& bucket, const std::string& key) const;

 private:
  bool goesIntoHost(const std::string& bucket) const;

  std::string scheme_;  ///< with "://"
  std::string host_;    ///< with the port, unless that is the scheme's own
  bool isAddress_ = false;
  Addressing addressing_;
};

}  // namespace foundation::storage::backend::s3::detail::client
