#include <foundation/storage/backend/s3/detail/http/Outcome.h>

namespace foundation::storage::backend::s3::detail::http {

using Kind = TransportFailure::Kind;

namespace {

TransportFailure notSent(Kind kind, const std::string& message) { return {kind, false, message}; }

TransportFailure failureBeforeSending(const Outcome& outcome) {
  const auto& origin = outcome.origin;
  switch (outcome.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return notSent(Kind::Unresolved, "no address is known of " + origin + ": " + outcome.detail +
                                           "; look at the endpoint, and at the network");
    case CURLE_OPERATION_TIMEDOUT:
      return notSent(Kind::TimedOut, "no connection to " + origin + " came about in time: " + outcome.detail);
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
      return notSent(Kind::Untrusted, "the certificate of " + origin + " cannot be trusted: " + outcome.detail +
                                          "; the endpoint has to name the host as the certificate does, and ca-file a "
                                          "CA that the system does not know");
    case CURLE_SSL_CACERT_BADFILE:
      return notSent(Kind::Misconfigured, "the certificates to check " + origin + " with cannot be read: " +
                                              outcome.detail + "; look at ca-file, or at the system's certificates");
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
    case CURLE_LOGIN_DENIED:
    case CURLE_BAD_FUNCTION_ARGUMENT:
    case CURLE_NOT_BUILT_IN:
    case CURLE_UNKNOWN_OPTION:
      return notSent(Kind::Misconfigured, origin + " cannot be asked: " + outcome.detail + "; look at the endpoint");
    default:
      return notSent(Kind::Unreachable, origin + " cannot be reached: " + outcome.detail);
  }
}

}  // namespace

TransportFailure failureOf(const Outcome& outcome) {
  if (!outcome.hasBegun)
    return failureBeforeSending(outcome);
  if (outcome.code == CURLE_OPERATION_TIMEDOUT)
    return {Kind::TimedOut, true, outcome.origin + " has not answered in time: " + outcome.detail};
  return {Kind::Broken, true, "the connection to " + outcome.origin + " broke off: " + outcome.detail};
}

}  // namespace foundation::storage::backend::s3::detail::http
