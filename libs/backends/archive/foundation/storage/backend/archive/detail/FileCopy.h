#pragma once

#include <foundation/storage/backend/archive/detail/Archive.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/TransactionPolicy.h>

namespace foundation::storage::backend::archive::detail {

/// Copies a file within an archive: the copy is made aside, and put in its place when it is whole. Stored content is
/// not even read.
/// @param interrupt  asked after each 4 MiB, without any lock; may be empty
provider::TransactionStatus copyAside(Archive& archive, const Place& source, const Place& destination,
                                      provider::ReplacementPolicy policy, const provider::InterruptCallback& interrupt);

}  // namespace foundation::storage::backend::archive::detail
