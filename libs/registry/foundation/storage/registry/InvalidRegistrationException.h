#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>

#include <stdexcept>
#include <string>

namespace foundation::storage::registry {

/// A name or a factory that a `ProviderRegistry` cannot register. The registry is what it was.
class FOUNDATION_EXPORT InvalidRegistrationException : public core::except::IInternalException,
                                                       public std::invalid_argument {
 public:
  /// @param name    the scheme or the filter's prefix
  /// @param reason  what is wrong with it, in UTF-8
  InvalidRegistrationException(std::u16string name, const std::string& reason);
  ~InvalidRegistrationException() override;

  /// What the constructor was given.
  const std::u16string& getName() const noexcept { return name_; }

  /// The name and the reason, in UTF-8.
  const char* what() const noexcept override { return std::invalid_argument::what(); }

 private:
  std::u16string ToUstringImpl() const override;

  std::u16string name_;
};

}  // namespace foundation::storage::registry
