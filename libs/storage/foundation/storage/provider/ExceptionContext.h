#pragma once

#include <foundation/core/Export.h>

#include <deque>
#include <optional>
#include <string>
#include <unordered_map>

namespace foundation::storage::provider {

/// What the storage service behind a provider said of a failure.
class FOUNDATION_EXPORT ExceptionContextInfo {
 public:
  /// Details by name.
  using AdditionalInformation = std::unordered_map<std::u16string, std::u16string>;

  /// @param providerMessage        the service's own words
  /// @param responseErrorCode      the code that it answered, as text; it need not be a number
  /// @param additionalInformation  any further details by name
  ExceptionContextInfo(std::u16string providerMessage, std::u16string responseErrorCode,
                       AdditionalInformation additionalInformation);

  /// What the constructor was given.
  /// @{
  std::u16string getProviderMessage() const { return providerMessage_; }
  std::u16string getResponseErrorCode() const { return responseErrorCode_; }
  AdditionalInformation getAdditionalInformation() const { return additionalInformation_; }
  /// @}

  /// One line "name : value" for each detail, in no particular order, each ending in a line feed.
  std::u16string getAdditionalInformationString() const;

 private:
  std::u16string providerMessage_;
  std::u16string responseErrorCode_;
  AdditionalInformation additionalInformation_;
};

/// One frame that a layer attached to a failure on its way up.
class FOUNDATION_EXPORT ExceptionContext {
 public:
  /// @param contextKey   names the operation or layer
  /// @param contextInfo  what the storage service said, if it was one that failed
  explicit ExceptionContext(std::u16string contextKey, std::optional<ExceptionContextInfo> contextInfo = std::nullopt);

  /// What the constructor was given.
  /// @{
  std::u16string getExceptionContextKey() const { return contextKey_; }
  std::optional<ExceptionContextInfo> getExceptionContextInfo() const { return contextInfo_; }
  /// @}

 private:
  std::u16string contextKey_;
  std::optional<ExceptionContextInfo> contextInfo_;
};

/// The frames of a failure; the front is the top, attached last.
using ExceptionContexts = std::deque<ExceptionContext>;

/// The keys of all frames from the top down, joined by ":".
FOUNDATION_EXPORT std::u16string joinContextKeys(const ExceptionContexts& contexts);

}  // namespace foundation::storage::provider
