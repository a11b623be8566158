#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>
#include <foundation/storage/backend/s3/detail/wire/XmlWriter.h>

namespace foundation::storage::backend::s3::detail::wire {

std::string makeDeletion(const std::vector<std::string>& keys) {
  auto body = rootTag("Delete") + element("Quiet", "true");
  for (const auto& key : keys)
    body.append("<Object>").append(element("Key", key)).append("</Object>");
  return body += "</Delete>";
}

std::vector<FailedDeletion> parseDeletionResult(std::string_view body) {
  const XmlReader document(body, {"DeleteResult"});
  std::vector<FailedDeletion> failures;
  forEachChild(document.root(), "Error", [&](pugi::xml_node error) {
    failures.push_back({requiredTextOf(error, "Key"), textOf(error, "Code"), textOf(error, "Message")});
  });
  return failures;
}

}  // namespace foundation::storage::backend::s3::detail::wire
