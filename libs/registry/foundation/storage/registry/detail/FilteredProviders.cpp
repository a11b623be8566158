#include <foundation/storage/registry/detail/FilteredProviders.h>

#include <algorithm>

namespace foundation::storage::registry::detail {

FilteredProviders::Provider FilteredProviders::getOrBuild(const std::u16string& prefix, const FilterFactory& filter,
                                                          const Provider& inner) {
  const Key key(prefix, inner.get());
  if (auto live = find(key))
    return live;
  const auto built = filter.buildProvider(inner, prefix);
  return built == nullptr ? nullptr : keep(key, built);
}

FilteredProviders::Provider FilteredProviders::find(const Key& key) {
  const std::scoped_lock lock(mutex_);
  const auto found = slots_.find(key);
  return found == slots_.end() ? nullptr : found->second.provider.lock();
}

FilteredProviders::Provider FilteredProviders::keep(const Key& key, const Provider& built) {
  const std::scoped_lock lock(mutex_);
  auto& slot = slots_[key];
  if (auto live = slot.provider.lock())  // another thread was faster
    return live;
  slot = {built, ++count_};
  std::erase_if(slots_, [](const auto& entry) { return entry.second.provider.expired(); });
  return built;
}

std::vector<FilteredProviders::Provider> FilteredProviders::takeAll() {
  std::map<Key, Slot> slots;
  {
    const std::scoped_lock lock(mutex_);
    slots.swap(slots_);
  }
  std::map<std::uint64_t, Provider, std::greater<>> latestFirst;
  for (const auto& [key, slot] : slots)
    if (auto live = slot.provider.lock())
      latestFirst.emplace(slot.number, std::move(live));
  std::vector<Provider> all;
  for (auto& [number, live] : latestFirst)
    all.push_back(std::move(live));
  return all;
}

}  // namespace foundation::storage::registry::detail
