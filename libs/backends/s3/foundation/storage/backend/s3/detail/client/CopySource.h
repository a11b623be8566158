#pragma once

#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// An object that is to be copied as long as it stays what it is. Whether the store looks after that itself is found
/// out: some ignore the condition, or take it for unfulfilled with objects of several parts.
class CopySource {
 public:
  /// @param eTag  what the object has to be; empty: whatever it is
  CopySource(Exchange& exchange, std::string bucket, std::string key, std::string eTag, http::Interrupt& interrupt);

  /// What names it in a request.
  wire::Header header() const;

  /// Sends a request that copies from it. Throws `ResourceInUse` if it is known to have changed before.
  Reply send(Call copy) const;

  /// To be called after `send`, where what was copied shows no harm yet if it is of something else: throws
  /// `ResourceInUse` unless the object is still the same, or the store has seen to that.
  void requireUnchanged(std::string_view operation) const;

  /// For a request that does no harm if it is done: has it show whether the store keeps the condition.
  void tryCondition(Call copy) const;

 private:
  Reply sendOn(Call copy, const std::string& eTag) const;
  void requireSame(std::string_view operation) const;
  bool isCondition(Conditions conditions) const { return exchange_.learnt().copying == conditions; }

  Exchange& exchange_;
  std::string bucket_;
  std::string key_;
  std::string eTag_;
  http::Interrupt& interrupt_;
};

/// Throws `ResourceInUse`.
[[noreturn]] void refuseChanged(std::string_view operation, int attempts);

}  // namespace foundation::storage::backend::s3::detail::client
