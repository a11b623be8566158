#include <foundation/storage/registry/detail/Names.h>

#include <fl/i18n/Case.h>
#include <foundation/network/IRI.h>

namespace foundation::storage::registry::detail {

// Schemes are ASCII, but Unicode has other characters whose lower case is.
std::u16string comparableName(std::u16string_view name) {
  return network::IRI::isScheme(name) ? fl::i18n::detail::transform(name, fl::i18n::to_lower()) : std::u16string(name);
}

}  // namespace foundation::storage::registry::detail
