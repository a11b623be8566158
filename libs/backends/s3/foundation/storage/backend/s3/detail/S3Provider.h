#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/backend/support/ListingProvider.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>
#include <foundation/storage/provider/extensions/IInvalidatable.h>

#include <memory>
#include <mutex>
#include <string>

namespace foundation::storage::backend::s3::detail {

/// One bucket; `S3ProviderFactory` says how it behaves.
class S3Provider final : public support::ListingProvider<provider::IConfigurableProvider>,
                         public provider::extensions::IFileIdentity,
                         public provider::extensions::IInvalidatable {
 public:
  /// Sends nothing.
  /// @param root  as `rootOf` gives it
  explicit S3Provider(provider::StorageIRI root);
  ~S3Provider() override;

  /// What operations that begin now work with. Throws `Exception` where nothing was configured, and what the
  /// environment says makes no sense.
  SessionPtr session() const;
  Place place(const provider::StorageIRI& location) const { return placeIn(root_, location); }
  const provider::StorageIRI& root() const { return root_; }

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
  void doRemoveFolderRecursively(const StorageIRI& location) const override;
  void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                    const ReplacementPolicy& policy) const override;
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override;
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override;
  std::unique_ptr<provider::ByteStream> doOpenStream(const StorageIRI& location,
                                                     const provider::ByteStreamOpenOptions& options) const override;
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  std::unique_ptr<provider::TransactionalStream> doOpenTransactionalStream(
      const StorageIRI& location, const provider::ByteStreamOpenOptions& options) const override;
  Listing list(const StorageIRI& location, const support::ListingScope& scope) const override;
  /// Asks only for the names that begin as the wildcard does.
  Listing listMatching(const StorageIRI& location, const support::ListingScope& scope,
                       const std::u16string& wildcard) const override;
  void doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  provider::TransactionStatus doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                               const ReplacementPolicy& policy,
                                               const provider::InterruptCallback& interruptCallback) const override;
  bool doHasFeature(const provider::ExtendedFeature& feature) const override;
  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override;
  provider::ExtendedAttributes doGetExtendedAttributes(const StorageIRI& location) const override;
  void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const override;
  /// Ends all waiting; what is under way fails.
  void doShutdown() override;
  void doConfigure(boost::property_tree::ptree configuration) override;
  std::u16string doGetFileIdentity(const StorageIRI& location) const override;
  void doInvalidate(const StorageIRI& location) override;

  SessionPtr sessionWith(const client::Settings& settings) const;

  const StorageIRI root_;
  const std::shared_ptr<http::Interrupt> interrupt_ = std::make_shared<http::Interrupt>();
  mutable std::mutex mutex_;    ///< guards the pointer
  mutable SessionPtr session_;  ///< null before it is needed, or configured
};

}  // namespace foundation::storage::backend::s3::detail
