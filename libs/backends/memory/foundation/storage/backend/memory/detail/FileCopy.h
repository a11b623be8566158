#pragma once

#include <foundation/storage/backend/memory/detail/Tree.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/TransactionPolicy.h>

#include <functional>

namespace foundation::storage::backend::memory::detail {

/// Copies a file: the copy is made aside, and put in its place when it is whole.
/// @param interrupt  asked after each 4 MiB, without any lock, so that the source may change in between; may be
///                   empty: then the copy is what the source held at one moment
provider::TransactionStatus copyAside(Tree& tree, const Place& source, const Place& destination,
                                      provider::ReplacementPolicy policy,
                                      const std::function<provider::InterruptSignal()>& interrupt);

}  // namespace foundation::storage::backend::memory::detail
