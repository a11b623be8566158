#pragma once

#include <foundation/core/Export.h>

namespace foundation::storage::provider::extensions {

/// A provider that gathers changes and can be told to hand them to its store. A back end inherits from
/// it publicly, beside `IProvider`; callers find it by a dynamic cast, or use
/// `StorageItem::flushFilesystem`.
class FOUNDATION_EXPORT IFlushableFilesystem {
 public:
  IFlushableFilesystem() = default;
  IFlushableFilesystem(const IFlushableFilesystem&) = default;
  IFlushableFilesystem& operator=(const IFlushableFilesystem&) = default;
  virtual ~IFlushableFilesystem();

  /// Hands over all changes made so far; throws what the back end throws. Any number of threads may call it, also while
  /// other operations run.
  void flushFilesystem() { doFlushFilesystem(); }

 private:
  virtual void doFlushFilesystem() = 0;
};

}  // namespace foundation::storage::provider::extensions
