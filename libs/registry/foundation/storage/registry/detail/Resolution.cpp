#include <foundation/storage/registry/detail/Resolution.h>

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/FilteringURL.h>
#include <foundation/storage/registry/detail/Names.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace foundation::storage::registry::detail {

using provider::ErrorCode;
using provider::Exception;
using provider::StorageIRI;

namespace {

using Provider = std::shared_ptr<provider::IProvider>;

/// Each filter adds to the depth of every call, and containers with filters multiply it.
constexpr std::size_t maximalFilters = 16;

struct Filter {
  std::u16string prefix;  ///< in lower case
  std::shared_ptr<FilterFactory> factory;
};

Exception refusal(ErrorCode code, const StorageIRI& location, const std::u16string& reason) {
  Exception exception(code, location);
  provider::ExceptionContextInfo info(reason, {}, {{u"location", location.toString()}});
  exception.setExceptionContexts({provider::ExceptionContext(u"registry", std::move(info))});
  return exception;
}

std::u16string listNames(const Registrations& registrations, bool ofFilters) {
  std::u16string names;
  for (const auto& [name, factory] : registrations.all())
    if ((roleOf(factory) == Role::Filter) == ofFilters)
      names += (names.empty() ? u"" : u", ") + name;
  return names.empty() ? u"none" : names;
}

Exception unknownScheme(const Registrations& registrations, const std::u16string& scheme, const StorageIRI& location) {
  return refusal(ErrorCode::UnsupportedOperation, location,
                 u"The scheme \"" + scheme + u"\" is not known; these are: " + listNames(registrations, false));
}

Exception unknownFilter(const Registrations& registrations, const std::u16string& prefix, const StorageIRI& location) {
  return refusal(ErrorCode::UnsupportedOperation, location,
                 u"The filter \"" + prefix + u"\" is not known; these are: " + listNames(registrations, true));
}

/// The filters that the scheme of `location` names, from the outermost inwards.
std::vector<Filter> filtersOf(const Registrations& registrations, const StorageIRI& location) {
  const auto scheme = location.getScheme();
  if (std::count(scheme.begin(), scheme.end(), u'+') > static_cast<std::ptrdiff_t>(maximalFilters))
    throw refusal(ErrorCode::InvalidLocation, location, u"A scheme has at most 16 filters");
  std::vector<Filter> filters;
  std::size_t begin = 0;
  for (auto plus = scheme.find(u'+'); plus != std::u16string::npos; plus = scheme.find(u'+', begin)) {
    const auto prefix = scheme.substr(begin, plus - begin);
    const auto factory = registrations.find(prefix);
    if (!factory || roleOf(*factory) != Role::Filter)
      throw unknownFilter(registrations, prefix, location);
    filters.push_back({comparableName(prefix), std::get<std::shared_ptr<FilterFactory>>(*factory)});
    begin = plus + 1;
  }
  return filters;
}

Provider requireProvider(Provider provider, const StorageIRI& location) {
  if (provider == nullptr)
    throw refusal(ErrorCode::InternalError, location, u"The factory gave no provider");
  return provider;
}

/// Of a location without filters.
Provider unfilteredProvider(RegistryState& state, const Factory& factory, const StorageIRI& location) {
  if (roleOf(factory) == Role::Physical) {
    if (location.hasInnerIRI())
      throw refusal(ErrorCode::InvalidLocation, location, u"The scheme is not one of a container");
    return std::get<std::shared_ptr<provider::PhysicalProviderFactory>>(factory)->buildProvider(location);
  }
  if (!location.hasInnerIRI())
    throw refusal(ErrorCode::InvalidLocation, location,
                  u"The scheme is one of a container, whose own location has to follow it");
  const auto container = resolve(state, location.getInnerIRI());
  return std::get<std::shared_ptr<provider::ContainerProviderFactory>>(factory)->buildProvider(container);
}

StorageIRI withoutFilters(const StorageIRI& location) {
  return StorageIRI(provider::getPhysicalURLFromFilteringURL(location.toString()));
}

}  // namespace

provider::StorageItem resolve(RegistryState& state, const StorageIRI& location) {
  const auto filters = filtersOf(state.registrations, location);
  const auto scheme = provider::getPhysicalPartFromFilteringScheme(location.getScheme());
  const auto factory = state.registrations.find(scheme);
  if (!factory || roleOf(*factory) == Role::Filter)
    throw unknownScheme(state.registrations, scheme, location);
  const auto unfiltered = filters.empty() ? location : withoutFilters(location);
  auto provider = requireProvider(unfilteredProvider(state, *factory, unfiltered), location);
  for (auto filter = filters.rbegin(); filter != filters.rend(); ++filter)
    provider = requireProvider(state.filtered.getOrBuild(filter->prefix, *filter->factory, provider), location);
  return {std::move(provider), location};
}

}  // namespace foundation::storage::registry::detail
