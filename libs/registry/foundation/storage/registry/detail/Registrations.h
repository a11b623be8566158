#pragma once

#include <foundation/storage/provider/ContainerProviderFactory.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>
#include <foundation/storage/registry/FilterFactory.h>
#include <foundation/storage/registry/Registration.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

namespace foundation::storage::registry::detail {

/// What stands behind a name, in the order of the roles.
using Factory = std::variant<std::shared_ptr<provider::PhysicalProviderFactory>,
                             std::shared_ptr<provider::ContainerProviderFactory>, std::shared_ptr<FilterFactory>>;

inline Role roleOf(const Factory& factory) { return static_cast<Role>(factory.index()); }

/// The names of a registry and what they stand for. Any number of threads may use it.
class Registrations {
 public:
  using Factories = std::map<std::u16string, Factory>;

  /// Throws `InvalidRegistrationException`.
  void add(const std::u16string& name, Factory factory, provider::Capabilities capabilities = {});

  /// @param name  in any case
  std::optional<Factory> find(const std::u16string& name) const;

  /// @param name  one of those that `all` gives
  provider::Capabilities capabilitiesOf(const std::u16string& name) const;

  /// All of them now, by their names in lower case.
  Factories all() const;

 private:
  mutable std::mutex mutex_;  ///< guards the next two; nothing of theirs is called with it
  Factories factories_;
  std::map<std::u16string, provider::Capabilities> capabilities_;  ///< by the same names
};

}  // namespace foundation::storage::registry::detail
