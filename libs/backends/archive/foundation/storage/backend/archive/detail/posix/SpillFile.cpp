#include <foundation/storage/backend/archive/detail/posix/SpillFile.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace foundation::storage::backend::archive::detail::posix {

namespace {

Fault failure(int error) {
  const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
  return {isFull ? provider::ErrorCode::NoSpaceLeft : provider::ErrorCode::IOError,
          "the temporary file for new content failed: " + std::generic_category().message(error)};
}

/// Calls again what a signal has interrupted; see signal(7).
template <class Call>
auto repeated(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR)
    result = call();
  if (result == -1)
    throw failure(errno);
  return result;
}

std::string temporaryFolder() {
  std::error_code error;
  const auto folder = std::filesystem::temp_directory_path(error);
  if (error)
    throw failure(error.value());
  return folder.string();
}

/// For file systems without O_TMPFILE (open(2)).
int openNamed(const std::string& folder) {
  auto name = folder + "/foundation-storage-XXXXXX";
  const auto descriptor = repeated([&] { return mkostemp(name.data(), O_CLOEXEC); });
  unlink(name.c_str());
  return descriptor;
}

int openUnnamed() {
  const auto folder = temporaryFolder();
  try {
    return repeated([&] { return open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); });
  } catch (const Fault&) {
    return openNamed(folder);
  }
}

}  // namespace

SpillFile::SpillFile() : descriptor_(openUnnamed()) {}
SpillFile::~SpillFile() { close(descriptor_); }

std::size_t SpillFile::read(std::uint64_t position, char* buffer, std::size_t count) const {
  std::size_t done = 0;
  while (done < count) {
    const auto got =
        repeated([&] { return pread(descriptor_, buffer + done, count - done, static_cast<off_t>(position + done)); });
    if (got == 0)
      break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

void SpillFile::write(std::uint64_t position, const char* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count)
    done += static_cast<std::size_t>(
        repeated([&] { return pwrite(descriptor_, bytes + done, count - done, static_cast<off_t>(position + done)); }));
}

bool SpillFile::discard(std::uint64_t position, std::uint64_t count) noexcept {
  constexpr int how = FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE;
  while (fallocate(descriptor_, how, static_cast<off_t>(position), static_cast<off_t>(count)) != 0)
    if (errno != EINTR)
      return false;
  return true;
}

}  // namespace foundation::storage::backend::archive::detail::posix
