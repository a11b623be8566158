#pragma once

#include <foundation/storage/backend/archive/detail/ContentReader.h>
#include <foundation/storage/backend/archive/detail/Entry.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace foundation::storage::backend::archive::detail {

/// What is to be written of an entry that an archive holds already; what is not told stays as it was.
struct Takeover {
  std::size_t number;  ///< of the entry in the old archive
  std::string name;    ///< as it is to be stored; a folder's ends in '/'
  std::optional<boost::posix_time::ptime> lastModified = {};
  std::optional<std::uint32_t> permissions = {};
};

/// Writes an archive anew, one entry after the other, in the order in which they are added; never goes back.
///
/// All throw `Fault`, and what the streams throw. After a failure nothing but the destructor may be called. What is
/// written then is no archive; it is for the transaction to throw it away.
class ArchiveWriter {
 public:
  ArchiveWriter() = default;
  ArchiveWriter(const ArchiveWriter&) = delete;
  ArchiveWriter& operator=(const ArchiveWriter&) = delete;
  virtual ~ArchiveWriter() = default;

  /// Takes an entry over from the archive that is being replaced, with its content and all that belongs to it.
  virtual void take(const Takeover& entry) = 0;

  /// @param entry    a file or a folder (whose name ends in '/'), with permissions and a time; a file's size is
  ///                 what `content` gives
  /// @param content  of a file; null for a folder
  virtual void add(const Entry& entry, ContentReader* content) = 0;

  /// Writes what belongs at the end.
  /// @return what is now in the container once the transaction is committed; its entries are those that were taken
  ///         and added, in that order
  virtual std::shared_ptr<const StoredArchive> finish() = 0;
};

}  // namespace foundation::storage::backend::archive::detail
