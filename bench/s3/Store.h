#pragma once

#include <foundation/storage/registry/ProviderRegistry.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace bench {

/// The object store that withEngine has started for this program, and what it writes into its log.
class Store {
 public:
  /// Throws `std::runtime_error` where there is none.
  Store();

  const std::string& endpoint() const { return endpoint_; }
  const std::string& region() const { return region_; }
  const std::string& bucket() const { return bucket_; }
  /// The URL of an object, with nothing in its key that would have to be escaped.
  std::string url(const std::string& key) const { return endpoint_ + "/" + bucket_ + "/" + key; }
  /// The same as a location.
  std::string location(const std::string& key) const { return "s3://" + bucket_ + "/" + key; }

  /// What is stored under a key, or in the folder of that name, by a provider that all share.
  foundation::storage::provider::StorageItem item(const std::string& key) const;
  /// What a file on this machine is to our library.
  foundation::storage::provider::StorageItem file(const std::string& path) const;

  /// Removes the objects below a folder, and has their room cleared, so that nobody pays for what others did.
  void clear(const std::string& folder) const;

  /// How many requests the store has answered since this was asked last: "10,000 PUT, 1 GET".
  std::string requests();

 private:
  std::string linesUpTo(const std::string& mark);

  std::string endpoint_, region_, bucket_, engine_;
  foundation::storage::registry::ProviderRegistry registry_;
  std::uint64_t seen_ = 0;  ///< bytes of the log
  std::size_t marks_ = 0;
};

}  // namespace bench
