#pragma once

#include <foundation/storage/registry/FilterFactory.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::registry::detail {

/// The providers that filters have made and somebody holds: one for each prefix and inner provider. Any number of
/// threads may use it.
class FilteredProviders {
 public:
  using Provider = std::shared_ptr<provider::IProvider>;

  /// The live provider, or a new one. Of two threads that build one at once both get the same. Throws what the
  /// filter throws, and gives what it gives, null too.
  /// @param prefix  in lower case
  Provider getOrBuild(const std::u16string& prefix, const FilterFactory& filter, const Provider& inner);

  /// Those that are alive, each before the ones that it was built around; none of them is remembered any longer.
  std::vector<Provider> takeAll();

 private:
  /// A live filter provider keeps its inner one, so the address stands for that as long as it matters.
  using Key = std::pair<std::u16string, const provider::IProvider*>;
  struct Slot {
    std::weak_ptr<provider::IProvider> provider;
    std::uint64_t number;  ///< counts what was built
  };

  Provider find(const Key& key);
  Provider keep(const Key& key, const Provider& built);

  std::mutex mutex_;  ///< guards the rest; no provider is called, built or let go with it
  std::map<Key, Slot> slots_;
  std::uint64_t count_ = 0;
};

}  // namespace foundation::storage::registry::detail
