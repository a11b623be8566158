#pragma once

#include <foundation/core/Export.h>

namespace foundation::storage::provider {
class StorageIRI;
}

/// What a provider may offer beside `IProvider`.
namespace foundation::storage::provider::extensions {

/// A provider that remembers what it has seen and can be told that some of it may be stale. A back end
/// inherits from it publicly, beside `IProvider`; callers find it by a dynamic cast, or use
/// `invalidateProvider`.
class FOUNDATION_EXPORT IInvalidatable {
 public:
  IInvalidatable() = default;
  IInvalidatable(const IInvalidatable&) = default;
  IInvalidatable& operator=(const IInvalidatable&) = default;
  virtual ~IInvalidatable();

  /// Forgets what is known of `location` and below; throws what the back end throws. Any number of threads may call it,
  /// also while other operations run.
  void invalidate(const StorageIRI& location) { doInvalidate(location); }

 private:
  virtual void doInvalidate(const StorageIRI& location) = 0;
};

}  // namespace foundation::storage::provider::extensions
