#include <fl/filesystem/Exceptions.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Printable.h>

#include <system_error>
#include <utility>

namespace fl::filesystem {
FsysExceptionBase::FsysExceptionBase(std::string operation, upath path, int error)
    : operation_(std::move(operation)), path_(std::move(path)), error_(error) {}

FsysExceptionBase::~FsysExceptionBase() = default;
AccessDenied::~AccessDenied() = default;
SystemError::~SystemError() = default;
PathNotFound::~PathNotFound() = default;
InvalidArgument::~InvalidArgument() = default;

std::u16string FsysExceptionBase::ToUstringImpl() const {
  const auto reason = error_ == 0 ? "The path is not of a form that the system knows"
                                  : std::generic_category().message(error_) + " (" + std::to_string(error_) + ")";
  return i18n::to_ustring(operation_) + u" '" + i18n::to_ustring(i18n::to_printable(path_.string())) + u"': " +
         i18n::to_ustring(reason);
}

}  // namespace fl::filesystem
