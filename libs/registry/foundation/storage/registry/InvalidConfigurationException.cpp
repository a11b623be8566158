#include <foundation/storage/registry/InvalidConfigurationException.h>

#include <fl/i18n/Convert.h>

#include <utility>

namespace foundation::storage::registry {

InvalidConfigurationException::InvalidConfigurationException(std::string key, const std::string& reason)
    : std::invalid_argument("Configuration of \"" + key + "\": " + reason), key_(std::move(key)) {}

InvalidConfigurationException::~InvalidConfigurationException() = default;

std::u16string InvalidConfigurationException::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

}  // namespace foundation::storage::registry
