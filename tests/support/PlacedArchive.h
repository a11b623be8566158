#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/property_tree/ptree.hpp>

#include <cstdint>
#include <map>
#include <string>

namespace foundation::storage::testing {

using backend::archive::ArchiveFormat;

/// Limits of archives, by the names of the options.
using ArchiveLimits = std::map<std::string, std::uint64_t>;

/// The whole content of a file, whose size is known.
inline std::string wholeContent(const provider::StorageItem& file) {
  std::string bytes(file.getFileAttributes().getSize(), '\0');
  const auto stream = file.openReadOnlyStream();
  for (std::size_t at = 0; at < bytes.size();) {
    const auto count = stream->read(bytes.data() + at, static_cast<std::int64_t>(bytes.size() - at));
    at = count > 0 ? at + static_cast<std::size_t>(count) : bytes.size();
  }
  return bytes;
}

/// An archive that is the one file in a store in memory, with a provider of its own over it.
class PlacedArchive {
 public:
  PlacedArchive(ArchiveFormat format, const std::string& bytes, const ArchiveLimits& limits = {})
      : format_(format), factory_(format) {
    const auto stream = file_.openStream({});
    for (std::size_t at = 0; at < bytes.size();)
      at += static_cast<std::size_t>(stream->write(bytes.data() + at, static_cast<std::int64_t>(bytes.size() - at)));
    stream->close();
    boost::property_tree::ptree options;
    for (const auto& [name, value] : limits)
      options.put(name, value);
    factory_.configure(options);
    provider_ = factory_.buildProvider(file_);
  }

  ArchiveFormat format() const { return format_; }
  provider::StorageItem root() const {
    return {provider_, provider::StorageIRI(u"archive", file_.getLocation(), u"/")};
  }
  /// @param path  in the archive, in bytes
  provider::StorageItem at(const std::string& path) const { return {root(), fl::i18n::to_ustring(path)}; }

  /// The root of an archive of the same format in an archive, through the same factory.
  provider::StorageItem rootInside(const provider::StorageItem& container) const {
    return {factory_.buildProvider(container), provider::StorageIRI(u"archive", container.getLocation(), u"/")};
  }

  /// What is in the store now.
  std::string bytes() const { return wholeContent(file_); }

 private:
  static provider::StorageItem newFile() {
    const provider::StorageIRI root(u"memory:///");
    return {backend::memory::MemoryProviderFactory().buildProvider(root), provider::StorageIRI(root, u"archive")};
  }

  ArchiveFormat format_;
  backend::archive::ArchiveProviderFactory factory_;
  provider::StorageItem file_ = newFile();
  std::shared_ptr<provider::IProvider> provider_;
};

}  // namespace foundation::storage::testing
