#include <foundation/storage/backend/s3/detail/client/CredentialsSource.h>

#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>
#include <foundation/storage/backend/s3/detail/wire/CredentialsFile.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace fs = std::filesystem;
using wire::Credentials;

namespace {

StoreFailure refusal(const std::string& reason) {
  return {provider::ErrorCode::PermissionDenied, "There are no usable credentials: " + reason};
}

/// By which a change of a file shows.
struct Stamp {
  fs::file_time_type time;
  std::uintmax_t size;

  bool operator==(const Stamp&) const = default;

  /// Whether a later change cannot have the same time, on a file system that keeps it to 2 seconds (FAT) or finer.
  bool isSettled() const { return fs::file_time_type::clock::now() - time > std::chrono::seconds(2); }
};

/// Nothing where there is no file.
std::optional<Stamp> stampOf(const fs::path& file) {
  if (!fs::exists(file))
    return std::nullopt;
  return Stamp{fs::last_write_time(file), fs::is_regular_file(file) ? fs::file_size(file) : 0};
}

}  // namespace

/// A profile of a credentials file.
class CredentialsSource::File {
 public:
  explicit File(const Environment& environment)
      : file_(environment("AWS_SHARED_CREDENTIALS_FILE")),
        profile_(environment("AWS_PROFILE")),
        isFileNamed_(!file_.empty()),
        isProfileNamed_(!profile_.empty()) {
    const auto home = environment("HOME");
    if (!isFileNamed_ && !home.empty())
      file_ = fs::path(home) / ".aws" / "credentials";
    if (!isProfileNamed_)
      profile_ = "default";
  }

  Credentials current() try {
    const std::lock_guard lock(mutex_);
    const auto stamp = stampOf(file_);
    if (!knownOf_ || stamp != knownOf_) {
      knownOf_.reset();
      known_ = read(stamp.has_value());
      // One that has changed just now may change again, and look the same.
      knownOf_ = stamp && stamp->isSettled() ? stamp : std::nullopt;
    }
    return known_;
  } catch (const wire::MalformedCredentials& failure) {
    throw refusal(failure.what());
  } catch (const fs::filesystem_error& failure) {
    throw refusal(file_.string() + ": " + failure.code().message());
  }

 private:
  Credentials read(bool isThere) const {
    if (!isThere && isFileNamed_)
      throw refusal(file_.string() + ": there is no such file, but AWS_SHARED_CREDENTIALS_FILE names it");
    auto found = isThere ? wire::readCredentialsFile(file_, profile_) : std::nullopt;
    if (!found && isProfileNamed_)
      throw refusal(file_.string() + ": there is no profile \"" + profile_ + "\", but AWS_PROFILE names it");
    return std::move(found).value_or(Credentials());
  }

  fs::path file_;
  std::string profile_;
  bool isFileNamed_;
  bool isProfileNamed_;

  std::mutex mutex_;  ///< guards what follows
  Credentials known_;
  std::optional<Stamp> knownOf_;  ///< nothing: read again
};

CredentialsSource::CredentialsSource(const Environment& environment)
    : given_{environment("AWS_ACCESS_KEY_ID"), environment("AWS_SECRET_ACCESS_KEY"), environment("AWS_SESSION_TOKEN")},
      file_(std::make_shared<File>(environment)) {}

Credentials CredentialsSource::operator()() const {
  if (given_.accessKey.empty() != given_.secretKey.empty())
    throw refusal("of AWS_ACCESS_KEY_ID and AWS_SECRET_ACCESS_KEY only one is set");
  return given_.isAnonymous() ? file_->current() : given_;
}

}  // namespace foundation::storage::backend::s3::detail::client
