#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>
#include <foundation/storage/backend/s3/detail/wire/XmlWriter.h>

namespace foundation::storage::backend::s3::detail::wire {

std::string parseUploadId(std::string_view body) {
  const XmlReader document(body, {"InitiateMultipartUploadResult"});
  return requiredTextOf(document.root(), "UploadId");
}

std::string makeCompletion(const std::vector<Part>& parts) {
  auto body = rootTag("CompleteMultipartUpload");
  for (const auto& part : parts)
    body.append("<Part>")
        .append(element("PartNumber", std::to_string(part.number)))
        .append(element("ETag", '"' + part.eTag + '"'))
        .append("</Part>");
  return body += "</CompleteMultipartUpload>";
}

}  // namespace foundation::storage::backend::s3::detail::wire
