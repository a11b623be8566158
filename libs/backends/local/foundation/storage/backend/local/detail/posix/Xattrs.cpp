#include <foundation/storage/backend/local/detail/posix/Xattrs.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

/// Calls `get(buffer, size)` with a buffer that is large enough; what is asked for may grow between two calls.
/// @return nothing, with errno, where that failed
template <class Get>
std::optional<std::string> sized(const Get& get) {
  for (;;) {
    const auto size = get(nullptr, 0);
    if (size == -1)
      return std::nullopt;
    std::string text(static_cast<std::size_t>(size), '\0');
    const auto got = size == 0 ? 0 : get(text.data(), text.size());
    if (got == -1 && errno == ERANGE)
      continue;
    if (got == -1)
      return std::nullopt;
    text.resize(static_cast<std::size_t>(got));
    return text;
  }
}

bool isCopied(std::string_view name, Attributes which) {
  if (which == Attributes::AccessLists)
    return name == accessListName || name == defaultListName;
  return name.starts_with("user.") || name.starts_with("trusted.");
}

}  // namespace

std::vector<std::string> attributeNames(const std::string& path, const StorageIRI& location) {
  const auto text = sized([&](char* names, std::size_t size) { return sys().listxattr(path.c_str(), names, size); });
  if (!text && errno != EOPNOTSUPP)
    throw systemFailure(errno, "listxattr", location);
  std::vector<std::string> names;
  for (std::size_t at = 0; text && at < text->size(); at += names.back().size() + 1)
    names.emplace_back(text->c_str() + at);
  return names;
}

std::optional<std::string> attributeValue(const std::string& path, const std::string& name,
                                          const StorageIRI& location) {
  auto value =
      sized([&](char* buffer, std::size_t size) { return sys().getxattr(path.c_str(), name.c_str(), buffer, size); });
  if (!value && errno != ENODATA && errno != ENOENT)
    throw systemFailure(errno, "getxattr", location);
  return value;
}

void copyAttributes(const std::string& path, const std::vector<std::string>& names, int to, Attributes which,
                    Unsupported unsupported, const StorageIRI& location) {
  for (const auto& name : names) {
    const auto value = isCopied(name, which) ? attributeValue(path, name, location) : std::nullopt;
    if (!value || sys().fsetxattr(to, name.c_str(), value->data(), value->size()) == 0)
      continue;
    if (errno != EOPNOTSUPP || unsupported == Unsupported::Fail)
      throw systemFailure(errno, "fsetxattr", location);
  }
}

bool dropAccessList(int file, std::string_view name) noexcept {
  // Mostly there is none, and to ask is cheaper than to try.
  const bool isThere = sys().fgetxattr(file, name.data(), nullptr, 0) > 0;
  return !isThere || sys().fremovexattr(file, name.data()) == 0;
}

}  // namespace foundation::storage::backend::local::detail
