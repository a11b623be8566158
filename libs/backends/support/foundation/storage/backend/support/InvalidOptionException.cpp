#include <foundation/storage/backend/support/InvalidOptionException.h>

#include <fl/i18n/Convert.h>

#include <utility>

namespace foundation::storage::backend::support {

InvalidOptionException::InvalidOptionException(std::string key, const std::string& reason)
    : std::invalid_argument("Option \"" + key + "\": " + reason), key_(std::move(key)) {}

InvalidOptionException::~InvalidOptionException() = default;

std::u16string InvalidOptionException::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

}  // namespace foundation::storage::backend::support
