#include <foundation/storage/provider/detail/Absolute.h>

#include <fl/i18n/Convert.h>
#include <foundation/core/except/detail/AnonymousInternalException.h>

#include <stdexcept>

namespace foundation::storage::provider::detail {

void requireAbsolute(const network::IRI& iri) {
  if (!iri.isAbsolute())
    throw core::except::detail::AnonymousInternalException<std::runtime_error>(
        "IRI '" + fl::i18n::to_string(iri.text()) + "' is not absolute.");
}

}  // namespace foundation::storage::provider::detail
