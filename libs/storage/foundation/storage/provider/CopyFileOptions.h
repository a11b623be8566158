#pragma once

#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

#include <functional>

namespace foundation::storage::provider {

/// How `StorageItem::copyFile` is to copy.
struct CopyFileOptions {
  /// What to do where the destination exists.
  ReplacementPolicy replacementPolicy = ReplacementPolicy::Preserve;
  /// Whether the destination may show before it is whole.
  TransactionPolicy transactionPolicy = TransactionPolicy::NonAtomic;
  /// Where set, asked after each block that was written (of 4 MiB at most) whether to go on, on the thread that copies.
  /// What it throws ends the copy as a failure does, and passes through.
  std::function<InterruptSignal()> interruptCallback = nullptr;
};

}  // namespace foundation::storage::provider
