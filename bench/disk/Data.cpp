#include "disk/Data.h"

#include "disk/Descriptor.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <linux/magic.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <vector>

namespace bench {
namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;
constexpr std::int64_t firstTime = 1'500'000'000;

std::string numbered(const char* format, std::size_t number) {
  char text[64];
  // The formats are all in this file.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(text, sizeof text, format, number);
#pragma GCC diagnostic pop
  return text;
}

std::uint64_t flatSize(std::size_t number) { return number % 1'000; }

/// 1 MiB in which every 4 KiB are different, here and from one number to the next.
std::string block(std::uint64_t number) {
  std::string content;
  for (std::uint64_t page = 0; page < mebibyte / smallFileSize; ++page)
    content += std::string(smallFileSize, static_cast<char>(number * 31 + page * 7 + 1));
  return content;
}

void writeAt(const Descriptor& file, const std::string& content, std::uint64_t offset) {
  const auto written = pwrite(file.get(), content.data(), content.size(), static_cast<off_t>(offset));
  check(written == static_cast<ssize_t>(content.size()), "pwrite");
}

/// A file with a block of data in each `step`; of that size whether there is data at its end or not.
void makeBlocks(const std::string& path, std::uint64_t size, std::uint64_t step) {
  const Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL);
  for (std::uint64_t at = 0; at + mebibyte <= size; at += step)
    writeAt(file, block(at / mebibyte), at);
  check(ftruncate(file.get(), static_cast<off_t>(size)) == 0, path);
}

/// Up to 64 KiB, and no larger a buffer than that takes: clearing it would push others' data out of the caches.
std::string readAt(const Descriptor& file, std::uint64_t offset, std::uint64_t size) {
  std::string content(std::min<std::uint64_t>(size - offset, 64 * 1024), '\0');
  const auto got = pread(file.get(), content.data(), content.size(), static_cast<off_t>(offset));
  check(got >= 0, "pread");
  content.resize(static_cast<std::size_t>(got));
  return content;
}

}  // namespace

Scale smallScale() {
  return {.listed = 1'000,
          .folders = 10,
          .copied = 200,
          .big = 16 * mebibyte,
          .sparse = 256 * mebibyte,
          .replaced = 100,
          .replacedDurably = 10};
}

Space::Space(const std::string& parent) : path_(parent + "/foundation-bench-XXXXXX") {
  check(mkdtemp(path_.data()) != nullptr, parent);
}

Space::~Space() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
  if (error)
    std::fprintf(stderr, "%s is left behind: %s\n", path_.c_str(), error.message().c_str());
}

void Space::settle() const {
  const Descriptor folder(path_, O_RDONLY | O_DIRECTORY);
  check(syncfs(folder.get()) == 0, path_);
}

std::string Space::emptyFolder(const std::string& name) const {
  const auto folder = path_ + "/" + name;
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  return folder;
}

void writeFile(const std::string& path, const std::string& content) {
  writeAt(Descriptor(path, O_WRONLY | O_CREAT | O_TRUNC), content, 0);
}

std::string flatFolder(const Space& space, std::size_t files) {
  const auto path = space.path() + "/flat";
  if (!std::filesystem::create_directory(path))
    return path;
  for (std::size_t number = 0; number < files; ++number) {
    const Descriptor file(path + numbered("/picture-%06zu.jpeg", number), O_WRONLY | O_CREAT | O_EXCL);
    const timespec time{firstTime + static_cast<std::int64_t>(number), 0};
    const timespec times[]{time, time};
    check(ftruncate(file.get(), static_cast<off_t>(flatSize(number))) == 0, "ftruncate");
    check(futimens(file.get(), times) == 0, "futimens");
  }
  return path;
}

Tally flatTally(std::size_t files) {
  Tally tally{.entries = files, .files = files};
  for (std::size_t number = 0; number < files; ++number) {
    tally.nameLength += numbered("picture-%06zu.jpeg", number).size();
    tally.bytes += flatSize(number);
    tally.modified += firstTime + static_cast<std::int64_t>(number);
  }
  return tally;
}

void makeTree(const std::string& path, std::size_t files, std::size_t folders) {
  std::filesystem::create_directory(path);
  for (std::size_t folder = 0; folder < folders; ++folder) {
    const auto inside = path + numbered("/album-%04zu", folder);
    std::filesystem::create_directory(inside);
    for (std::size_t file = 0; file < files / folders; ++file)
      Descriptor(inside + numbered("/picture-%06zu.jpeg", file), O_WRONLY | O_CREAT | O_EXCL);
  }
}

std::string tree(const Space& space, std::size_t files, std::size_t folders) {
  const auto path = space.path() + "/tree";
  if (!std::filesystem::exists(path))
    makeTree(path, files, folders);
  return path;
}

Paths smallFiles(const Space& space, std::size_t files) {
  const auto folder = space.emptyFolder("small");
  Paths paths;
  for (std::size_t number = 0; number < files; ++number) {
    paths.push_back(folder + numbered("/picture-%06zu.jpeg", number));
    writeFile(paths.back(), std::string(smallFileSize, static_cast<char>('a' + number % 26)));
  }
  return paths;
}

std::string bigFile(const Space& space, std::uint64_t size) {
  auto path = space.path() + "/big";
  if (!std::filesystem::exists(path))
    makeBlocks(path, size, mebibyte);
  return path;
}

std::string sparseFile(const Space& space, std::uint64_t size) {
  auto path = space.path() + "/sparse";
  if (!std::filesystem::exists(path))
    makeBlocks(path, size, 64 * mebibyte);
  return path;
}

void requireSame(const std::string& expected, const std::string& found) {
  const Descriptor left(expected, O_RDONLY);
  const Descriptor right(found, O_RDONLY);
  const auto size = std::filesystem::file_size(expected);
  if (std::filesystem::file_size(found) != size)
    throw std::runtime_error(found + " has another size than " + expected);
  for (std::uint64_t at = 0; at < size; at += 32 * mebibyte)
    if (readAt(left, at, size) != readAt(right, at, size))
      throw std::runtime_error(found + " has another content than " + expected);
}

bool isMemory(const std::string& path, std::uint64_t size) {
  struct statfs status;
  return statfs(path.c_str(), &status) == 0 && status.f_type == TMPFS_MAGIC &&
         status.f_bavail * static_cast<std::uint64_t>(status.f_bsize) >= size;
}

}  // namespace bench
