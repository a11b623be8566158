#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>

/// The local file system as a store.
namespace foundation::storage::backend::local {

/// Makes the provider of the local file system, which serves locations of the scheme `file` without a
/// host (but localhost):
///
///     const provider::StorageIRI folder(u"file:///home/ann");
///     const provider::StorageItem home(LocalProviderFactory().buildProvider(folder), folder);
///
/// Names are the system's own bytes: those that are no UTF-8 are kept as `fl::i18n` says. Paths can be of any length.
/// Links are followed, but for removing, moving and `existsExtended`; listings and removals of trees never descend into
/// one. Entries whose names begin with '.' are hidden. Wildcards are those of `support::Wildcard`; whether case makes a
/// difference is the folder's own rule. Folders and anything that only blocks (pipes, sockets) cannot be opened as
/// streams.
///
/// Options, all of which `configure` sets, those that it is not given to what they are here. What is under way goes on
/// as it began. Throws `support::InvalidOptionException` for any other key and for a bad value.
/// - `root`: the absolute path of a folder, in UTF-8, that the provider is confined to; by default it is not. Locations
///   stay what they are elsewhere. What leads out of the folder, by "..", by a link, or by any link with an absolute
///   path, is refused with `PermissionDenied`, whatever is renamed meanwhile (openat2(2), RESOLVE_BENEATH; a walk by
///   single names where the kernel has none). In listings such a link leads nowhere. Not refused are hard links and
///   mounts, which only an administrator or the owner of the file can have put there.
/// - `durable`: `true` makes commits, and moves to other file systems, outlive a crash of the system; by default
///   `false`.
/// - `follow-links`: `false` refuses every path through a link with `InvalidLocation`, and takes a link at its end for
///   a file that cannot be opened; by default `true`. Neither then nor with a `root` are there native change events.
/// - `hide-scratch-files`: `true` leaves the scratch files of transactions out of listings; by default `false`.
///
/// A copy keeps holes, and shares blocks with its source where the file system can. A new file gets the source's mode,
/// less the umask, a replaced one keeps its own. An atomic copy is a transaction, and asks its callback after each 4
/// MiB, holes included. (Where `StorageItem` asks a callback for a copy that is not atomic, it copies through streams.)
///
/// A move is a rename. To another file system the entry is copied under a scratch name, with modes, times, extended
/// attributes and access control lists (those of the system's own, security.*, and those of kinds that the other file
/// system has not are left out) and, where the program may give them, owners, renamed to its place, and then removed
/// where it was. If that last step fails, what is left of it is still there, too. Hard links within a moved tree become
/// separate files. Three descriptors are needed for each folder on the way down.
///
/// A recursive removal stops at the first entry that cannot be removed, and names it. `setWritable` gives the owner the
/// permission to write, or takes it from everybody; `isWritable` tells what the program may do, which for root is
/// everything. `setLastModified` fails where the file system keeps another time, as some do beyond the year 2446.
/// Extended attributes are those of the user namespace (xattr(7)), by their full names, as `std::string`.
///
/// A transaction writes to a scratch file beside its target and renames that over the target. At every moment
/// everybody, programs that start after a crash of this one included, finds either the old content or the new. After a
/// crash of the system that holds only with the option `durable`: the content is made durable before the rename, and
/// the rename before `close` returns. Where only the latter fails, `close` throws though the new content is in place.
/// - The target is a regular file or nothing; all else is refused when the transaction is opened, with `Exception` and
///   `InvalidLocation`.
/// - A link is written through: the file that it leads to, existing or not, is replaced, and the link stays.
/// - The new file has the group and the permissions that the old one had when the transaction was opened, without its
///   set-user-ID, set-group-ID and sticky bits; the scratch file never has more. Where the group cannot be kept, the
///   group may do what all others may. Without an old file the new one gets 0666, less the umask.
/// - On commit it is given the old one's extended attributes and access control list, and its owner where the program
///   may give files away, which mostly only root may. If an attribute of users or of the administrator (user.*,
///   trusted.*) cannot be kept, the commit fails.
/// - Other hard links of the old file keep the old content.
/// - What a killed program leaves behind, `provider::removeScratchFiles` removes.
///
/// Change events are the system's (inotify(7)), and mean what polled ones mean: an entry's last-modified time changed,
/// its name came or went. A rename is a removal and an addition, of all that is below a folder, too. Changes that
/// follow each other closely may come as the one that they amount to. What the kernel drops is made up for.
/// - Callbacks run on a thread of the provider's, one at a time. They must neither subscribe nor stop nor let go of the
///   provider for good: all of these wait for the callback.
/// - A link is watched along with what it leads to, but is not descended into. Not noticed are a target that comes to
///   be, a link on the way to the watched folder that is led elsewhere, what lies deeper than the system's longest
///   path, writing through a hard link in a folder that is not watched, and what other machines do in a network file
///   system. Writing to memory that a file is mapped to is noticed when the file is closed.
/// - Each folder below costs one of the kernel's watches (fs.inotify.max_user_watches); without recursion, where
///   `EntryModified` is wanted, each direct one. So do links then, and the folders on the way to the watched one. Where
///   there are no more, subscribing fails; a folder that is made later only lacks events from within.
/// - A folder, and each file in it, has one subscription: another one changes nothing while that lasts.
/// - When the watched folder is removed or moved, the subscription ends with `WatchedFolderRemoved`. For a single file
///   that folder is its parent; its times are not told.
///
/// What the system said of a failure is the failure's top context: its key names the system call, its info holds the
/// system's words, the error number as the response code, under "name" the number's symbol (errno(3)), and under
/// "location" the text of the location, which a stream's failure does not carry otherwise.
class FOUNDATION_EXPORT LocalProviderFactory : public provider::PhysicalProviderFactory {
 public:
  /// With the options as they are by default.
  LocalProviderFactory();
  ~LocalProviderFactory() override;
  LocalProviderFactory(const LocalProviderFactory&) = default;
  LocalProviderFactory& operator=(const LocalProviderFactory&) = default;

  /// What its providers can do.
  static provider::Capabilities capabilities();

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageIRI& location) const override;
  /// One provider serves the whole file system. Throws `Exception` with `InvalidLocation` for locations
  /// that it cannot serve.
  provider::StorageIRI doGetKey(const provider::StorageIRI& location) const override;
};

}  // namespace foundation::storage::backend::local
