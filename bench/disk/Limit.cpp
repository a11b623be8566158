// The system calls that the work cannot do without, by hand.

#include "disk/Descriptor.h"
#include "disk/Peer.h"

#include <cstring>
#include <dirent.h>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>

namespace bench {
namespace {

constexpr std::size_t folderBufferSize = std::size_t{256} * 1024;

bool isDots(const char* name) { return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0; }

/// @param see  is given each entry of the open folder
template <class See>
void forEach(const Descriptor& folder, char* buffer, const See& see) {
  for (;;) {
    const long got = syscall(SYS_getdents64, folder.get(), buffer, folderBufferSize);
    check(got >= 0, "getdents64");
    if (got == 0)
      return;
    for (long at = 0; at < got;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
      if (!isDots(entry->d_name))
        see(*entry);
      at += entry->d_reclen;
    }
  }
}

std::unique_ptr<char[]> folderBuffer() { return std::make_unique<char[]>(folderBufferSize); }

Tally listNames(const std::string& folder) {
  Tally tally;
  forEach(Descriptor(folder, O_RDONLY | O_DIRECTORY), folderBuffer().get(), [&](const dirent64& entry) {
    ++tally.entries;
    tally.nameLength += std::strlen(entry.d_name);
  });
  return tally;
}

Tally listAttributes(const std::string& path) {
  const Descriptor folder(path, O_RDONLY | O_DIRECTORY);
  Tally tally;
  forEach(folder, folderBuffer().get(), [&](const dirent64& entry) {
    struct statx status;
    check(statx(folder.get(), entry.d_name, AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_SIZE | STATX_MTIME, &status) == 0,
          "statx");
    ++tally.entries;
    if (S_ISREG(status.stx_mode))
      ++tally.files;
    tally.nameLength += std::strlen(entry.d_name);
    tally.bytes += status.stx_size;
    tally.modified += status.stx_mtime.tv_sec;
  });
  return tally;
}

/// The folders of a folder are visited once it is read, so that one buffer serves all.
void walkInto(const Descriptor& folder, char* buffer, Tally& tally) {
  std::vector<std::string> folders;
  forEach(folder, buffer, [&](const dirent64& entry) {
    ++tally.entries;
    if (entry.d_type == DT_DIR)
      folders.emplace_back(entry.d_name);
    else
      ++tally.files;
  });
  for (const auto& name : folders)
    walkInto(Descriptor(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY), buffer, tally);
}

Tally walk(const std::string& path) {
  Tally tally;
  walkInto(Descriptor(path, O_RDONLY | O_DIRECTORY), folderBuffer().get(), tally);
  return tally;
}

/// Source and destination, open.
struct Pair {
  Pair(const std::string& from, const std::string& to)
      : input(from, O_RDONLY),
        status(statusOf(input)),
        output(to, O_WRONLY | O_CREAT | O_TRUNC, status.st_mode & 0777) {}

  static struct stat statusOf(const Descriptor& file) {
    struct stat status;
    check(fstat(file.get(), &status) == 0, "fstat");
    return status;
  }

