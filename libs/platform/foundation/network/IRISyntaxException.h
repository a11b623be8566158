#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace foundation::network {

/// A text that is no IRI (RFC 3987, section 2.2), or parts that make none.
class FOUNDATION_EXPORT IRISyntaxException : public core::except::IInternalException, public std::runtime_error {
 public:
  /// @param text    the whole refused text
  /// @param offset  of the first code unit that does not fit, counted from 0; the text's length where
  ///                something is missing at its end
  /// @param reason  what is wrong there, in UTF-8
  IRISyntaxException(std::u16string text, std::size_t offset, std::string reason);
  ~IRISyntaxException() override;

  /// What the constructor was given.
  /// @{
  const std::u16string& getText() const noexcept { return text_; }
  std::size_t getOffset() const noexcept { return offset_; }
  const std::string& getReason() const noexcept { return reason_; }
  /// @}

  /// The text, the offset and the reason, in UTF-8 and on one line.
  const char* what() const noexcept override { return std::runtime_error::what(); }

 private:
  std::u16string ToUstringImpl() const override;

  std::u16string text_;
  std::size_t offset_;
  std::string reason_;
};

}  // namespace foundation::network
