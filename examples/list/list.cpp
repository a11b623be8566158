// Lists a folder, one line an entry: its size in bytes, when it was last modified (UTC), and its location.
//
//     list file:///home/ann
//     list zip:file:///home/ann/letters.zip!/2026

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <boost/date_time/posix_time/time_formatters.hpp>

#include <iostream>

namespace provider = foundation::storage::provider;

namespace {

/// A folder has no size, and some stores do not know how much their files hold.
std::string sizeOf(const provider::FolderEntry& entry) {
  const auto& file = entry.getFileAttributes();
  return file && file->hasSizeAttribute() ? std::to_string(file->getSize()) : "-";
}

boost::posix_time::ptime timeOf(const provider::FolderEntry& entry) {
  return entry.isFile() ? entry.getFileAttributes()->getLastModified() : entry.getFolderAttributes()->getLastModified();
}

// [list]
void list(const provider::StorageItem& folder) {
  for (const auto entries = folder.listAll(u""); entries->hasNext();) {
    entries->next();
    const auto entry = entries->current();
    const provider::StorageItem item(folder, entry.getName());  // any name makes a location, whatever its bytes
    std::cout << sizeOf(entry) << ' ' << to_iso_extended_string(timeOf(entry)) << ' ' << item.getLocation() << '\n';
  }
}
// [list]

}  // namespace

// [main]
int main(int argc, char** argv) try {
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  list(registry.item(fl::i18n::to_ustring(argc > 1 ? argv[1] : "file:///")));
  return std::cout.flush() ? 0 : 1;
} catch (const provider::Exception& failure) {
  std::cerr << "list: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {  // such as a text that is no location
  std::cerr << "list: " << failure.what() << '\n';
  return 1;
}
// [main]
