#include <foundation/storage/registry/ProviderRegistry.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/registry/InvalidConfigurationException.h>
#include <foundation/storage/registry/detail/ConfigurationFile.h>
#include <foundation/storage/registry/detail/Names.h>
#include <foundation/storage/registry/detail/Resolution.h>

#include <exception>
#include <set>
#include <utility>

namespace foundation::storage::registry {

using boost::property_tree::ptree;

namespace {

struct Options {
  std::string name;
  detail::Factory factory;
  ptree tree;
};

bool takesOptions(const detail::Factory& factory) {
  const auto* filter = std::get_if<std::shared_ptr<FilterFactory>>(&factory);
  return filter == nullptr || (*filter)->takesOptions();
}

Options checkedOptions(const detail::Registrations& registrations, const std::string& name, const ptree& tree) {
  const auto factory = registrations.find(fl::i18n::to_ustring(name));
  if (!factory)
    throw InvalidConfigurationException(name, "no scheme or filter is registered under this name");
  if (!tree.data().empty())
    throw InvalidConfigurationException(name, "\"" + tree.data() + "\" stands where a group of options belongs");
  if (!tree.empty() && !takesOptions(*factory))
    throw InvalidConfigurationException(name, "this filter takes no options");
  return {name, *factory, tree};
}

std::vector<Options> checkedOptions(const detail::Registrations& registrations, const ptree& configuration) {
  if (!configuration.data().empty())
    throw InvalidConfigurationException(configuration.data(), "this is a value without a name");
  std::vector<Options> all;
  std::set<std::u16string> names;
  for (const auto& [name, tree] : configuration) {
    all.push_back(checkedOptions(registrations, name, tree));
    if (!names.insert(detail::comparableName(fl::i18n::to_ustring(name))).second)
      throw InvalidConfigurationException(name, "its options are given more than once");
  }
  return all;
}

void configureOne(Options options) {
  try {
    std::visit([&](const auto& factory) { factory->configure(std::move(options.tree)); }, options.factory);
  } catch (const std::invalid_argument& refused) {
    std::throw_with_nested(InvalidConfigurationException(options.name, refused.what()));
  }
}

/// Runs actions all of which have to be tried.
class Attempts {
 public:
  template <class Action>
  void run(const Action& action) noexcept {
    try {
      action();
    } catch (...) {
      if (!first_)
        first_ = std::current_exception();
    }
  }

  void rethrowFirst() const {
    if (first_)
      std::rethrow_exception(first_);
  }

 private:
  std::exception_ptr first_;
};

}  // namespace

ProviderRegistry::ProviderRegistry() : state_(std::make_shared<detail::RegistryState>()) {}
ProviderRegistry::~ProviderRegistry() = default;

void ProviderRegistry::addPhysical(const std::u16string& scheme,
                                   std::shared_ptr<provider::PhysicalProviderFactory> factory,
                                   provider::Capabilities capabilities) {
  state_->registrations.add(scheme, std::move(factory), std::move(capabilities));
}

void ProviderRegistry::addContainer(const std::u16string& scheme,
                                    std::shared_ptr<provider::ContainerProviderFactory> factory,
                                    provider::Capabilities capabilities) {
  state_->registrations.add(scheme, std::move(factory), std::move(capabilities));
}

void ProviderRegistry::addFilter(const std::u16string& prefix, std::shared_ptr<FilterFactory> filter) {
  state_->registrations.add(prefix, std::move(filter));
}

std::vector<Registration> ProviderRegistry::registrations() const {
  std::vector<Registration> all;
  for (const auto& [name, factory] : state_->registrations.all())
    all.push_back({name, detail::roleOf(factory), state_->registrations.capabilitiesOf(name)});
  return all;
}

provider::StorageItem ProviderRegistry::item(const std::u16string& text) const {
  return item(provider::StorageIRI(text));
}

provider::StorageItem ProviderRegistry::item(const provider::StorageIRI& location) const {
  return detail::resolve(*state_, location);
}

void ProviderRegistry::configure(const ptree& configuration) {
  for (auto& options : checkedOptions(state_->registrations, configuration))
    configureOne(std::move(options));
}

void ProviderRegistry::configureFromFile(const std::filesystem::path& file) {
  configure(detail::readConfigurationFile(file));
}

void ProviderRegistry::shutdown() {
  Attempts attempts;
  for (const auto& provider : state_->filtered.takeAll())
    attempts.run([&] { provider->shutdown(); });
  const auto factories = state_->registrations.all();
  for (const auto& [name, factory] : factories)
    if (const auto* containers = std::get_if<std::shared_ptr<provider::ContainerProviderFactory>>(&factory))
      attempts.run([&] { (*containers)->shutdownProvider(); });
  for (const auto& [name, factory] : factories)
    if (const auto* stores = std::get_if<std::shared_ptr<provider::PhysicalProviderFactory>>(&factory))
      attempts.run([&] { (*stores)->shutdownProvider(); });
  attempts.rethrowFirst();
}

}  // namespace foundation::storage::registry
