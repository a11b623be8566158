#pragma once

#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

namespace fstore {

enum class Verification {
  None,
  Compare,  ///< read both back after each copy
};

enum class Verbosity {
  Quiet,   ///< failures only
  Normal,  ///< and a progress bar on a terminal, and a summary where something failed
  Verbose  ///< and each file that was copied, and always the summary
};

struct CopyOptions {
  foundation::storage::provider::ReplacementPolicy policy = foundation::storage::provider::ReplacementPolicy::Overwrite;
  /// Of each file: a folder appears with its first one.
  foundation::storage::provider::TransactionPolicy transaction =
      foundation::storage::provider::TransactionPolicy::NonAtomic;
  Verification verification = Verification::None;
  unsigned threads = 1;  ///< how many files to copy at once
  Verbosity verbosity = Verbosity::Normal;
};

}  // namespace fstore
