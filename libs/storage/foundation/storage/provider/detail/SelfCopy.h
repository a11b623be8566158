#pragma once

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::provider::detail {

/// Whether two existing files are one, as far as their stores can tell: opening the second for writing would
/// destroy what is to be read from the first. Where both stores tell their files apart (`IFileIdentity`), that
/// decides; otherwise two locations of one canonical form are taken for one file, even in two stores.
bool areOneFile(const IProvider& store, const StorageIRI& file, const IProvider& otherStore, const StorageIRI& other);

/// What a copy of a file onto itself fails with.
Exception selfCopyRefusal(const StorageIRI& destination);

}  // namespace foundation::storage::provider::detail
