#include <fl/filesystem/Exceptions.h>
#include <fl/filesystem/Path.h>
#include <fl/i18n/Convert.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace fl::filesystem {
namespace {

constexpr const char* operation = "get_pathname_from_volume";

[[noreturn]] void fail(const upath& path, int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      throw AccessDenied(operation, path, error);
    case ENOENT:
    case ENOTDIR:
      throw PathNotFound(operation, path, error);
    case 0:
    case EINVAL:
    case ENAMETOOLONG:
    case ELOOP:
      throw InvalidArgument(operation, path, error);
    default:
      throw SystemError(operation, path, error);
  }
}

struct Free {
  void operator()(char* text) const { std::free(text); }
};

}  // namespace

upath get_pathname_from_volume(const upath& path) {
  const auto generic = make_generic_form(path);
  const auto& text = generic.string();
  const bool isRooted = root_length(generic) == 1;
  if (!isRooted || text.find(u'\0') != std::u16string::npos)
    fail(path, 0);
  const auto name = i18n::to_string(text);
  const std::unique_ptr<char, Free> canonical(realpath(name.c_str(), nullptr));
  if (canonical == nullptr)
    fail(path, errno);
  return upath(i18n::to_ustring(canonical.get()));
}

}  // namespace fl::filesystem
