#pragma once

#include <foundation/storage/provider/ErrorCode.h>

#include <stdexcept>
#include <string>

namespace foundation::storage::backend::archive::detail {

/// Something is wrong with an archive, said where nobody knows yet for which location: whoever does turns it into
/// `provider::Exception` or a stream's failure.
class Fault : public std::runtime_error {
 public:
  /// @param reason  in UTF-8
  Fault(provider::ErrorCode code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

  provider::ErrorCode code() const noexcept { return code_; }

 private:
  provider::ErrorCode code_;
};

/// The archive is not what its format says.
inline Fault damage(const std::string& reason) { return {provider::ErrorCode::IOError, reason}; }

}  // namespace foundation::storage::backend::archive::detail
