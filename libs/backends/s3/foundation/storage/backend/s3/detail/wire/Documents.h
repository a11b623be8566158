#pragma once

#include <foundation/storage/backend/s3/detail/wire/Digest.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::s3::detail::wire {

/// A document that is not what was expected, or no XML.
class MalformedDocument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What an <Error> document says.
struct ErrorDocument {
  std::string code;  ///< such as "NoSuchKey"
  std::string message;
  std::string requestId;
  std::string region;    ///< where the bucket lives, if it says so
  std::string endpoint;  ///< likewise
};
/// Nothing where `body` is no <Error> document: empty, cut off, HTML of a proxy, another document.
std::optional<ErrorDocument> parseError(std::string_view body);

/// One object of a listing.
struct ListedObject {
  std::string key;
  std::uint64_t size = 0;
  boost::posix_time::ptime lastModified;
  std::string eTag;  ///< without quotes
};
/// One answer of ListObjectsV2, asked for with encoding-type=url. Keys are decoded where the document says that they
/// are encoded; the token never is.
struct ListPage {
  std::vector<ListedObject> objects;  ///< in the order of the keys' bytes
  std::vector<std::string> prefixes;  ///< what the delimiter has folded, with it
  std::string nextToken;              ///< empty on the last page
};
ListPage parseListPage(std::string_view body);

/// An upload that was begun and neither completed nor aborted.
struct OpenUpload {
  std::string key;
  std::string uploadId;
  boost::posix_time::ptime initiated;
};
struct UploadsPage {
  std::vector<OpenUpload> uploads;
  std::string nextKeyMarker;  ///< empty on the last page
  std::string nextUploadIdMarker;
};
/// Of ListMultipartUploads, asked for without encoding-type: with it Ceph 16 encodes the uploads' keys, but not the
/// marker, and does not say so. A document that says so is decoded.
UploadsPage parseUploadsPage(std::string_view body);

/// The upload's id, of CreateMultipartUpload.
std::string parseUploadId(std::string_view body);
/// The ETag without quotes, of CopyObject, UploadPartCopy and CompleteMultipartUpload; may be empty.
std::string parseETag(std::string_view body);

/// A part of an upload.
struct Part {
  int number;        ///< from 1
  std::string eTag;  ///< without quotes
};
/// The body of CompleteMultipartUpload.
std::string makeCompletion(const std::vector<Part>& parts);

/// Whether XML can hold a key at all: it must be UTF-8, without control characters but tab and line ends, and without
/// U+FFFE and U+FFFF. Any other key takes a request of its own to be deleted.
bool canBeInXml(std::string_view key);
/// The body of DeleteObjects, quiet.
/// @param keys  that XML can hold
std::string makeDeletion(const std::vector<std::string>& keys);
/// A key that DeleteObjects could not remove.
struct FailedDeletion {
  std::string key;
  std::string code;
  std::string message;
};
std::vector<FailedDeletion> parseDeletionResult(std::string_view body);

/// An ETag without its quotes, and without a "W/" before them.
std::string_view unquoted(std::string_view eTag);
/// What an ETag says of the content: the MD5 of one that was stored in one piece; nothing for any other form.
std::optional<Md5> md5OfETag(std::string_view eTag);

}  // namespace foundation::storage::backend::s3::detail::wire
