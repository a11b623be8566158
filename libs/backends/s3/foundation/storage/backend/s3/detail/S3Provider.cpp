#include <foundation/storage/backend/s3/detail/S3Provider.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/s3/detail/Attributes.h>
#include <foundation/storage/backend/s3/detail/Configuration.h>
#include <foundation/storage/backend/s3/detail/Copying.h>
#include <foundation/storage/backend/s3/detail/Creation.h>
#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Listing.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/Moving.h>
#include <foundation/storage/backend/s3/detail/Opening.h>
#include <foundation/storage/backend/s3/detail/Removal.h>
#include <foundation/storage/backend/support/InvalidOptionException.h>

#include <utility>

namespace foundation::storage::backend::s3::detail {

using provider::ByteStreamOpenOptions;
using provider::ExtendedAttributes;
using provider::ExtendedFeature;

S3Provider::S3Provider(StorageIRI root) : root_(std::move(root)) {}
S3Provider::~S3Provider() { endChangePolling(); }

SessionPtr S3Provider::session() const try {
  const std::scoped_lock lock(mutex_);
  if (!session_)
    session_ = sessionWith(readConfiguration(boost::property_tree::ptree()));
  return session_;
} catch (const support::InvalidOptionException& failure) {
  throw refusal(provider::ErrorCode::InvalidLocation, root_,
                u"Nothing is configured, and the environment is of no use: " + fl::i18n::to_ustring(failure.what()));
}

SessionPtr S3Provider::sessionWith(const client::Settings& settings) const {
  return std::make_shared<Session>(client::Client(settings, bucketOf(root_)).endingWith(interrupt_));
}

void S3Provider::doConfigure(boost::property_tree::ptree configuration) {
  auto configured = sessionWith(readConfiguration(std::move(configuration)));
  const std::scoped_lock lock(mutex_);
  session_.swap(configured);
}

void S3Provider::doShutdown() { interrupt_->raise(); }

void S3Provider::doInvalidate(const StorageIRI& location) { session()->folders.invalidate(place(location).prefix()); }

void S3Provider::doCreateFile(const StorageIRI& location) const { detail::createFile(*session(), place(location)); }
void S3Provider::doCreateFolder(const StorageIRI& location) const { detail::createFolder(*session(), place(location)); }

bool S3Provider::doFileExists(const StorageIRI& location) const {
  return findFile(*session(), place(location)).has_value();
}

bool S3Provider::doFolderExists(const StorageIRI& location) const {
  return detail::folderExists(*session(), place(location));
}

void S3Provider::doRemoveFile(const StorageIRI& location) const { detail::removeFile(*session(), place(location)); }
void S3Provider::doRemoveFolder(const StorageIRI& location) const { detail::removeFolder(*session(), place(location)); }

void S3Provider::doRemoveFolderRecursively(const StorageIRI& location) const {
  removeTree(*session(), root_, place(location));
}

void S3Provider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                            const ReplacementPolicy& policy) const {
  detail::moveFile(*session(), place(source), place(destination), policy);
}

void S3Provider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                              const ReplacementPolicy& policy) const {
  detail::moveFolder(*session(), root_, place(source), place(destination), policy);
}

provider::FileAttributes S3Provider::doGetFileAttributes(const StorageIRI& location) const {
  const auto object = requireFile(*session(), place(location));
  return attributesOfFile(location.getName(), object.size, object.lastModified);
}

provider::FolderAttributes S3Provider::doGetFolderAttributes(const StorageIRI& location) const {
  requireFolder(*session(), place(location));
  return attributesOfFolder(location.getName());
}

std::unique_ptr<provider::ByteStream> S3Provider::doOpenStream(const StorageIRI& location,
                                                               const ByteStreamOpenOptions& options) const {
  return openForWriting(session(), place(location), options);
}

std::unique_ptr<provider::ByteStream> S3Provider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return openForReading(session(), place(location));
}

std::unique_ptr<provider::TransactionalStream> S3Provider::doOpenTransactionalStream(
    const StorageIRI& location, const ByteStreamOpenOptions& options) const {
  return openTransactionally(session(), place(location), options);
}

S3Provider::Listing S3Provider::list(const StorageIRI& location, const support::ListingScope& scope) const {
  return std::make_unique<detail::Listing>(session(), place(location), scope, std::string());
}

S3Provider::Listing S3Provider::listMatching(const StorageIRI& location, const support::ListingScope& scope,
                                             const std::u16string& wildcard) const {
  const auto begin = scope.isRecursive ? std::string() : literalBegin(wildcard);
  auto candidates = std::make_unique<detail::Listing>(session(), place(location), scope, begin);
  return std::make_unique<support::FilteredListing>(std::move(candidates), support::Wildcard(wildcard));
}

void S3Provider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                            const ReplacementPolicy& policy) const {
  detail::copyFile(*session(), place(source), place(destination), policy, nullptr);
}

provider::TransactionStatus S3Provider::doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                                         const ReplacementPolicy& policy,
                                                         const provider::InterruptCallback& interruptCallback) const {
  return detail::copyFile(*session(), place(source), place(destination), policy, interruptCallback);
}

bool S3Provider::doHasFeature(const ExtendedFeature& feature) const {
  return feature == ExtendedFeature::RecursiveFolderRemoval || feature == ExtendedFeature::AtomicFileCopy;
}

provider::StorageIRI S3Provider::doGetCanonicalLocation(const StorageIRI& location) const {
  return locationOf(root_, place(location).key);
}

ExtendedAttributes S3Provider::doGetExtendedAttributes(const StorageIRI& location) const {
  const auto working = session();
  const auto asked = place(location);
  if (asked.isRoot())
    return bucketAttributes(working->client);
  if (const auto object = findFile(*working, asked))
    return objectAttributes(*object);
  requireFolder(*working, asked);
  return {};
}

void S3Provider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  detail::truncateToSize(session(), place(location), newSize);
}

std::u16string S3Provider::doGetFileIdentity(const StorageIRI& location) const {
  const auto working = session();
  const auto file = place(location);
  requireFile(*working, file);
  const auto& client = working->client;
  return fl::i18n::to_ustring("s3:" + client.settings().endpoint + '/' + client.bucket() + '/' + file.key);
}

}  // namespace foundation::storage::backend::s3::detail