  Descriptor input;
  struct stat status;
  Descriptor output;
};

void copyRange(const Pair& pair, off_t from, off_t end) {
  for (off64_t input = from, output = from; input < end;) {
    const auto left = static_cast<std::size_t>(end - input);
    const auto copied = copy_file_range(pair.input.get(), &input, pair.output.get(), &output, left, 0);
    check(copied >= 0, "copy_file_range");
    if (copied == 0)
      throw std::runtime_error("the source ended too soon");
  }
}

void copy(const std::string& from, const std::string& to) {
  const Pair pair(from, to);
  copyRange(pair, 0, pair.status.st_size);
}

void copySparse(const std::string& from, const std::string& to) {
  const Pair pair(from, to);
  check(ftruncate(pair.output.get(), pair.status.st_size) == 0, "ftruncate");
  for (off_t end = 0;;) {
    const off_t start = lseek(pair.input.get(), end, SEEK_DATA);
    if (start == -1 && errno == ENXIO)
      return;
    check(start >= 0, "SEEK_DATA");
    end = lseek(pair.input.get(), start, SEEK_HOLE);
    check(end >= 0, "SEEK_HOLE");
    copyRange(pair, start, end);
  }
}

/// The older way, which some file systems are faster at.
void copyThroughBuffer(const std::string& from, const std::string& to) {
  constexpr std::size_t size = std::size_t{256} * 1024;
  static const auto buffer = std::make_unique<char[]>(size);
  const Pair pair(from, to);
  for (ssize_t got; (got = read(pair.input.get(), buffer.get(), size)) != 0;) {
    check(got > 0, "read");
    check(write(pair.output.get(), buffer.get(), static_cast<std::size_t>(got)) == got, "write");
  }
}

template <auto copyOne>
Peer::Job copier(const Paths& from, const Paths& to) {
  return [from, to](std::size_t number) { copyOne(from[number], to[number]); };
}

void writeAll(const Descriptor& file, const std::string& content) {
  check(write(file.get(), content.data(), content.size()) == static_cast<ssize_t>(content.size()), "write");
}

enum class Sync { None, File, FileAndFolder };

template <Sync sync>
std::function<void(const std::string&)> replacer(const std::string& folder, const std::string& name) {
  return [folder, target = folder + "/" + name, scratch = folder + "/." + name](const std::string& content) {
    {
      const Descriptor file(scratch, O_WRONLY | O_CREAT | O_EXCL);
      writeAll(file, content);
      check(sync == Sync::None || fsync(file.get()) == 0, "fsync");
    }
    check(rename(scratch.c_str(), target.c_str()) == 0, "rename");
    if (sync == Sync::FileAndFolder)
      check(fsync(Descriptor(folder, O_RDONLY | O_DIRECTORY).get()) == 0, "fsync of the folder");
  };
}

/// With the mode of the file that is replaced, which has to be asked for, as has whether there are further permissions.
std::function<void(const std::string&)> keepingReplacer(const std::string& folder, const std::string& name) {
  return [target = folder + "/" + name, scratch = folder + "/." + name](const std::string& content) {
    struct stat status;
    check(lstat(target.c_str(), &status) == 0, "lstat");
    check(getxattr(target.c_str(), "system.posix_acl_access", nullptr, 0) == -1, "there is an access control list");
    {
      const Descriptor file(scratch, O_WRONLY | O_CREAT | O_EXCL, 0600);
      check(fchmod(file.get(), status.st_mode & 0777) == 0, "fchmod");
      writeAll(file, content);
    }
    check(rename(scratch.c_str(), target.c_str()) == 0, "rename");
  };
}

std::size_t readAll(const std::string& path, char* buffer, std::size_t block) {
  const Descriptor file(path, O_RDONLY);
  std::size_t total = 0;
  for (ssize_t got; (got = read(file.get(), buffer, block)) != 0; total += static_cast<std::size_t>(got))
    check(got > 0, "read");
  return total;
}

void removeContent(const Descriptor& folder, char* buffer) {
  std::vector<std::string> folders;
  forEach(folder, buffer, [&](const dirent64& entry) {
    if (entry.d_type == DT_DIR)
      folders.emplace_back(entry.d_name);
    else
      check(unlinkat(folder.get(), entry.d_name, 0) == 0, "unlinkat");
  });
  for (const auto& name : folders) {
    removeContent(Descriptor(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY), buffer);
    check(unlinkat(folder.get(), name.c_str(), AT_REMOVEDIR) == 0, "unlinkat");
  }
}

void removeTree(const std::string& path) {
  removeContent(Descriptor(path, O_RDONLY | O_DIRECTORY), folderBuffer().get());
  check(rmdir(path.c_str()) == 0, "rmdir");
}

const bool added = add({.name = "limit",
                        .listNames = listNames,
                        .listAttributes = listAttributes,
                        .walk = walk,
                        .copy = copier<copy>,
                        .copySparse = copier<copySparse>,
                        .replace = replacer<Sync::None>,
                        .replaceDurably = replacer<Sync::File>,
                        .read = readAll,
                        .removeTree = removeTree}) &&
                   add({.name = "limit, read and write", .copy = copier<copyThroughBuffer>}) &&
                   add({.name = "limit, keeping permissions", .replace = keepingReplacer}) &&
                   add({.name = "limit, fsync of folder too", .replaceDurably = replacer<Sync::FileAndFolder>});

}  // namespace
}  // namespace bench
