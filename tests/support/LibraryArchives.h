#pragma once

#include "support/Deflate.h"
#include "support/ZipBuilder.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::testing {

/// Archives that libarchive writes, for formats of which nothing but whole bytes needs to be wrong.
class LibraryWriter {
 public:
  /// @param format  sets the format, and the compression of the entries if there is a choice
  /// @param filter  of the whole archive, as libarchive names it; empty: none
  template <class SetFormat>
  LibraryWriter(const SetFormat& format, const std::string& filter) : archive_(archive_write_new()) {
    format(archive_.get());
    if (!filter.empty())
      require(archive_write_add_filter_by_name(archive_.get(), filter.c_str()));
    archive_write_set_bytes_in_last_block(archive_.get(), 1);
    require(archive_write_open(archive_.get(), &bytes_, nullptr, append, nullptr));
  }

  void add(const std::string& name, const std::string& content) {
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
    archive_entry_set_pathname(entry.get(), name.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), 0644);
    archive_entry_set_mtime(entry.get(), 1'735'732'800, 0);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
    require(archive_write_header(archive_.get(), entry.get()));
    if (archive_write_data(archive_.get(), content.data(), content.size()) != static_cast<la_ssize_t>(content.size()))
      throw std::runtime_error(archive_error_string(archive_.get()));
  }

  std::string finish() {
    require(archive_write_close(archive_.get()));
    return bytes_;
  }

 private:
  static la_ssize_t append(archive*, void* bytes, const void* data, std::size_t count) {
    static_cast<std::string*>(bytes)->append(static_cast<const char*>(data), count);
    return static_cast<la_ssize_t>(count);
  }
  void require(int result) const {
    if (result != ARCHIVE_OK)
      throw std::runtime_error(archive_error_string(archive_.get()));
  }

  std::string bytes_;
  struct Free {
    void operator()(archive* writer) const { archive_write_free(writer); }
  };
  std::unique_ptr<archive, Free> archive_;
};

using NamedContents = std::vector<std::pair<std::string, std::string>>;

/// @param compression  "store" or another one that libarchive has for 7z
inline std::string sevenZip(const NamedContents& entries, const char* compression = "store") {
  LibraryWriter writer(
      [&](archive* archive) {
        archive_write_set_format_7zip(archive);
        archive_write_set_format_option(archive, "7zip", "compression", compression);
      },
      "");
  for (const auto& [name, content] : entries)
    writer.add(name, content);
  return writer.finish();
}

/// @param filter  "gzip", "bzip2", "xz" or "zstd"
inline std::string compressed(const std::string& filter, const std::string& bytes) {
  LibraryWriter writer(archive_write_set_format_raw, filter);
  writer.add("", bytes);
  return writer.finish();
}

/// A gzip file (RFC 1952) around what is deflated already.
inline std::string gzip(const std::string& deflatedBytes, std::uint32_t crc, std::uint64_t size) {
  return std::string("\x1F\x8B\x08\0\0\0\0\0\0\x03", 10) + deflatedBytes + doubleWord(crc) + doubleWord(size);
}

}  // namespace foundation::storage::testing
