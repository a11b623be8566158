#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>
#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>

namespace foundation::storage::backend::s3::detail::wire {

UploadsPage parseUploadsPage(std::string_view body) {
  const XmlReader document(body, {"ListMultipartUploadsResult"});
  const auto root = document.root();
  const KeyReader keys(root);
  UploadsPage page;
  forEachChild(root, "Upload", [&](pugi::xml_node upload) {
    page.uploads.push_back({keys.requiredTextOf(upload, "Key"), requiredTextOf(upload, "UploadId"),
                            parseIsoTime(textOf(upload, "Initiated"))});
  });
  if (textOf(root, "IsTruncated") == "true") {
    page.nextKeyMarker = keys.requiredTextOf(root, "NextKeyMarker");
    page.nextUploadIdMarker = textOf(root, "NextUploadIdMarker");
  }
  return page;
}

}  // namespace foundation::storage::backend::s3::detail::wire
