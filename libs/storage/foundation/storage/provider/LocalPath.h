#pragma once

#include <fl/filesystem/Path.h>
#include <foundation/core/Export.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>

/// @file
/// From paths of the local file system to locations and back. All functions may be called by any
/// number of threads.

namespace foundation::storage::provider {

/// The location of a local path. It gives the same path back, in generic form.
/// @param scheme  such as u"file"
/// @param path    absolute, in any form; the empty path is accepted
/// @throws std::runtime_error            the path is not absolute
/// @throws network::IRISyntaxException   `scheme` is no scheme
FOUNDATION_EXPORT StorageIRI toStorageIRI(const std::u16string& scheme, const fl::filesystem::upath& path);

/// The same for the path's canonical form, asked of the file system: links resolved, dots gone.
/// Throws `Exception` with the location of the given path where the file system refuses
/// (`PermissionDenied`, `IOError`, `ResourceNotFound`, `InvalidLocation` or `Unknown`), and
/// `std::runtime_error` for any other failure.
FOUNDATION_EXPORT StorageIRI toCanonicalizedStorageIRI(const std::u16string& scheme, const fl::filesystem::upath& path);

/// The path for the local file system, in native form: `location.toUPath()`, which says what is thrown.
FOUNDATION_EXPORT fl::filesystem::upath fromStorageIRI(const StorageIRI& location);

}  // namespace foundation::storage::provider
