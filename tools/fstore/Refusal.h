#pragma once

#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>

namespace fstore {

/// The command itself refuses to work on `location`.
foundation::storage::provider::Exception refusal(foundation::storage::provider::ErrorCode code,
                                                 const foundation::storage::provider::StorageIRI& location,
                                                 std::u16string reason);

}  // namespace fstore
