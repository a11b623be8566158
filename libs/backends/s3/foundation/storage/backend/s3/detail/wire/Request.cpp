#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail::wire {

const std::string* findHeader(const Headers& headers, std::string_view name) {
  const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& one) { return one.name == name; });
  return found == headers.end() ? nullptr : &found->value;
}

std::string encodeQuery(const std::vector<Parameter>& query) {
  std::vector<std::pair<std::string, std::string>> encoded;
  encoded.reserve(query.size());
  for (const auto& parameter : query)
    encoded.emplace_back(encode(parameter.name), encode(parameter.value));
  std::sort(encoded.begin(), encoded.end());
  std::string text;
  for (const auto& [name, value] : encoded)
    text.append(text.empty() ? "" : "&").append(name).append("=").append(value);
  return text;
}

}  // namespace foundation::storage::backend::s3::detail::wire
