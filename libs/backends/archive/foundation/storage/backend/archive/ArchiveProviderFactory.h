#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/provider/ContainerProviderFactory.h>

/// What archives hold, as stores.
namespace foundation::storage::backend::archive {

/// Makes providers of what archives hold, wherever the archives are kept; in archives, too:
///
///     const ArchiveProviderFactory zips(ArchiveFormat::Zip);
///     const provider::StorageIRI entry(u"zip:file:///home/ann/letters.zip!/2026/may.txt");
///     const provider::StorageItem letter(zips.buildProvider(containerItem), entry);
///
/// All locations in one archive share one provider, whatever the spelling of the archive's own location. An archive
/// is read where it is: entries are decoded while they are read, and nothing is unpacked to the side.
///
/// **What is shown.** An archive's entries as the tree that their names make, with the folders that names only
/// imply. Names are bytes, taken for UTF-8; other bytes are kept as everywhere in this library, as U+DC80 to
/// U+DCFF. "." and empty parts of a name are left out of it. Of entries with the same name the last one counts.
/// These are hidden, and cannot be reached: entries whose names begin with '/', hold a ".." or a NUL, are empty or
/// more than 4,096 names deep; entries that lead through something that is no folder; a file where there is a folder
/// already, and a folder where there is something else. What is hidden stays in an archive that is written anew, but
/// for what would turn up there because that which hid it is gone. Symbolic links lead to what is in the archive,
/// relative to their folder, and are broken where they lead out of it, by ".." or by '/'. Times without a zone are
/// local ones.
///
/// **Reading.** Any number of streams read at the same time; each seeks freely. What is stored without compression
/// is read where it lies. In compressed entries, and in formats that can be read only from the beginning, a step
/// forward decodes what lies between, and one back by more than 1 MiB begins anew; streams that follow each other in
/// the archive's order, which is that of listings, go on where the last one ended. The checksum is checked at the end
/// of what is read in one go.
///
/// **Writing** (zip and tar). Changes show at once, and to everybody who uses the provider; but the archive is only
/// written by `flushFilesystem`, by `shutdown`, and, where neither was called, when the provider's last user lets go of
/// it (which logs a failure, since it cannot throw). It is then written anew into a transaction of the store that
/// holds it, and replaces the old one in the way of that store: who reads sees the old archive or the new one,
/// and a failure leaves the old one with the changes still waiting. In a nested archive flushing goes on outwards
/// until the outermost archive is written. Entries that were not changed are taken over as they are, without being
/// compressed anew where they are in a zip. New content waits in memory; of files from 1 MiB on, and once there are
/// 128 MiB of it in the process, in an unnamed temporary file.
/// An archive that somebody else has changed meanwhile is not replaced: the flush fails with `ResourceInUse`. Each file
/// is written as it is at one moment: streams that write to it wait for as long as it takes.
///
/// A file of no bytes is an empty archive. `createFolder` (and its recursive form) on the root makes an archive
/// that does not exist yet; everything else finds nothing there until then. A new tar is compressed as its name says
/// (.tar.gz, .tgz, .tar.bz2, .tar.xz, .tar.zst and so on).
///
/// **Formats that are not written** (`ArchiveFormat::SevenZip` and `ArchiveFormat::Any`) refuse every change with
/// `ReadOnlyProvider`.
///
/// **Limits**, against archives made to do harm. Options (`provider::IConfigurableProvider`), all of them numbers:
/// - `max-entries` (1,000,000): more, folders that names only imply included, make the archive unreadable, with
///   `FileTooLarge`, and are not written;
/// - `max-ratio` (100): reading fails with `FileTooLarge` where, beyond the first MiB, more than so many bytes come out
///   of one byte in the archive: of an entry, or, where all is compressed together, of the archive as a whole. No such
///   archive is written, either: entries of a zip are compressed less, and flushing a compressed tar fails;
/// - `max-total-size` (1 TiB): the same, for the sum of what all entries have given;
/// - `max-nesting` (8): archives in archives; one that lies deeper is refused with `InvalidLocation`.
///
/// And `commit`: "on-flush", or "on-change" to write the archive after every change.
///
/// **Failures.** What is damaged, or no archive of the format, fails with `IOError` and the location of the entry,
/// or the root; encrypted entries with `UnsupportedOperation`. Every failure has a context with the key "archive",
/// whose info says why in words. No format and no compression starts another program.
///
/// Listings, and the attributes of files, notice by size and time that somebody else has replaced the archive, and show
/// the new one, unless changes are waiting; `invalidateProvider` makes everything else do the same. All operations may
/// be called by any number of threads.
class FOUNDATION_EXPORT ArchiveProviderFactory : public provider::ContainerProviderFactory {
 public:
  /// @param format  what every container is taken for, whatever its name
  explicit ArchiveProviderFactory(ArchiveFormat format);
  ~ArchiveProviderFactory() override;
  ArchiveProviderFactory(const ArchiveProviderFactory&) = default;
  ArchiveProviderFactory& operator=(const ArchiveProviderFactory&) = default;

  /// What its providers can do.
  static provider::Capabilities capabilities(ArchiveFormat format);

 private:
  /// Reads nothing: the archive is read when it is first asked for something.
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageItem& container) const override;
  /// The canonical location of the file that is the archive, which need not exist.
  provider::StorageIRI doGetKey(const provider::StorageItem& container) const override;

  ArchiveFormat format_;
};

}  // namespace foundation::storage::backend::archive
