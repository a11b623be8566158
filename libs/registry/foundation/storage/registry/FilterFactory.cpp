#include <foundation/storage/registry/FilterFactory.h>

#include <utility>

namespace foundation::storage::registry {

FilterFactory::FilterFactory() = default;
FilterFactory::~FilterFactory() = default;

std::shared_ptr<provider::IProvider> FilterFactory::buildProvider(std::shared_ptr<provider::IProvider> inner,
                                                                  const std::u16string& prefix) const {
  return doBuildProvider(std::move(inner), prefix);
}

void FilterFactory::configure(boost::property_tree::ptree configuration) {
  if (takesOptions())
    doConfigure(std::move(configuration));
}

bool FilterFactory::doTakesOptions() const { return false; }

void FilterFactory::doConfigure(boost::property_tree::ptree) {}

}  // namespace foundation::storage::registry
