#pragma once

#include <clocale>

namespace foundation::storage::backend::archive::detail::posix {

/// How libarchive is to hand out names that an archive stores in a character set that it knows.
enum class NameForm {
  Utf8,   ///< converted to UTF-8, and composed (NFC)
  Bytes,  ///< as they are stored, where they are stored in bytes: nothing but ASCII is converted
};

/// libarchive converts names to the character set of the calling thread's locale. This puts the right one in place for
/// as long as it lives, for this thread only (see uselocale(3)); it changes nothing where the system lacks it.
class NameLocale {
 public:
  explicit NameLocale(NameForm form) noexcept;
  ~NameLocale();
  NameLocale(const NameLocale&) = delete;
  NameLocale& operator=(const NameLocale&) = delete;

 private:
  locale_t before_;
};

}  // namespace foundation::storage::backend::archive::detail::posix
