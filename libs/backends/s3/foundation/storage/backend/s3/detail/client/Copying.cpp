#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/CopySource.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>

namespace foundation::storage::backend::s3::detail::client {

void Client::copy(const std::string& sourceBucket, const std::string& sourceKey, const std::string& eTag,
                  const std::string& key) const {
  const CopySource source(*exchange_, sourceBucket, sourceKey, eTag, *interrupt_);
  std::string copied;
  source.send({.operation = "CopyObject",
               .method = "PUT",
               .bucket = bucket_,
               .key = key,
               .headers = {source.header()},
               .check = [&copied](const http::HttpAnswer& answer) { copied = wire::parseETag(answer.body); }});
  if (copied != eTag)
    source.requireUnchanged("CopyObject");
}

bool Client::copiesParts(const std::string& sourceKey) { return sourceKey.find('%') == std::string::npos; }

wire::Part Client::copyPart(const UploadId& upload, int number, const std::string& sourceBucket,
                            const std::string& sourceKey, const Range& range, const std::string& eTag) const {
  if (!copiesParts(sourceKey)) {
    const auto piece = withBucket(sourceBucket).read(sourceKey, range, eTag);
    if (piece.bytes.size() != range.size)
      refuseChanged("GetObject", 1);
    return uploadPart(upload, number, piece.bytes);
  }
  const CopySource source(*exchange_, sourceBucket, sourceKey, eTag, *interrupt_);
  wire::Part part{number, {}};
  const Call call{.operation = "UploadPartCopy",
                  .method = "PUT",
                  .bucket = bucket_,
                  .key = upload.key,
                  .query = {{"partNumber", std::to_string(number)}, {"uploadId", upload.id}},
                  .headers = {source.header(), {"x-amz-copy-source-range", formatRange(range)}},
                  .check = [&part](const http::HttpAnswer& answer) {
                    part.eTag = wire::parseETag(answer.body);
                    if (part.eTag.empty())
                      throw BadAnswer("The answer has no ETag");
                  }};
  source.tryCondition(call);
  source.send(call);
  source.requireUnchanged(call.operation);
  return part;
}

}  // namespace foundation::storage::backend::s3::detail::client
