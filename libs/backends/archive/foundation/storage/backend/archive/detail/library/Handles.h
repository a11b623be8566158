#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <memory>

namespace foundation::storage::backend::archive::detail::library {

struct FreeReader {
  void operator()(::archive* reader) const noexcept { archive_read_free(reader); }
};
struct FreeWriter {
  /// A writer that was not closed is: otherwise libarchive keeps the memory of its compressions. First it is told that
  /// it has failed, so that it does not fill up what is missing of an entry.
  void operator()(::archive* writer) const noexcept {
    archive_write_fail(writer);
    archive_write_close(writer);
    archive_write_free(writer);
  }
};
struct FreeEntry {
  void operator()(archive_entry* entry) const noexcept { archive_entry_free(entry); }
};

/// libarchive's own objects.
using ReaderHandle = std::unique_ptr<::archive, FreeReader>;
using WriterHandle = std::unique_ptr<::archive, FreeWriter>;
using EntryHandle = std::unique_ptr<archive_entry, FreeEntry>;

}  // namespace foundation::storage::backend::archive::detail::library
