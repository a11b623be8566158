#include <fl/filesystem/Exceptions.h>

#include <fl/i18n/Convert.h>

#include <system_error>
#include <utility>

namespace fl::filesystem {
namespace {

/// A NUL would end the narrow text of the exception before its reason.
std::u16string withoutNul(const std::u16string& text) {
  std::u16string out;
  for (const char16_t unit : text) {
    if (unit == u'\0')
      out.append(u"\\0");
    else
      out.push_back(unit);
  }
  return out;
}

}  // namespace

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
  return i18n::to_ustring(operation_) + u" '" + withoutNul(path_.string()) + u"': " + i18n::to_ustring(reason);
}

}  // namespace fl::filesystem
