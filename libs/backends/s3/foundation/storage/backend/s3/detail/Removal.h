#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>

#include <cstddef>
#include <exception>
#include <string>
#include <vector>

namespace foundation::storage::backend::s3::detail {

/// As `IProvider` has them.
/// @{
void removeFile(Session& session, const Place& place);
void removeFolder(Session& session, const Place& place);
/// @}

/// Removes a folder with all that it holds. Goes on where the store refuses to remove one thing of it, and throws the
/// first such failure at the end.
/// @param root  of the bucket
void removeTree(Session& session, const provider::StorageIRI& root, const Place& place);

/// Removes objects, the most at once that the store takes, and goes on where it refuses one of them.
class ObjectRemoval {
 public:
  /// @param root  of the bucket, for the locations of failures
  ObjectRemoval(const client::Client& client, const provider::StorageIRI& root) : client_(client), root_(root) {}

  /// May do so later.
  void remove(std::string key);
  /// Removes what is left to be removed. Throws the first refusal of all, as an `Exception` with its location.
  void finish();

 private:
  void removeGathered();

  const client::Client& client_;
  const provider::StorageIRI& root_;
  std::vector<std::string> keys_;
  std::exception_ptr firstFailure_;
};

}  // namespace foundation::storage::backend::s3::detail
