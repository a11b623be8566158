#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/registry/ProviderRegistry.h>

namespace foundation::storage::registry {

/// A new registry of what comes with this library, to which a program may add its own:
/// - `file`: the local file system (`backend::local::LocalProviderFactory`);
/// - `memory`: stores in memory (`backend::memory::MemoryProviderFactory`), which are this registry's alone;
/// - `s3`: buckets of object stores (`backend::s3::S3ProviderFactory`);
/// - `zip`, `tar`, `sevenzip`, and `archive` for whatever it turns out to be: what archives hold, wherever they are,
///   as in "zip:file:///a.zip!/b" (`backend::archive::ArchiveProviderFactory`);
/// - `readonly+`: `ReadOnlyFilter`.
///
/// May be called by any number of threads.
FOUNDATION_EXPORT ProviderRegistry makeDefaultRegistry();

}  // namespace foundation::storage::registry
