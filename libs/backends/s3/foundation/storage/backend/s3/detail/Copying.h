#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

namespace foundation::storage::backend::s3::detail {

/// Copies a file on the server; the destination is untouched or whole.
/// @param interrupt  asked before and between the steps; may be empty
provider::TransactionStatus copyFile(Session& session, const Place& source, const Place& destination,
                                     provider::ReplacementPolicy policy, const provider::InterruptCallback& interrupt);

}  // namespace foundation::storage::backend::s3::detail
