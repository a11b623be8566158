#pragma once

#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

#include <functional>

namespace foundation::storage::provider {

/// How `StorageItem::copyFile` is to copy.
struct CopyFileOptions {
  ReplacementPolicy replacementPolicy = ReplacementPolicy::Preserve;
  TransactionPolicy transactionPolicy = TransactionPolicy::NonAtomic;
  /// Where set, asked after each block that was written whether to go on.
  std::function<InterruptSignal()> interruptCallback = nullptr;
};

}  // namespace foundation::storage::provider
