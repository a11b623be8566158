#pragma once

#include <foundation/storage/backend/s3/detail/client/Environment.h>
#include <foundation/storage/backend/s3/detail/wire/Credentials.h>

#include <memory>

namespace foundation::storage::backend::s3::detail::client {

/// Where credentials come from when none are configured, for `Settings::credentials`:
/// 1. the variables AWS_ACCESS_KEY_ID, AWS_SECRET_ACCESS_KEY and AWS_SESSION_TOKEN;
/// 2. the file that AWS_SHARED_CREDENTIALS_FILE names, else ~/.aws/credentials, and in it the profile that AWS_PROFILE
///    names, else "default".
/// Where neither says anything, they are nobody's. A file or profile that a variable names must be there, and what is
/// there must make sense: requests fail with `StoreFailure` (`PermissionDenied`) else.
///
/// The environment is asked once, by the constructor; the file is read again after it has changed. Copies share what
/// they have read; any number of threads may use them.
class CredentialsSource {
 public:
  explicit CredentialsSource(const Environment& environment = processEnvironment);

  wire::Credentials operator()() const;

 private:
  class File;
  wire::Credentials given_;  ///< by the variables
  std::shared_ptr<File> file_;
};

}  // namespace foundation::storage::backend::s3::detail::client
