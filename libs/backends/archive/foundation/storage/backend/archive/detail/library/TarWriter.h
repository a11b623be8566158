#pragma once

#include <foundation/storage/backend/archive/detail/ArchiveWriter.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/Output.h>
#include <foundation/storage/backend/archive/detail/library/LibraryArchive.h>
#include <foundation/storage/backend/archive/detail/library/TarOutput.h>

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// Writes a tar. What is taken over keeps its owners, times, extended attributes, access lists and holes; hard links
/// stay such as long as what they share is written before them, and become files of their own otherwise.
class TarWriter final : public ArchiveWriter {
 public:
  /// @param old      null where there is none
  /// @param filters  libarchive's codes, from the innermost to the outermost
  TarWriter(std::shared_ptr<Container> container, const Limits& limits, std::shared_ptr<const LibraryArchive> old,
            const std::vector<int>& filters, Output& output);

  /// @param entry  in any order; in the old archive's it is read in one go
  void take(const Takeover& entry) override;
  void add(const Entry& entry, ContentReader* content) override;
  std::shared_ptr<const StoredArchive> finish() override;

 private:
  /// An entry that was written, and whose content hard links may share.
  struct Written {
    std::size_t number;  ///< in the new archive
    std::string name;
  };

  /// Reads an entry's header, and puts the changes into a copy.
  EntryHandle headerOf(std::size_t number, const Takeover& changes);
  /// @param content  the entry whose content, and all else, it is to have
  void takeFile(std::size_t content, const Takeover& changes);
  /// @param target  none: to stay the dangling link that it is
  void takeLink(const Takeover& changes, const Written* target);
  void copyContent(const Entry& entry);
  void addContent(std::uint64_t size, ContentReader& content);
  /// Writes the header, and notes the entry.
  void begin(Entry entry, archive_entry* header);
  void noteName(const std::string& name);
  void noteContent(std::size_t number, const std::string& name);

  const std::shared_ptr<Container> container_;
  const Limits limits_;
  const std::shared_ptr<const LibraryArchive> old_;
  Output& output_;
  TarOutput tar_;
  Listing listing_;                 ///< of what is written
  std::unique_ptr<Cursor> cursor_;  ///< in the old archive

  std::unordered_set<std::size_t> sharedContent_;         ///< the old archive's entries that hard links share
  std::unordered_map<std::size_t, Written> written_;      ///< by number in the old archive, those among them
  std::unordered_map<std::string, std::size_t> numbers_;  ///< the same by name
  std::vector<char> buffer_;
};

/// Begins to write a tar that is to replace `old`, compressed as that, or where there was nothing as the container's
/// name says. Throws `Fault`, and what the container's streams throw.
/// @param old     a tar, or null
/// @param output  lives longer than the writer
std::unique_ptr<ArchiveWriter> beginTar(const std::shared_ptr<Container>& container, const Limits& limits,
                                        std::shared_ptr<const StoredArchive> old, Output& output);

}  // namespace foundation::storage::backend::archive::detail::library
