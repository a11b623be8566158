#include <foundation/network/IRISyntaxException.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Printable.h>

namespace foundation::network {
namespace {

std::string describe(const std::u16string& text, std::size_t offset, const std::string& reason) {
  return "'" + fl::i18n::to_printable(text) + "' is not a valid IRI: at offset " + std::to_string(offset) + ", " +
         reason + ".";
}

}  // namespace

IRISyntaxException::IRISyntaxException(std::u16string text, std::size_t offset, std::string reason)
    : std::runtime_error(describe(text, offset, reason)),
      text_(std::move(text)),
      offset_(offset),
      reason_(std::move(reason)) {}

IRISyntaxException::~IRISyntaxException() = default;

std::u16string IRISyntaxException::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

}  // namespace foundation::network
