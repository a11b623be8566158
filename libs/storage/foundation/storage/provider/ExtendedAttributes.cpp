#include <foundation/storage/provider/ExtendedAttributes.h>

#include <stdexcept>

namespace foundation::storage::provider {

boost::any ExtendedAttributes::getAttribute(const std::string& key) const {
  const auto found = attributes_.find(key);
  if (found == attributes_.end())
    throw std::out_of_range("Attribute " + key + " not found.");
  return found->second;
}

}  // namespace foundation::storage::provider
