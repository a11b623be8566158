#include <foundation/storage/backend/archive/detail/posix/NameLocale.h>

namespace foundation::storage::backend::archive::detail::posix {
namespace {

/// Made once and never freed: threads may use it until the very end.
locale_t localeFor(NameForm form) noexcept {
  static const auto utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  static const auto ascii = newlocale(LC_CTYPE_MASK, "C", nullptr);
  return form == NameForm::Utf8 ? utf8 : ascii;
}

}  // namespace

NameLocale::NameLocale(NameForm form) noexcept : before_(nullptr) {
  if (const auto locale = localeFor(form); locale != nullptr)
    before_ = uselocale(locale);
}

NameLocale::~NameLocale() {
  if (before_ != nullptr)
    uselocale(before_);
}

}  // namespace foundation::storage::backend::archive::detail::posix
