#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <cstdint>
#include <memory>

namespace foundation::storage::backend::s3::detail {

/// As `IProvider` has them; the streams keep the session alive. Content that is there can be kept to append to it, not
/// to write into it.
/// @{
std::unique_ptr<provider::ByteStream> openForReading(const SessionPtr& session, const Place& place);
std::unique_ptr<provider::ByteStream> openForWriting(const SessionPtr& session, const Place& place,
                                                     const provider::ByteStreamOpenOptions& options);
std::unique_ptr<provider::TransactionalStream> openTransactionally(const SessionPtr& session, const Place& place,
                                                                   const provider::ByteStreamOpenOptions& options);
void truncateToSize(const SessionPtr& session, const Place& place, std::uint64_t newSize);
/// @}

}  // namespace foundation::storage::backend::s3::detail
