#pragma once

#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/property_tree/ptree.hpp>

#include <cstdint>
#include <memory>
#include <optional>

namespace foundation::storage::testing {

/// The provider of a new, empty store.
/// @param capacity  in bytes; none: unlimited
inline std::shared_ptr<provider::IProvider> makeMemoryProvider(std::optional<std::uint64_t> capacity = {}) {
  backend::memory::MemoryProviderFactory factory;
  if (capacity) {
    boost::property_tree::ptree options;
    options.put("capacity", *capacity);
    factory.configure(options);
  }
  return factory.buildProvider(provider::StorageIRI(u"memory:///"));
}

/// The root of a store.
inline std::shared_ptr<const provider::StorageItem> rootOf(std::shared_ptr<provider::IProvider> provider) {
  return std::make_shared<const provider::StorageItem>(std::move(provider), provider::StorageIRI(u"memory:///"));
}

}  // namespace foundation::storage::testing
