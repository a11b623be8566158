#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>

#include <stdexcept>
#include <string>

namespace foundation::storage::registry {

/// A configuration that a `ProviderRegistry` cannot take; `ProviderRegistry::configure` says what holds then.
class FOUNDATION_EXPORT InvalidConfigurationException : public core::except::IInternalException,
                                                        public std::invalid_argument {
 public:
  /// @param key     of the tree's root: a scheme or a filter's prefix, or what stands in its place; UTF-8
  /// @param reason  what is wrong with it, in UTF-8
  InvalidConfigurationException(std::string key, const std::string& reason);
  ~InvalidConfigurationException() override;

  /// What the constructor was given.
  const std::string& getKey() const noexcept { return key_; }

  /// The name and the reason, in UTF-8.
  const char* what() const noexcept override { return std::invalid_argument::what(); }

 private:
  std::u16string ToUstringImpl() const override;

  std::string key_;
};

}  // namespace foundation::storage::registry
