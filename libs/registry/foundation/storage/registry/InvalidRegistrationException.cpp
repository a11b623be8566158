#include <foundation/storage/registry/InvalidRegistrationException.h>

#include <fl/i18n/Convert.h>

#include <utility>

namespace foundation::storage::registry {

InvalidRegistrationException::InvalidRegistrationException(std::u16string name, const std::string& reason)
    : std::invalid_argument("Registering \"" + fl::i18n::to_string(name) + "\": " + reason), name_(std::move(name)) {}

InvalidRegistrationException::~InvalidRegistrationException() = default;

std::u16string InvalidRegistrationException::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

}  // namespace foundation::storage::registry
