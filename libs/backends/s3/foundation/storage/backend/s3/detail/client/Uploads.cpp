#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Completion.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>

namespace foundation::storage::backend::s3::detail::client {

UploadId Client::beginUpload(const std::string& key, const wire::Headers& kept) const {
  UploadId upload{key, {}};
  exchange_->send({.operation = "CreateMultipartUpload",
                   .method = "POST",
                   .bucket = bucket_,
                   .key = key,
                   .query = {{"uploads", ""}},
                   .headers = kept,
                   .check = [&](const http::HttpAnswer& answer) { upload.id = wire::parseUploadId(answer.body); }},
                  *interrupt_);
  return upload;
}

wire::Part Client::uploadPart(const UploadId& upload, int number, std::string_view body) const {
  const auto md5 = wire::md5(body);
  const auto reply = exchange_->send({.operation = "UploadPart",
                                      .method = "PUT",
                                      .bucket = bucket_,
                                      .key = upload.key,
                                      .query = {{"partNumber", std::to_string(number)}, {"uploadId", upload.id}},
                                      .headers = {md5Header(md5)},
                                      .body = body,
                                      .check =
                                          [&md5](const http::HttpAnswer& answer) {
                                            requireETag(answer);
                                            requireStored(answer, md5);
                                          }},
                                     *interrupt_);
  return {number, eTagOf(reply.answer.headers)};
}

void Client::completeUpload(const UploadId& upload, const std::vector<wire::Part>& parts, std::uint64_t size,
                            Existing existing) const {
  Completion(*exchange_, bucket_, upload, parts, size, *interrupt_).run(existing);
}

void Client::abortUpload(const UploadId& upload) const {
  const auto reply = exchange_->send({.operation = "AbortMultipartUpload",
                                      .method = "DELETE",
                                      .bucket = bucket_,
                                      .key = upload.key,
                                      .query = {{"uploadId", upload.id}},
                                      .alsoTaken = {404}},
                                     *interrupt_);
  if (const auto refusal = refusalOf(reply.answer); refusal.code == "NoSuchBucket")
    throw failureOf(refusal, "AbortMultipartUpload", reply.attempts);
}

wire::UploadsPage Client::listUploads(const std::string& prefix, const std::string& keyMarker,
                                      const std::string& uploadIdMarker) const {
  Call call{.operation = "ListMultipartUploads", .method = "GET", .bucket = bucket_, .query = {{"uploads", ""}}};
  for (const auto& [name, value] : {std::pair("prefix", &prefix), std::pair("key-marker", &keyMarker),
                                    std::pair("upload-id-marker", &uploadIdMarker)})
    if (!value->empty())
      call.query.push_back({name, *value});
  wire::UploadsPage page;
  call.check = [&](const http::HttpAnswer& answer) {
    page = wire::parseUploadsPage(answer.body);
    if (!keyMarker.empty() && page.nextKeyMarker == keyMarker && page.nextUploadIdMarker == uploadIdMarker)
      throw BadAnswer("The listing of uploads leads back to the same page");
  };
  exchange_->send(call, *interrupt_);
  return page;
}

}  // namespace foundation::storage::backend::s3::detail::client
