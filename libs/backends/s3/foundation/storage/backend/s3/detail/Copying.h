#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

#include <functional>

namespace foundation::storage::backend::s3::detail {

/// Copies an object as `stream::copyObject` does. What has become of the source meanwhile fails there, all else at the
/// destination.
bool copyObject(const client::Client& client, const Place& source, const client::ObjectInfo& object,
                const Place& destination, const std::function<bool()>& proceed = {});

/// Copies a file on the server; the destination is untouched or whole.
/// @param interrupt  asked before and between the steps; may be empty
provider::TransactionStatus copyFile(Session& session, const Place& source, const Place& destination,
                                     provider::ReplacementPolicy policy, const provider::InterruptCallback& interrupt);

}  // namespace foundation::storage::backend::s3::detail
