#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>

#include <stdexcept>
#include <string>

namespace foundation::core::except::detail {

/// A failure with no class of its own: a message under a standard exception type. It is thrown under
/// this name and meant to be caught as `Standard` or as `IInternalException`.
///
/// @tparam Standard  `std::logic_error` for misuse by the caller, `std::runtime_error` otherwise
template <class Standard>
class FOUNDATION_EXPORT AnonymousInternalException : public IInternalException, public Standard {
 public:
  /// @param message  UTF-8
  explicit AnonymousInternalException(const std::string& message) : Standard(message) {}

  const char* what() const noexcept override { return Standard::what(); }

 private:
  std::u16string ToUstringImpl() const override { return fl::i18n::to_ustring(what()); }
};

extern template class AnonymousInternalException<std::logic_error>;
extern template class AnonymousInternalException<std::runtime_error>;

}  // namespace foundation::core::except::detail
