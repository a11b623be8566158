#include <foundation/storage/backend/s3/detail/client/Errors.h>

#include <foundation/storage/backend/s3/detail/wire/Documents.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

using provider::ErrorCode;

namespace {

/// What a code of the store's, or a status, means. The first row that matches counts.
struct Meaning {
  std::string_view code;  ///< empty: whatever the store calls it
  int status;             ///< 0: whatever it is
  ErrorCode errorCode;
  const char* reason;
};

constexpr auto noBucket = "There is no such bucket: check its name, the endpoint, and whether it has been created";
constexpr auto wrongKey = "The store does not know the access key: check the credentials, and the endpoint";
constexpr auto wrongSecret =
    "The store does not accept the signature: check the secret key; where it is right, something between here and the "
    "store changes requests";
constexpr auto expired = "The credentials have expired: renew them";
constexpr auto badToken = "The store does not accept the session token: check it, or leave it out";
constexpr auto notAllowed =
    "The store does not allow it: check the credentials, and what they are allowed to do with this bucket";
constexpr auto notAllowedToNobody =
    "The store does not allow it to a request without credentials, and none were found: set the options access-key and "
    "secret-key, the usual environment variables, or a profile";
constexpr auto wrongClock = "The clock of this machine differs too much from the store's: set it";
constexpr auto wrongRegion = "The bucket belongs to another region or endpoint: set the option region";
constexpr auto noSuchName = "The store cannot have an object of that name: give it another, or a shorter one";
constexpr auto tooLarge = "The object would be larger than the store takes";
constexpr auto full = "The store, or this account's share of it, is full: remove something, or have the quota raised";
constexpr auto unsupported = "The store does not support this";
constexpr auto busy = "Somebody else is changing the same object: try again later";
constexpr auto archived = "The object is archived: restore it first";
constexpr auto corrupt = "The content was damaged on its way: try again; if that does not help, check the network";
constexpr auto uploadGone = "The upload is gone: somebody, or a rule of the bucket, has aborted it";
constexpr auto tooMuch =
    "The store is busy, and stayed so over all attempts: try again later, with fewer parallel parts";
constexpr auto down = "The store failed, and did so at all attempts: try again later, or ask whoever runs it";
constexpr auto smallPart = "The store refuses parts of that size: set a larger part size";

constexpr std::array meanings{
    Meaning{"NoSuchBucket", 0, ErrorCode::ResourceNotFound, noBucket},
    Meaning{"NoSuchUpload", 0, ErrorCode::IOError, uploadGone},
    Meaning{"InvalidAccessKeyId", 0, ErrorCode::PermissionDenied, wrongKey},
    Meaning{"SignatureDoesNotMatch", 0, ErrorCode::PermissionDenied, wrongSecret},
    Meaning{"ExpiredToken", 0, ErrorCode::PermissionDenied, expired},
    Meaning{"TokenRefreshRequired", 0, ErrorCode::PermissionDenied, expired},
    Meaning{"InvalidToken", 0, ErrorCode::PermissionDenied, badToken},
    Meaning{"RequestTimeTooSkewed", 0, ErrorCode::PermissionDenied, wrongClock},
    Meaning{"RequestExpired", 0, ErrorCode::PermissionDenied, wrongClock},
    Meaning{"AccessDenied", 0, ErrorCode::PermissionDenied, notAllowed},
    Meaning{"AuthorizationHeaderMalformed", 0, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"PermanentRedirect", 0, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"TemporaryRedirect", 0, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"IllegalLocationConstraintException", 0, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"KeyTooLongError", 0, ErrorCode::InvalidLocation, noSuchName},
    Meaning{"InvalidObjectName", 0, ErrorCode::InvalidLocation, noSuchName},
    Meaning{"InvalidURI", 0, ErrorCode::InvalidLocation, noSuchName},
    Meaning{"XMinioInvalidObjectName", 0, ErrorCode::InvalidLocation, noSuchName},
    Meaning{"InvalidBucketName", 0, ErrorCode::InvalidLocation, noBucket},
    Meaning{"EntityTooLarge", 0, ErrorCode::FileTooLarge, tooLarge},
    Meaning{"EntityTooSmall", 0, ErrorCode::InvalidLocation, smallPart},
    Meaning{"QuotaExceeded", 0, ErrorCode::NoSpaceLeft, full},
    Meaning{"InsufficientStorage", 0, ErrorCode::NoSpaceLeft, full},
    Meaning{"XMinioStorageFull", 0, ErrorCode::NoSpaceLeft, full},
    Meaning{"NotImplemented", 0, ErrorCode::UnsupportedOperation, unsupported},
    Meaning{"MethodNotAllowed", 0, ErrorCode::UnsupportedOperation, unsupported},
    Meaning{"OperationAborted", 0, ErrorCode::ResourceInUse, busy},
    Meaning{"ConditionalRequestConflict", 0, ErrorCode::ResourceInUse, busy},
    Meaning{"PreconditionFailed", 0, ErrorCode::ResourceInUse, busy},
    Meaning{"InvalidObjectState", 0, ErrorCode::ResourceInUse, archived},
    Meaning{"BadDigest", 0, ErrorCode::IOError, corrupt},
    Meaning{"XAmzContentSHA256Mismatch", 0, ErrorCode::IOError, corrupt},
    Meaning{"InternalError", 0, ErrorCode::IOError, down},
    Meaning{"SlowDown", 0, ErrorCode::IOError, tooMuch},
    Meaning{"ServiceUnavailable", 0, ErrorCode::IOError, tooMuch},
    Meaning{"RequestTimeout", 0, ErrorCode::IOError, tooMuch},
    Meaning{"", 301, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"", 307, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"", 308, ErrorCode::InvalidLocation, wrongRegion},
    Meaning{"", 401, ErrorCode::PermissionDenied, notAllowed},
    Meaning{"", 403, ErrorCode::PermissionDenied, notAllowed},
    Meaning{"", 404, ErrorCode::ResourceNotFound, "There is no such object"},
    Meaning{"", 405, ErrorCode::UnsupportedOperation, unsupported},
    Meaning{"", 409, ErrorCode::ResourceInUse, busy},
    Meaning{"", 413, ErrorCode::FileTooLarge, tooLarge},
    Meaning{"", 414, ErrorCode::InvalidLocation, noSuchName},
    Meaning{"", 429, ErrorCode::IOError, tooMuch},
    Meaning{"", 501, ErrorCode::UnsupportedOperation, unsupported},
    Meaning{"", 503, ErrorCode::IOError, tooMuch},
    Meaning{"", 507, ErrorCode::NoSpaceLeft, full},
    Meaning{"", 0, ErrorCode::IOError, down},
};

const Meaning& meaningOf(const Refusal& refusal) {
  // What a store says to HEAD that is signed for another region: it gives no code there.
  static constexpr Meaning elsewhere{"", 400, ErrorCode::InvalidLocation, wrongRegion};
  if (refusal.status == elsewhere.status && refusal.code.empty() && !refusal.region.empty())
    return elsewhere;
  return *std::find_if(meanings.begin(), meanings.end(), [&](const Meaning& row) {
    return (row.code.empty() || row.code == refusal.code) && (row.status == 0 || row.status == refusal.status);
  });
}

std::string reasonOf(const Refusal& refusal, const Meaning& meaning) {
  if (meaning.reason == wrongRegion && !refusal.region.empty())
    return "The bucket is in the region " + refusal.region + ": set the option region to that";
  if (meaning.reason == notAllowed && refusal.isOfNobody)
    return notAllowedToNobody;
  if (meaning.code.empty() && meaning.status == 0 && refusal.status < 300)
    return "The store has failed after it had begun to answer";
  if (meaning.code.empty() && meaning.status == 0 && refusal.status < 500)
    return "The store has refused with the status " + std::to_string(refusal.status) +
           (refusal.code.empty() ? ": check the endpoint, the region and the credentials" : "");
  return meaning.reason;
}

ErrorCode codeOf(http::TransportFailure::Kind kind) {
  using Kind = http::TransportFailure::Kind;
  return kind == Kind::Misconfigured ? ErrorCode::InvalidLocation
         : kind == Kind::Untrusted   ? ErrorCode::PermissionDenied
                                     : ErrorCode::IOError;
}

}  // namespace

