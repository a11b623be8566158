#include <foundation/storage/provider/ScratchFiles.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <exception>
#include <vector>

namespace foundation::storage::provider {
namespace {

/// A scratch file's name, with an x for each digit of the UUID.
constexpr std::u16string_view nameForm = u".xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx.tmp.bak";

constexpr bool fits(char16_t unit, char16_t form) {
  return form == u'x' ? (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') : unit == form;
}

std::vector<StorageItem> findScratchFiles(const StorageItem& folder) {
  std::vector<StorageItem> found;
  for (const auto entries = folder.listFilesNamesOnly(u""); entries->hasNext();) {
    entries->next();
    if (const auto name = entries->current().getName(); isScratchName(name))
      found.emplace_back(folder, name);
  }
  return found;
}

/// No time is before or after one that is not known; the type's own comparison says otherwise.
bool isBefore(const boost::posix_time::ptime& time, const boost::posix_time::ptime& limit) {
  return !time.is_not_a_date_time() && !limit.is_not_a_date_time() && time < limit;
}

bool isOld(const StorageItem& file, const boost::posix_time::ptime& olderThan) {
  const auto attributes = file.getFileAttributes();
  return isBefore(attributes.getLastModified(), olderThan) && !attributes.isSymlink();
}

/// @return false where the file is too young or has vanished
bool removeIfOld(const StorageItem& file, const boost::posix_time::ptime& olderThan) {
  try {
    if (!isOld(file, olderThan))
      return false;
    file.removeFile();
    return true;
  } catch (const Exception& failure) {
    if (failure.getErrorCode() != ErrorCode::ResourceNotFound)
      throw;
    return false;
  }
}

}  // namespace

std::u16string makeScratchName() {
  return u"." + fl::i18n::to_ustring(boost::uuids::to_string(boost::uuids::random_generator()())) + u".tmp.bak";
}

bool isScratchName(std::u16string_view name) {
  return std::equal(name.begin(), name.end(), nameForm.begin(), nameForm.end(), fits);
}

std::size_t removeScratchFiles(const StorageItem& folder, const boost::posix_time::ptime& olderThan) {
  std::size_t removed = 0;
  std::exception_ptr firstFailure;
  for (const auto& file : findScratchFiles(folder)) {
    try {
      if (removeIfOld(file, olderThan))
        ++removed;
    } catch (const Exception&) {
      if (!firstFailure)
        firstFailure = std::current_exception();
    }
  }
  if (firstFailure)
    std::rethrow_exception(firstFailure);
  return removed;
}

}  // namespace foundation::storage::provider
