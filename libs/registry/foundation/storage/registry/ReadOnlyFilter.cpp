#include <foundation/storage/registry/ReadOnlyFilter.h>

#include <foundation/storage/registry/detail/ReadOnlyProvider.h>

#include <utility>

namespace foundation::storage::registry {

ReadOnlyFilter::ReadOnlyFilter() = default;
ReadOnlyFilter::~ReadOnlyFilter() = default;

std::shared_ptr<provider::IProvider> ReadOnlyFilter::doBuildProvider(std::shared_ptr<provider::IProvider> inner,
                                                                     const std::u16string& prefix) const {
  return std::make_shared<detail::ReadOnlyProvider>(std::move(inner), prefix);
}

}  // namespace foundation::storage::registry
