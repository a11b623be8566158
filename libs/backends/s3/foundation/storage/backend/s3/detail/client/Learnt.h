#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <atomic>
#include <mutex>
#include <set>
#include <string>

namespace foundation::storage::backend::s3::detail::client {

/// What a store has shown to be like. Any number of threads may use one.
class Learnt {
 public:
  std::atomic<Conditions> creation = Conditions::Unknown;  ///< "if-none-match: *"
  std::atomic<Conditions> copying = Conditions::Unknown;   ///< "x-amz-copy-source-if-match"
  std::atomic<bool> deletesInBatches = true;

  bool hasBucket(const std::string& bucket) const {
    const std::lock_guard lock(mutex_);
    return buckets_.count(bucket) > 0;
  }
  void addBucket(const std::string& bucket) {
    const std::lock_guard lock(mutex_);
    buckets_.insert(bucket);
  }

 private:
  mutable std::mutex mutex_;
  std::set<std::string> buckets_;
};

}  // namespace foundation::storage::backend::s3::detail::client
