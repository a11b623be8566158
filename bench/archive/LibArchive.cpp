#include "archive/LibArchive.h"

#include <archive.h>
#include <archive_entry.h>

#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>

namespace bench {
namespace {

constexpr std::size_t blockSize = 256 * 1024;

struct Close {
  void operator()(archive* reader) const { archive_read_free(reader); }
};
using Reader = std::unique_ptr<archive, Close>;

void require(bool isWell, const Reader& reader) {
  if (!isWell)
    throw std::runtime_error(archive_error_string(reader.get()));
}

/// @param see  is given each entry, and says whether to go on
void forEach(const std::string& path, const std::function<bool(const Reader&, archive_entry*)>& see) {
  const Reader reader(archive_read_new());
  archive_read_support_format_zip(reader.get());
  archive_read_support_format_tar(reader.get());
  archive_read_support_filter_gzip(reader.get());
  require(archive_read_open_filename(reader.get(), path.c_str(), blockSize) == ARCHIVE_OK, reader);
  archive_entry* entry = nullptr;
  int status = ARCHIVE_OK;
  while ((status = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK)
    if (!see(reader, entry))
      return;
  require(status == ARCHIVE_EOF, reader);
}

void appendContent(const Reader& reader, std::string& content) {
  for (;;) {
    const auto size = content.size();
    content.resize(size + blockSize);
    const auto got = archive_read_data(reader.get(), content.data() + size, blockSize);
    require(got >= 0, reader);
    content.resize(size + static_cast<std::size_t>(got));
    if (got == 0)
      return;
  }
}

}  // namespace

Tally libArchiveTally(const std::string& path) {
  Tally tally;
  forEach(path, [&](const Reader&, archive_entry* entry) {
    ++tally.entries;
    tally.nameLength += std::strlen(archive_entry_pathname(entry));
    tally.bytes += static_cast<std::uint64_t>(archive_entry_size(entry));
    return true;
  });
  return tally;
}

std::string libArchiveContent(const std::string& path, const std::string& name) {
  std::string content;
  forEach(path, [&](const Reader& reader, archive_entry* entry) {
    if (name != archive_entry_pathname(entry))
      return true;
    appendContent(reader, content);
    return false;
  });
  return content;
}

std::string libArchiveContents(const std::string& path) {
  std::string content;
  forEach(path, [&](const Reader& reader, archive_entry*) {
    appendContent(reader, content);
    return true;
  });
  return content;
}

}  // namespace bench
