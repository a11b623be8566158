#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <algorithm>

namespace foundation::storage::backend::s3::detail::wire {

const std::string* findHeader(const Headers& headers, std::string_view name) {
  const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& one) { return one.name == name; });
  return found == headers.end() ? nullptr : &found->value;
}

}  // namespace foundation::storage::backend::s3::detail::wire
