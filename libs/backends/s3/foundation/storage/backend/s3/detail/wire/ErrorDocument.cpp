#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>

namespace foundation::storage::backend::s3::detail::wire {

std::optional<ErrorDocument> parseError(std::string_view body) try {
  const XmlReader document(body, {"Error"});
  const auto root = document.root();
  return ErrorDocument{textOf(root, "Code"), textOf(root, "Message"), textOf(root, "RequestId"), textOf(root, "Region"),
                       textOf(root, "Endpoint")};
} catch (const MalformedDocument&) {
  return std::nullopt;
}

}  // namespace foundation::storage::backend::s3::detail::wire
