// Back ends built against one build of the library must run with the next, so the order of virtual
// operations may not change. It is read from pointers to the (private) members: in the Itanium C++ ABI,
// section 2.3, such a pointer begins with 1 + the offset in the table of the class.

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/provider/TransactionalStream.h>
#include <foundation/storage/provider/detail/StorageIRIImpl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

namespace foundation::storage::provider {
namespace {

/// The lists of entries that the instantiations below fill.
template <class Order>
std::vector<std::size_t>& entries() {
  static std::vector<std::size_t> list;
  return list;
}

template <class Member>
std::size_t entryOf(Member member) {
  std::uintptr_t word;
  std::memcpy(&word, &member, sizeof(word));
  return (word - 1) / sizeof(void*);
}

/// An explicit instantiation may name members that only the class itself may use.
template <class Order, auto... members>
struct Recorded {
  static const bool done;
};
template <class Order, auto... members>
const bool Recorded<Order, members...>::done = (entries<Order>() = {entryOf(members)...}, true);

struct InProvider;
struct InConfigurableProvider;
struct InByteStream;
struct InTransactionalStream;

template struct Recorded<
    InProvider, &IProvider::doCreateFile, &IProvider::doCreateFolder, &IProvider::doCreateFolderRecursive,
    &IProvider::doFileExists, &IProvider::doFolderExists, &IProvider::doRemoveFile, &IProvider::doMoveFile,
    &IProvider::doRemoveFolder, &IProvider::doRemoveFolderRecursively, &IProvider::doMoveFolder,
    &IProvider::doGetFileAttributes, &IProvider::doGetFolderAttributes, &IProvider::doOpenStream,
    &IProvider::doOpenReadOnlyStream, &IProvider::doOpenTransactionalStream,
    &IProvider::doOpenTransactionalStreamAtScratchLocation, &IProvider::doListAll, &IProvider::doListAllWildcards,
    &IProvider::doListFiles, &IProvider::doListFilesWildcards, &IProvider::doListFolders,
    &IProvider::doListFoldersWildcards, &IProvider::doListAllNamesOnly, &IProvider::doListAllNamesOnlyWildcards,
    &IProvider::doListFoldersNamesOnly, &IProvider::doListFoldersNamesOnlyWildcards, &IProvider::doListFilesNamesOnly,
    &IProvider::doListFilesNamesOnlyWildcards, &IProvider::doListAllRecursive, &IProvider::doListAllRecursiveWildcards,
    &IProvider::doListAllRecursiveNamesOnly, &IProvider::doListAllRecursiveNamesOnlyWildcards, &IProvider::doCopyFile,
    &IProvider::doCopyFileAtomic, &IProvider::doSetLastModified, &IProvider::doSetWritable,
    &IProvider::doPublishFolderEventsFor, &IProvider::doPublishFileEventsFor, &IProvider::doStopPublishingEventsFor,
    &IProvider::doStartChangePollingMechanism, &IProvider::doStopChangePollingMechanism, &IProvider::doHasFeature,
    &IProvider::doGetPathComparator, &IProvider::doGetCanonicalLocation, &IProvider::doGetFilenameSensitivity,
    &IProvider::doShutdown, &IProvider::doExists, &IProvider::doExistsExtended, &IProvider::doGetExtendedAttributes,
    &IProvider::doGetProviderStorageInfo, &IProvider::doTruncateToSize, &IProvider::doGetProviderCacheUsage>;
template struct Recorded<InConfigurableProvider, &IConfigurableProvider::doConfigure>;
template struct Recorded<InByteStream, &ByteStream::doRead, &ByteStream::doWrite, &ByteStream::doSeek,
                         &ByteStream::doClose>;
template struct Recorded<InTransactionalStream, &TransactionalStream::doRead, &TransactionalStream::doWrite,
                         &TransactionalStream::doSeek, &TransactionalStream::doClose,
                         &TransactionalStream::doGetByteStream>;

std::vector<std::size_t> countedFrom(std::size_t first, std::size_t count) {
  std::vector<std::size_t> numbers;
  while (numbers.size() < count)
    numbers.push_back(first + numbers.size());
  return numbers;
}

// A destructor takes two entries.
TEST(VirtualOrder, IsKept) {
  EXPECT_EQ(entries<InProvider>(), countedFrom(2, 52));
  EXPECT_EQ(entries<InConfigurableProvider>(), countedFrom(54, 1));
  EXPECT_EQ(entries<InByteStream>(), countedFrom(2, 4));
  EXPECT_EQ(entries<InTransactionalStream>(), countedFrom(2, 5));

  using Entries = IFolderEntryIterator;
  EXPECT_EQ((std::vector{entryOf(&Entries::current), entryOf(&Entries::hasNext), entryOf(&Entries::next),
                         entryOf(&Entries::reset)}),
            countedFrom(0, 4));

  using Impl = detail::StorageIRIImpl;
  EXPECT_EQ(
      (std::vector{entryOf(&Impl::equals), entryOf(&Impl::less), entryOf(&Impl::getScheme), entryOf(&Impl::getParent),
                   entryOf(&Impl::hasParent), entryOf(&Impl::getRoot), entryOf(&Impl::hasPath), entryOf(&Impl::getPath),
                   entryOf(&Impl::getName), entryOf(&Impl::toString), entryOf(&Impl::toAsciiString),
                   entryOf(&Impl::getHost), entryOf(&Impl::hasHost), entryOf(&Impl::isOpaque), entryOf(&Impl::toIRI),
                   entryOf(&Impl::hasInnerIRI), entryOf(&Impl::getInnerIRI), entryOf(&Impl::toUPath)}),
      countedFrom(0, 18));
  EXPECT_EQ(entryOf(&Impl::withPath), 20u);
}

}  // namespace
}  // namespace foundation::storage::provider