Refusal refusalOf(const http::HttpAnswer& answer) {
  const auto header = [&](std::string_view name) {
    const auto* const found = wire::findHeader(answer.headers, name);
    return found ? *found : std::string();
  };
  Refusal refusal{answer.status, {}, {}, header("x-amz-request-id"), header("x-amz-bucket-region")};
  if (auto document = wire::parseError(answer.body)) {
    refusal.code = std::move(document->code);
    refusal.message = std::move(document->message);
    if (!document->requestId.empty())
      refusal.requestId = std::move(document->requestId);
    if (!document->region.empty())
      refusal.region = std::move(document->region);
  }
  return refusal;
}

bool isExplained(const Refusal& refusal) { return !meaningOf(refusal).code.empty(); }

StoreFailure failureOf(const Refusal& refusal, std::string_view operation, int attempts) {
  const auto& meaning = meaningOf(refusal);
  return {meaning.errorCode,
          reasonOf(refusal, meaning),
          {.operation = std::string(operation),
           .status = refusal.status,
           .code = refusal.code,
           .message = refusal.message,
           .requestId = refusal.requestId,
           .attempts = attempts}};
}

StoreFailure failureOf(const http::TransportFailure& failure, std::string_view operation, int attempts) {
  return {codeOf(failure.kind()),
          std::string("The request to the store has failed: ") + failure.what(),
          {.operation = std::string(operation), .attempts = attempts}};
}

}  // namespace foundation::storage::backend::s3::detail::client
