#include <foundation/storage/backend/archive/detail/StreamPosition.h>

#include <foundation/storage/backend/archive/detail/Failure.h>

#include <ios>
#include <limits>

namespace foundation::storage::backend::archive::detail {

using provider::ByteStreamSeekFailure;
using provider::ErrorCode;

namespace {

std::int64_t base(int origin, std::int64_t position, const std::function<std::uint64_t()>& size,
                  const provider::StorageIRI& location) {
  switch (origin) {
    case std::ios_base::beg:
      return 0;
    case std::ios_base::cur:
      return position;
    case std::ios_base::end:
      return static_cast<std::int64_t>(size());
    default:
      throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::IOError, location, u"The origin of the seek is unknown");
  }
}

}  // namespace

std::int64_t sought(std::int64_t offset, int origin, std::int64_t position, const std::function<std::uint64_t()>& size,
                    const provider::StorageIRI& location) {
  const auto from = base(origin, position, size, location);
  if (offset < -from)
    throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::IOError, location, u"The position lies before the beginning");
  if (offset > std::numeric_limits<std::int64_t>::max() - from)
    throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::FileTooLarge, location, u"No file can be that long");
  return from + offset;
}

}  // namespace foundation::storage::backend::archive::detail
