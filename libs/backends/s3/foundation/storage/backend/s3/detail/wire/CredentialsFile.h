#pragma once

#include <foundation/storage/backend/s3/detail/wire/Credentials.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace foundation::storage::backend::s3::detail::wire {

/// A credentials file that does not give what it should. Says "FILE:LINE: reason", without the line where the failure
/// is at no particular one, and nothing of the file's content.
class MalformedCredentials : public std::runtime_error {
 public:
  MalformedCredentials(const std::filesystem::path& file, unsigned long line, const std::string& reason);
};

/// Reads a profile of a file in the form of AWS's (docs.aws.amazon.com, "Configuration and credential file settings"):
/// sections that are profiles, with aws_access_key_id, aws_secret_access_key and perhaps aws_session_token. Throws
/// `MalformedCredentials` where the file cannot be read, is no such file, or one of the keys is missing in the profile.
/// @return nothing where there is no such profile
std::optional<Credentials> readCredentialsFile(const std::filesystem::path& file, const std::string& profile);

}  // namespace foundation::storage::backend::s3::detail::wire
