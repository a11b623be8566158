#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IProvider.h>

#include <memory>

namespace foundation::storage::testing {

/// A provider that has no more than what every back end must have, each primitive done by another provider:
/// for testing what back ends inherit, which runs here even where the inner provider overrides it. Safe for
/// several threads where the inner provider is.
class FOUNDATION_EXPORT PrimitiveProvider final : public provider::IProvider {
 public:
  /// @param inner  does the work; not null
  explicit PrimitiveProvider(std::shared_ptr<provider::IProvider> inner);
  ~PrimitiveProvider() override;

 private:
  using StorageIRI = provider::StorageIRI;
  using ReplacementPolicy = provider::ReplacementPolicy;

  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
  bool doFileExists(const StorageIRI& location) const override;
  bool doFolderExists(const StorageIRI& location) const override;
  void doRemoveFile(const StorageIRI& location) const override;
  void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doRemoveFolder(const StorageIRI& location) const override;
  void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                    const ReplacementPolicy& policy) const override;
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override;
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override;
  std::unique_ptr<provider::ByteStream> doOpenStream(const StorageIRI& location,
                                                     const provider::ByteStreamOpenOptions& options) const override;
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  Listing doListAll(const StorageIRI& location) const override;
  Listing doListFiles(const StorageIRI& location) const override;
  Listing doListFolders(const StorageIRI& location) const override;

  std::shared_ptr<provider::IProvider> inner_;
};

}  // namespace foundation::storage::testing
