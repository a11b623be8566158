#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <memory>

namespace foundation::storage::backend::archive::detail::library {

struct FreeReader {
  void operator()(::archive* reader) const noexcept { archive_read_free(reader); }
};
struct FreeEntry {
  void operator()(archive_entry* entry) const noexcept { archive_entry_free(entry); }
};

/// libarchive's own objects.
using ReaderHandle = std::unique_ptr<::archive, FreeReader>;
using EntryHandle = std::unique_ptr<archive_entry, FreeEntry>;

}  // namespace foundation::storage::backend::archive::detail::library
