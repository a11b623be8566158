#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail {

/// In bytes. Source: docs.aws.amazon.com, "Naming Amazon S3 objects".
constexpr std::size_t longestKey = 1024;

/// The root of the bucket that a location lies in, `s3://BUCKET/`. Throws `Exception` with `InvalidLocation` where the
/// location names no bucket of an object store.
provider::StorageIRI rootOf(const provider::StorageIRI& location);

/// The bucket of such a root.
std::string bucketOf(const provider::StorageIRI& root);

/// A location as the key that it stands for: the bytes of its path behind the first '/', in UTF-8, less one '/' at the
/// end. Nothing is resolved or put together: "..", and what lies between two '/', are names.
struct Place {
  provider::StorageIRI location;  ///< as the caller wrote it, for failures
  std::string key;                ///< empty for the root

  bool isRoot() const { return key.empty(); }
  /// What the keys of a folder's entries begin with, and the key of the empty object that stands for an empty folder.
  std::string prefix() const { return isRoot() ? std::string() : key + '/'; }
  std::string parentPrefix() const;
};

/// Throws `Exception` with `InvalidLocation` where the location is not in the bucket with that root, and where no
/// object can have such a key: it is no Unicode, or too long.
Place placeIn(const provider::StorageIRI& root, const provider::StorageIRI& location);

/// The location of a key in the bucket with that root.
provider::StorageIRI locationOf(const provider::StorageIRI& root, std::string_view key);

/// The prefix of the folder that holds an entry; empty for the root. Names that are empty need no folder: that of
/// "a//b" is "a/".
/// @param key  of an object, or the prefix of a folder that is not the root
std::string parentPrefixOf(std::string_view key);

}  // namespace foundation::storage::backend::s3::detail
