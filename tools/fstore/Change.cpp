#include <fstore/Change.h>

#include <foundation/storage/provider/Exception.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::StorageItem;

namespace {

enum class Presence { Missing, Created, There };

Presence ensureFile(const StorageItem& file, MissingFiles missing) {
  if (file.exists() != provider::ExistenceType::AsNeither)
    return Presence::There;
  if (missing == MissingFiles::Skip)
    return Presence::Missing;
  try {
    file.createFile();
    return Presence::Created;
  } catch (const provider::Exception& failure) {
    // Somebody else may have been faster.
    if (failure.getErrorCode() != provider::ErrorCode::ResourceAlreadyExists)
      throw;
    return Presence::There;
  }
}

}  // namespace

void touch(const Session& session, const std::vector<std::string>& arguments, MissingFiles missing,
           const std::optional<boost::posix_time::ptime>& time) {
  session.forEach(arguments, [&](const StorageItem& item, const std::string&) {
    const auto presence = ensureFile(item, missing);
    if (presence == Presence::There || (presence == Presence::Created && time))
      item.setLastModified(time.value_or(boost::posix_time::microsec_clock::universal_time()));
  });
}

void truncate(const Session& session, const std::vector<std::string>& arguments, MissingFiles missing,
              std::uint64_t size) {
  session.forEach(arguments, [&](const StorageItem& item, const std::string&) {
    if (ensureFile(item, missing) != Presence::Missing)
      item.truncateToSize(size);
  });
}

}  // namespace fstore
