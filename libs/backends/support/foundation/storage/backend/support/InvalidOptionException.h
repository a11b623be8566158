#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>

#include <stdexcept>
#include <string>

namespace foundation::storage::backend::support {

/// An option that a provider does not know, or a value that it cannot take. The provider's options are what
/// they were.
class FOUNDATION_EXPORT InvalidOptionException : public core::except::IInternalException, public std::invalid_argument {
 public:
  /// @param key     the option's name
  /// @param reason  what is wrong with it, in UTF-8
  InvalidOptionException(std::string key, const std::string& reason);
  ~InvalidOptionException() override;

  /// What the constructor was given.
  const std::string& getKey() const noexcept { return key_; }

  /// The name and the reason, in UTF-8.
  const char* what() const noexcept override { return std::invalid_argument::what(); }

 private:
  std::u16string ToUstringImpl() const override;

  std::string key_;
};

}  // namespace foundation::storage::backend::support
