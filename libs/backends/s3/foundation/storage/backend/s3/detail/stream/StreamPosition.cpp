#include <foundation/storage/backend/s3/detail/stream/StreamPosition.h>

#include <foundation/storage/backend/s3/detail/stream/StreamFailure.h>

#include <ios>
#include <limits>

namespace foundation::storage::backend::s3::detail::stream {

using provider::ByteStreamSeekFailure;
using provider::ErrorCode;

std::uint64_t sought(std::int64_t offset, int origin, std::uint64_t position, std::uint64_t size,
                     const provider::StorageIRI& location) {
  const auto refuse = [&location](ErrorCode code, const char16_t* reason) {
    return refusedStream<ByteStreamSeekFailure>(code, location, reason);
  };
  if (origin != std::ios_base::beg && origin != std::ios_base::cur && origin != std::ios_base::end)
    throw refuse(ErrorCode::IOError, u"The origin of the seek is unknown");
  const auto from = static_cast<std::int64_t>(origin == std::ios_base::beg   ? 0
                                              : origin == std::ios_base::cur ? position
                                                                             : size);
  if (offset < -from)
    throw refuse(ErrorCode::IOError, u"The position lies before the beginning");
  if (offset > std::numeric_limits<std::int64_t>::max() - from)
    throw refuse(ErrorCode::FileTooLarge, u"No file can be that long");
  return static_cast<std::uint64_t>(from + offset);
}

}  // namespace foundation::storage::backend::s3::detail::stream
