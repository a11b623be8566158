#pragma once

#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/wire/Digest.h>

#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// Throws `ResourceAlreadyExists`.
[[noreturn]] void refuseExisting(std::string_view operation, int attempts);

/// Notes that the store does not keep the condition that there is nothing yet; says so in the log the first time.
void noteIgnored(Learnt& learnt);

/// Whether an answer with the status 400 or 501 may be about the condition: some stores refuse all that have one.
bool mayRefuseConditions(const Refusal& refusal);

/// Writes an object where there is none. Whether the store keeps the condition for that is found out with the first
/// object that is created: the same request, sent again, has to be refused then. Until that is known, and where it is
/// not so, this looks first.
class Creation {
 public:
  /// @param put  without the condition
  Creation(Exchange& exchange, Call put, const wire::Md5& md5, http::Interrupt& interrupt);

  /// @return the ETag
  std::string run();

 private:
  std::string putAnyway();
  std::string putOnCondition();
  /// The ETag of what is there, if it is what we have written in an attempt whose answer was lost.
  std::optional<std::string> findOurs(const Reply& refused);
  void tryCondition();

  Exchange& exchange_;
  Call put_;
  Call conditional_;
  wire::Md5 md5_;
  http::Interrupt& interrupt_;
};

}  // namespace foundation::storage::backend::s3::detail::client
