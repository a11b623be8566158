#pragma once

#include <foundation/network/IRI.h>

namespace foundation::storage::provider::detail {

/// Throws `AnonymousInternalException<std::runtime_error>` where `iri` has no scheme.
void requireAbsolute(const network::IRI& iri);

}  // namespace foundation::storage::provider::detail
