#pragma once

#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/registry/detail/FilteredProviders.h>
#include <foundation/storage/registry/detail/Registrations.h>

namespace foundation::storage::registry::detail {

struct RegistryState {
  Registrations registrations;
  FilteredProviders filtered;
};

/// The item of a location, as `ProviderRegistry::item` describes it.
provider::StorageItem resolve(RegistryState& state, const provider::StorageIRI& location);

}  // namespace foundation::storage::registry::detail
