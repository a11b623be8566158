#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/property_tree/ptree.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

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
  /// @param name  of the file
  PlacedArchive(ArchiveFormat format, const std::string& bytes, ArchiveLimits limits = {},
                const std::u16string& name = u"archive")
      : format_(format), limits_(std::move(limits)), factory_(format), file_(newFile(name)) {
    const auto stream = file_.openStream({});
    for (std::size_t at = 0; at < bytes.size();)
      at += static_cast<std::size_t>(stream->write(bytes.data() + at, static_cast<std::int64_t>(bytes.size() - at)));
    stream->close();
    boost::property_tree::ptree options;
    for (const auto& [option, value] : limits_)
      options.put(option, value);
    factory_.configure(options);
    provider_ = factory_.buildProvider(file_);
  }

  ArchiveFormat format() const { return format_; }
  std::u16string scheme() const {
    static constexpr const char16_t* schemes[] = {u"zip", u"tar", u"sevenzip", u"archive"};
    return schemes[static_cast<std::size_t>(format_)];
  }
  provider::StorageItem root() const { return {provider_, provider::StorageIRI(scheme(), file_.getLocation(), u"/")}; }
  /// @param path  in the archive, in bytes
  provider::StorageItem at(const std::string& path) const { return {root(), fl::i18n::to_ustring(path)}; }

  /// The root of an archive of the same format in an archive, through the same factory.
  provider::StorageItem rootInside(const provider::StorageItem& container) const {
    return {factory_.buildProvider(container), provider::StorageIRI(scheme(), container.getLocation(), u"/")};
  }

  /// What is in the store now.
  std::string bytes() const { return wholeContent(file_); }
  /// That, in another store with another provider, which has given nothing yet and may give more.
  PlacedArchive placedAnew() const {
    auto limits = limits_;
    limits.erase("max-total-size");
    return {format_, bytes(), limits, file_.getName()};
  }

 private:
  static provider::StorageItem newFile(const std::u16string& name) {
    const provider::StorageIRI root(u"memory:///");
    return {backend::memory::MemoryProviderFactory().buildProvider(root), provider::StorageIRI(root, name)};
  }

  ArchiveFormat format_;
  ArchiveLimits limits_;
  backend::archive::ArchiveProviderFactory factory_;
  provider::StorageItem file_;
  std::shared_ptr<provider::IProvider> provider_;
};

}  // namespace foundation::storage::testing
