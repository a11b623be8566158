#include <foundation/storage/registry/detail/Registrations.h>

#include <foundation/network/IRI.h>
#include <foundation/storage/registry/InvalidRegistrationException.h>
#include <foundation/storage/registry/detail/Names.h>

#include <utility>

namespace foundation::storage::registry::detail {

void Registrations::add(const std::u16string& name, Factory factory, provider::Capabilities capabilities) {
  if (!network::IRI::isScheme(name))
    throw InvalidRegistrationException(name, "this is no scheme (RFC 3986, section 3.1)");
  if (name.find(u'+') != std::u16string::npos)
    throw InvalidRegistrationException(name, "a '+' ends the prefix of a filter, so no name can hold one");
  if (std::visit([](const auto& made) { return made == nullptr; }, factory))
    throw InvalidRegistrationException(name, "there is no factory");
  const auto key = comparableName(name);
  const std::scoped_lock lock(mutex_);
  if (factories_.contains(key))
    throw InvalidRegistrationException(name, "the name is registered already");
  capabilities_.insert_or_assign(key, std::move(capabilities));
  factories_.emplace(key, std::move(factory));
}

std::optional<Factory> Registrations::find(const std::u16string& name) const {
  const auto key = comparableName(name);
  const std::scoped_lock lock(mutex_);
  const auto found = factories_.find(key);
  return found == factories_.end() ? std::nullopt : std::optional(found->second);
}

provider::Capabilities Registrations::capabilitiesOf(const std::u16string& name) const {
  const std::scoped_lock lock(mutex_);
  const auto found = capabilities_.find(name);
  return found == capabilities_.end() ? provider::Capabilities() : found->second;
}

Registrations::Factories Registrations::all() const {
  const std::scoped_lock lock(mutex_);
  return factories_;
}

}  // namespace foundation::storage::registry::detail
