#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>

#include <fcntl.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// What becomes of a link at the end of a path.
enum class Links { Follow, Keep };

/// An entry as those system calls take it that are about the entry itself and follow no link at its end.
struct Place {
  Descriptor held;        ///< the folder, where it had to be opened
  int folder = AT_FDCWD;  ///< for the calls
  std::string name;       ///< relative to it
};

/// What is at a path, for system calls that take nothing but a path. Only valid as long as it lives.
struct Reached {
  Descriptor held;
  std::string path;
};

/// The file system as one provider sees it: all of it, or a folder that nothing leads out of.
///
/// Paths are absolute, in the system's bytes, of any length. The functions are like system calls: where they fail,
/// errno says why, and the result is a descriptor that is not open, nothing, or -1. Besides the system's numbers
/// errno can be `leadsOutOfRoot`. Objects do not change; any number of threads may use one.
class FileSystem {
 public:
  FileSystem() = default;
  virtual ~FileSystem() = default;
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;

  /// As open(2), with close-on-exec.
  virtual Descriptor open(const std::string& path, int flags, mode_t mode = 0) const = 0;
  virtual std::optional<Place> place(const std::string& path) const = 0;
  virtual std::optional<Reached> reach(const std::string& path, Links links) const = 0;
  virtual int status(const std::string& path, Links links, struct stat& status) const = 0;

  /// The path of what is at `path`, without links and dots.
  virtual std::optional<std::string> canonical(const std::string& path) const = 0;
  /// The same of what is or could be made at `path`: the last name need not exist.
  virtual std::optional<std::string> target(const std::string& path) const = 0;

  /// Whether the kernel can tell of changes at paths: only paths as all programs see them mean the same to it.
  virtual bool isWhole() const noexcept = 0;
};

/// All of it, by the system's own rules.
std::shared_ptr<const FileSystem> wholeFileSystem();

/// What lies below a folder. Neither ".." nor a link leads out of it, and no link with an absolute path anywhere,
/// whatever is moved or replaced meanwhile.
/// @param root          an existing folder's path; a path is below when it begins with this, or with the folder's
///                      canonical path
/// @param followsLinks  if not, a path through a link leads nowhere (ELOOP), and a link at its end is the entry itself
/// @return null, with errno, where `root` is no folder that can be opened
std::shared_ptr<const FileSystem> confinedFileSystem(const std::string& root, bool followsLinks);

}  // namespace foundation::storage::backend::local::detail
