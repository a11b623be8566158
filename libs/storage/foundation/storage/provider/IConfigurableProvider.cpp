#include <foundation/storage/provider/IConfigurableProvider.h>

namespace foundation::storage::provider {

IConfigurableProvider::IConfigurableProvider() = default;
IConfigurableProvider::~IConfigurableProvider() = default;

void IConfigurableProvider::configure(boost::property_tree::ptree configuration) { doConfigure(configuration); }

}  // namespace foundation::storage::provider
