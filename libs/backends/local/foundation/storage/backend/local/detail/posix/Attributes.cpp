#include <foundation/storage/backend/local/detail/posix/Attributes.h>

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

namespace posix_time = boost::posix_time;

namespace {

std::function<bool()> accessQuestion(EntryQuestion question, int mode) {
  return [question = std::move(question), mode] {
    const auto reached = question.files->reach(question.path, Links::Follow);
    return reached && sys().faccessat(AT_FDCWD, reached->path.c_str(), mode, AT_EACCESS) == 0;
  };
}

}  // namespace

posix_time::ptime toTime(const timespec& time) {
  constexpr std::int64_t first = -17987443200;  // 1400-01-01T00:00:00
  constexpr std::int64_t last = 253402300799;   // 9999-12-31T23:59:59
  if (time.tv_sec < first || time.tv_sec > last)
    return posix_time::not_a_date_time;
  static const posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
  return epoch + posix_time::seconds(time.tv_sec) + posix_time::microseconds(time.tv_nsec / 1000);
}

provider::FileAttributes fileAttributes(const struct stat& status, EntryQuestion question) {
  return {static_cast<std::uint64_t>(status.st_size), toTime(status.st_mtim),
          accessQuestion(std::move(question), W_OK)};
}

provider::FolderAttributes folderAttributes(const struct stat& status, EntryQuestion question) {
  return {toTime(status.st_mtim), accessQuestion(std::move(question), W_OK | X_OK)};
}

std::function<bool()> linkQuestion(EntryQuestion question) {
  return [question = std::move(question)] {
    struct stat status;
    return question.files->status(question.path, Links::Keep, status) == 0 && S_ISLNK(status.st_mode);
  };
}

}  // namespace foundation::storage::backend::local::detail
