#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>

namespace foundation::storage::backend::local {

/// Makes the provider of the local file system, which serves locations of the scheme `file` without a
/// host (but localhost):
///
///     const provider::StorageIRI folder(u"file:///home/ann");
///     const provider::StorageItem home(LocalProviderFactory().buildProvider(folder), folder);
///
/// Names are the system's own bytes: those that are no UTF-8 are kept as `fl::i18n` says. Links are
/// followed, but for removing, moving and `existsExtended`. Entries whose names begin with '.' are
/// hidden. Wildcards are those of `support::Wildcard`, by case. Listings of trees do not descend into links. A
/// copy gets the source's mode, less the umask, unless it is atomic or asks a callback. Folders and anything that
/// only blocks (pipes, sockets) cannot be opened as streams.
///
/// A transaction writes to a scratch file beside its target and renames that over the target. At every moment
/// everybody, programs that start after a crash of this one included, finds either the old content or the new.
/// It is not durable yet: after a crash of the system the new content may be missing or incomplete.
/// - The target is a regular file or nothing; all else is refused when the transaction is opened, with
///   `Exception` and `InvalidLocation`.
/// - A link is written through: the file that it leads to, existing or not, is replaced, and the link stays.
/// - The new file has the group and the permissions that the old one had when the transaction was opened, without
///   its set-user-ID, set-group-ID and sticky bits; the scratch file never has more. Where the group cannot be
///   kept, or an access control list said what it may do, the group may do what all others may. Without an old
///   file the new one gets 0666, less the umask. Owner, access control lists and extended attributes are a new
///   file's.
/// - Other hard links of the old file keep the old content.
/// - What a killed program leaves behind, `provider::removeScratchFiles` removes.
///
/// Change events are the system's (inotify(7)), and mean what polled ones mean: an entry's last-modified time
/// changed, its name came or went. A rename is a removal and an addition, of all that is below a folder, too. Changes
/// that follow each other closely may come as the one that they amount to. What the kernel drops is made up for.
/// - Callbacks run on a thread of the provider's, one at a time. They must neither subscribe nor stop nor let go of
///   the provider for good: all of these wait for the callback.
/// - A link is watched along with what it leads to, but is not descended into. Not noticed are a target that comes
///   to be, a link on the way to the watched folder that is led elsewhere, what lies deeper than the system's longest
///   path, writing through a hard link in a folder that is not watched, and what other machines do in a network
///   file system. Writing to memory that a file is mapped to is noticed when the file is closed.
/// - Each folder below costs one of the kernel's watches (fs.inotify.max_user_watches); without recursion, where
///   `EntryModified` is wanted, each direct one. So do links then, and the folders on the way to the watched one.
///   Where there are no more, subscribing fails; a folder that is made later only lacks events from within.
/// - When the watched folder is removed or moved, the subscription ends with `WatchedFolderRemoved`. For a single
///   file that folder is its parent; its times are not told.
///
/// What the system said of a failure is the failure's top context: its key names the system call, its
/// info holds the system's words, the error number as the response code, under "name" the number's
/// symbol (errno(3)), and under "location" the text of the location, which a stream's failure does not
/// carry otherwise.
class FOUNDATION_EXPORT LocalProviderFactory : public provider::PhysicalProviderFactory {
 public:
  LocalProviderFactory();
  ~LocalProviderFactory() override;
  LocalProviderFactory(const LocalProviderFactory&) = default;
  LocalProviderFactory& operator=(const LocalProviderFactory&) = default;

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageIRI& location) const override;
  /// One provider serves the whole file system. Throws `Exception` with `InvalidLocation` for locations
  /// that it cannot serve.
  provider::StorageIRI doGetKey(const provider::StorageIRI& location) const override;
};

}  // namespace foundation::storage::backend::local
