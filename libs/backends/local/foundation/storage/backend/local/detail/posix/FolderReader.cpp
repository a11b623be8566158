#include <foundation/storage/backend/local/detail/posix/FolderReader.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <string_view>
#include <utility>

namespace foundation::storage::backend::local::detail {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;

bool isDots(std::string_view name) { return name == "." || name == ".."; }

}  // namespace

FolderReader::FolderReader(Descriptor folder, const provider::StorageIRI& location)
    : location_(location), folder_(std::move(folder)), buffer_(new char[bufferSize]) {}

const RawEntry* FolderReader::read() {
  while (at_ < end_ || fill()) {
    // The kernel lays its records out aligned.
    const auto* record = reinterpret_cast<const dirent64*>(static_cast<const void*>(buffer_.get() + at_));
    at_ += record->d_reclen;
    if (isDots(record->d_name))
      continue;
    entry_ = {record->d_name, record->d_type};
    return &entry_;
  }
  return nullptr;
}

void FolderReader::rewind() {
  if (sys().lseek(folder_.get(), 0, SEEK_SET) == -1)
    throw systemFailure(errno, "lseek", location_);
  at_ = end_ = 0;
}

bool FolderReader::fill() {
  const auto got = sys().getdents(folder_.get(), buffer_.get(), bufferSize);
  if (got == -1 && errno != ENOENT)  // ENOENT: the folder was removed while it was read
    throw systemFailure(errno, "getdents64", location_);
  at_ = 0;
  end_ = got > 0 ? static_cast<std::size_t>(got) : 0;
  return end_ > 0;
}

}  // namespace foundation::storage::backend::local::detail
