#pragma once

#include <string>

namespace foundation::storage::backend::s3::detail::wire {

/// Who asks.
struct Credentials {
  std::string accessKey;
  std::string secretKey;
  std::string sessionToken = {};  ///< empty for keys that last

  /// Requests of nobody in particular are not signed.
  bool isAnonymous() const { return accessKey.empty(); }
};

}  // namespace foundation::storage::backend::s3::detail::wire
