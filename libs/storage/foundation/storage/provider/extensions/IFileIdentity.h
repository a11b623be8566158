#pragma once

#include <foundation/core/Export.h>

#include <string>

namespace foundation::storage::provider {
class StorageIRI;
}

namespace foundation::storage::provider::extensions {

/// A provider that tells its files apart: where a file can have several names of equal right (hard links), or
/// two stores the same locations, the canonical location does not. A back end inherits from it publicly, beside
/// `IProvider`; copying asks it before it opens a destination that might be the source.
class FOUNDATION_EXPORT IFileIdentity {
 public:
  IFileIdentity() = default;
  IFileIdentity(const IFileIdentity&) = default;
  IFileIdentity& operator=(const IFileIdentity&) = default;
  virtual ~IFileIdentity();

  /// A text that two existing files share exactly where they are one file, whatever providers they are reached
  /// through. It begins with the back end's name, so that those of different back ends never meet, and holds in
  /// this process as long as the file exists.
  /// @param location  of a file; links are followed. Throws `Exception` where there is none. Any number of
  ///                  threads may ask.
  std::u16string getFileIdentity(const StorageIRI& location) const { return doGetFileIdentity(location); }

 private:
  virtual std::u16string doGetFileIdentity(const StorageIRI& location) const = 0;
};

}  // namespace foundation::storage::provider::extensions
