#include <foundation/storage/backend/memory/detail/MemoryProvider.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/memory/detail/Failure.h>
#include <foundation/storage/backend/memory/detail/FileCopy.h>
#include <foundation/storage/backend/memory/detail/MemoryByteStream.h>
#include <foundation/storage/backend/support/EntryTree.h>
#include <foundation/storage/backend/support/Options.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>
#include <foundation/storage/provider/SafeByteStream.h>

#include <sstream>
#include <utility>

namespace foundation::storage::backend::memory::detail {

using provider::ByteStream;
using provider::ByteStreamAppend;
using provider::ByteStreamCreate;
using provider::ByteStreamOpenOptions;
using provider::ByteStreamTruncate;
using provider::ErrorCode;
using provider::Exception;
using provider::ExistenceType;
using provider::ExtendedFeature;

namespace {

MemoryByteStream::Mode modeOf(const ByteStreamOpenOptions& options) {
  return options.append == ByteStreamAppend::Append ? MemoryByteStream::Mode::Appending
                                                    : MemoryByteStream::Mode::Positioned;
}

/// Opening fails as a stream does.
template <class Open>
std::unique_ptr<ByteStream> opened(const provider::StorageIRI& location, const Open& open) {
  try {
    return open();
  } catch (const Exception& refused) {
    const auto reason = refused.topExceptionContext()->getExceptionContextInfo()->getProviderMessage();
    throw streamRefusal<provider::ByteStreamOpenFailure>(refused.getErrorCode(), location, reason);
  }
}

}  // namespace

MemoryProvider::MemoryProvider(StorageIRI root) : root_(std::move(root)) {}
MemoryProvider::~MemoryProvider() { endChangePolling(); }

void MemoryProvider::doCreateFile(const StorageIRI& location) const { tree_->createFile(place(location)); }
void MemoryProvider::doCreateFolder(const StorageIRI& location) const { tree_->createFolder(place(location)); }

bool MemoryProvider::doFileExists(const StorageIRI& location) const {
  return tree_->kindOf(place(location)) == Kind::File;
}

bool MemoryProvider::doFolderExists(const StorageIRI& location) const {
  return tree_->kindOf(place(location)) == Kind::Folder;
}

ExistenceType MemoryProvider::doExists(const StorageIRI& location) const {
  const auto kind = tree_->kindOf(place(location));
  if (!kind)
    return ExistenceType::AsNeither;
  return kind == Kind::File ? ExistenceType::AsFile : ExistenceType::AsFolder;
}

provider::ExistenceTypeExtended MemoryProvider::doExistsExtended(const StorageIRI& location) const {
  const auto kind = tree_->kindOf(place(location));
  if (!kind)
    return provider::ExistenceTypeExtended::None;
  return kind == Kind::File ? provider::ExistenceTypeExtended::RegularFile
                            : provider::ExistenceTypeExtended::RegularFolder;
}

void MemoryProvider::doRemoveFile(const StorageIRI& location) const { tree_->remove(place(location), Kind::File); }
void MemoryProvider::doRemoveFolder(const StorageIRI& location) const { tree_->remove(place(location), Kind::Folder); }

void MemoryProvider::doRemoveFolderRecursively(const StorageIRI& location) const {
  tree_->removeRecursively(place(location));
}

void MemoryProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                                const ReplacementPolicy& policy) const {
  tree_->move(place(source), place(destination), policy, Kind::File);
}

void MemoryProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                  const ReplacementPolicy& policy) const {
  tree_->move(place(source), place(destination), policy, Kind::Folder);
}

provider::FileAttributes MemoryProvider::doGetFileAttributes(const StorageIRI& location) const {
  return tree_->fileAttributes(place(location));
}

provider::FolderAttributes MemoryProvider::doGetFolderAttributes(const StorageIRI& location) const {
  return tree_->folderAttributes(place(location));
}

std::unique_ptr<ByteStream> MemoryProvider::doOpenStream(const StorageIRI& location,
                                                         const ByteStreamOpenOptions& options) const {
  return opened(location, [&] {
    return std::make_unique<MemoryByteStream>(tree_->fileForWriting(place(location), options.create, options.truncate),
                                              modeOf(options), location);
  });
}

