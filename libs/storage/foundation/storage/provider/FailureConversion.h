#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::provider {

/// A failure of a stream as a failure of its provider: the same code and contexts, with the location that
/// the stream was opened for. For providers whose operations work through streams.
FOUNDATION_EXPORT Exception toException(const ByteStreamFailure& failure, const StorageIRI& location);

}  // namespace foundation::storage::provider
