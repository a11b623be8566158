#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>
#include <foundation/core/except/detail/CachedText.h>

namespace foundation::core::except {

/// Base of exceptions whose text is put together from their fields: a derived class overrides
/// `ToUstringImpl()`, and `what()` gives the same text in UTF-8, made on the first call.
///
/// @tparam Interface  the family, `IInternalException`
/// @tparam Standard   the standard exception that it also is, with a default constructor
template <class Interface, class Standard>
class FOUNDATION_EXPORT Exception : public Interface, public Standard {
 public:
  /// The text in UTF-8. The pointer stays valid until the exception is changed or destroyed. Never
  /// throws: without memory for the text it gives a fixed one.
  const char* what() const noexcept override {
    return text_.get([this] { return this->toUstring(); });
  }

 protected:
  Exception() = default;

  /// To be called by whoever changes what `ToUstringImpl()` would return.
  void forgetText() const noexcept { text_.reset(); }

 private:
  detail::CachedText text_;
};

}  // namespace foundation::core::except
