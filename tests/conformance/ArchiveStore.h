#pragma once

#include "MemoryStore.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/testing/Conformance.h>

#include <archive.h>
#include <archive_entry.h>

#include <boost/property_tree/ptree.hpp>

#include <memory>
#include <stdexcept>
#include <string>

/// Archives in memory.
namespace foundation::storage::testing {

using backend::archive::ArchiveFormat;
using backend::archive::ArchiveProviderFactory;

inline Place openArchive(ArchiveFormat format, const provider::StorageItem& container, const std::string& commit) {
  ArchiveProviderFactory factory(format);
  boost::property_tree::ptree options;
  options.put("commit", commit);
  factory.configure(options);
  return std::make_shared<const provider::StorageItem>(factory.buildProvider(container), factory.getKey(container));
}

inline provider::StorageItem newContainer() { return {*rootOf(makeMemoryProvider()), u"archive"}; }

/// A new archive.
inline Place makeArchive(ArchiveFormat format, const std::string& commit) {
  auto root = openArchive(format, newContainer(), commit);
  root->createFolder();
  return root;
}

/// The bytes of an archive that holds that, made by libarchive.
inline std::string bytesOfArchive(int format, const Contents& contents) {
  const std::unique_ptr<::archive, decltype(&archive_write_free)> writer(archive_write_new(), &archive_write_free);
  const auto require = [&](la_ssize_t result) {
    if (result < ARCHIVE_OK)
      throw std::runtime_error(archive_error_string(writer.get()));
  };
  std::string bytes;
  const auto append = [](::archive*, void* to, const void* from, std::size_t size) -> la_ssize_t {
    static_cast<std::string*>(to)->append(static_cast<const char*>(from), size);
    return static_cast<la_ssize_t>(size);
  };
  require(archive_write_set_format(writer.get(), format));
  require(archive_write_open(writer.get(), &bytes, nullptr, append, nullptr));
  for (const auto& [path, content] : contents) {
    const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(), &archive_entry_free);
    archive_entry_set_pathname_utf8(entry.get(), fl::i18n::to_string(path).c_str());
    archive_entry_set_filetype(entry.get(), path.ends_with(u'/') ? AE_IFDIR : AE_IFREG);
    archive_entry_set_perm(entry.get(), path.ends_with(u'/') ? 0755 : 0644);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
    require(archive_write_header(writer.get(), entry.get()));
    require(archive_write_data(writer.get(), content.data(), content.size()));
  }
  require(archive_write_close(writer.get()));
  return bytes;
}

/// An archive of a format that is only read.
inline Place makeArchiveOf(ArchiveFormat format, const Contents& contents) {
  const auto container = newContainer();
  const auto made = format == ArchiveFormat::SevenZip ? ARCHIVE_FORMAT_7ZIP : ARCHIVE_FORMAT_TAR_PAX_INTERCHANGE;
  const auto bytes = bytesOfArchive(made, contents);
  const auto stream = container.openStream({});
  stream->write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
  stream->close();
  return openArchive(format, container, "on-flush");
}

}  // namespace foundation::storage::testing
