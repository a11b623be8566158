#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>

namespace foundation::storage::backend::s3::detail {

/// Creates an empty file; the store sees to it that only one of several at once succeeds.
void createFile(Session& session, const Place& place);

/// Creates a folder by an empty object that stands for it; the same holds of several at once.
void createFolder(Session& session, const Place& place);

}  // namespace foundation::storage::backend::s3::detail