std::unique_ptr<ByteStream> MemoryProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return opened(location, [&] {
    return std::make_unique<MemoryByteStream>(tree_->file(place(location)).content, MemoryByteStream::Mode::Positioned,
                                              location);
  });
}

std::unique_ptr<provider::TransactionalStream> MemoryProvider::doOpenTransactionalStream(
    const StorageIRI& location, const ByteStreamOpenOptions& options) const {
  auto target = place(location);
  auto content = tree_->makeContent();
  tree_->requireCanPut(*content, target, ReplacementPolicy::Overwrite);
  auto bytes = std::make_unique<MemoryByteStream>(content, modeOf(options), location);
  const bool isReadable = options.access == provider::ByteStreamAccess::ReadWrite;
  std::shared_ptr<ByteStream> stream = std::make_shared<provider::SafeByteStream>(std::move(bytes), isReadable, true);
  const auto finish = [entries = tree_, content, target](const provider::StreamClosePolicy& policy) {
    if (policy == provider::StreamClosePolicy::Commit)
      entries->put({content, true}, *content, target, ReplacementPolicy::Overwrite);
  };
  return std::make_unique<provider::GenericTransactionalStream<ByteStream>>(std::move(stream), finish);
}

MemoryProvider::Listing MemoryProvider::list(const StorageIRI& location, const support::ListingScope& scope) const {
  return std::make_unique<support::EntryTree>(
      [entries = tree_, folder = place(location), scope] { return entries->list(folder, scope); });
}

void MemoryProvider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                                const ReplacementPolicy& policy) const {
  copyAside(*tree_, place(source), place(destination), policy, nullptr);
}

provider::TransactionStatus MemoryProvider::doCopyFileAtomic(
    const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy,
    const provider::InterruptCallback& interruptCallback) const {
  return copyAside(*tree_, place(source), place(destination), policy, interruptCallback);
}

void MemoryProvider::doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const {
  if (time.is_special())
    throw refusal(ErrorCode::UnsupportedOperation, location, u"This is no point in time");
  tree_->setLastModified(place(location), time);
}

void MemoryProvider::doSetWritable(const StorageIRI& location, bool writable) const {
  tree_->setWritable(place(location), writable);
}

bool MemoryProvider::doHasFeature(const ExtendedFeature& feature) const {
  return feature == ExtendedFeature::RecursiveFolderRemoval || feature == ExtendedFeature::AtomicFileCopy;
}

provider::StorageIRI MemoryProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  std::u16string path;
  for (const auto& name : place(location).names)
    path += u"/" + name;
  return StorageIRI(root_, path);
}

provider::ProviderStorageInfo MemoryProvider::doGetProviderStorageInfo(const StorageIRI& location) const {
  place(location);
  const auto& space = tree_->space();
  return provider::ProviderStorageInfo().withStorageCapacity(space.capacity()).withSpaceOccupied(space.occupied());
}

void MemoryProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  const auto content =
      tree_->fileForWriting(place(location), ByteStreamCreate::NeverCreate, ByteStreamTruncate::PreserveExisting);
  if (newSize > FileContent::maximumSize)
    throw refusal(ErrorCode::FileTooLarge, location, u"No file can be longer than 2^63 - 1 bytes");
  if (!content->resize(newSize))
    throw refusal(ErrorCode::NoSpaceLeft, location, u"The store is full");
}

void MemoryProvider::doConfigure(boost::property_tree::ptree configuration) {
  support::Options options(std::move(configuration));
  const auto capacity = options.takeBytes("capacity");
  options.requireNoMore();
  tree_->space().setCapacity(capacity.value_or(Space::unlimited));
}

std::u16string MemoryProvider::doGetFileIdentity(const StorageIRI& location) const {
  std::ostringstream text;
  text << "memory:" << tree_->file(place(location)).content.get();
  return fl::i18n::to_ustring(text.str());
}

}  // namespace foundation::storage::backend::memory::detail
