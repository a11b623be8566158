#pragma once

#include <cstddef>
#include <cstdint>
#include <poll.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/types.h>

namespace foundation::storage::backend::local::detail {

/// Every system call that this back end makes, so that a test can make any of them fail. Each is the call of its name
/// in section 2 of the manual, unless said otherwise.
struct SystemCalls {
  int (*openat)(int folder, const char* path, int flags, mode_t mode) noexcept;
  /// openat2(2)
  int (*openBeneath)(int folder, const char* path, int flags, mode_t mode, std::uint64_t resolve) noexcept;
  int (*close)(int file) noexcept;
  ssize_t (*read)(int file, void* buffer, std::size_t size) noexcept;
  ssize_t (*write)(int file, const void* buffer, std::size_t size) noexcept;
  off_t (*lseek)(int file, off_t offset, int origin) noexcept;
  int (*ftruncate)(int file, off_t size) noexcept;
  int (*fsync)(int file) noexcept;
  /// ioctl_ficlone(2)
  int (*cloneContent)(int to, int from) noexcept;
  ssize_t (*copyFileRange)(int from, int to, std::size_t size) noexcept;
  ssize_t (*getdents)(int folder, void* buffer, std::size_t size) noexcept;
  /// fcntl(2), F_GETFL and F_SETFL
  int (*fileFlags)(int file) noexcept;
  int (*setFileFlags)(int file, int flags) noexcept;

  int (*fstat)(int file, struct stat* status) noexcept;
  int (*fstatat)(int folder, const char* path, struct stat* status, int flags) noexcept;
  int (*faccessat)(int folder, const char* path, int mode, int flags) noexcept;
  ssize_t (*readlinkat)(int folder, const char* path, char* text, std::size_t size) noexcept;
  /// realpath(3), to be freed
  char* (*realpath)(const char* path) noexcept;
  int (*statvfs)(const char* path, struct statvfs* status) noexcept;
  /// The magic number of statfs(2).
  int (*fileSystemType)(int file, long* type) noexcept;
  /// FS_IOC_GETFLAGS of ioctl_iflags(2)
  int (*inodeFlags)(int file, int* flags) noexcept;

  int (*mkdirat)(int folder, const char* path, mode_t mode) noexcept;
  int (*mknodat)(int folder, const char* path, mode_t mode, dev_t device) noexcept;
  int (*symlinkat)(const char* text, int folder, const char* path) noexcept;
  int (*linkat)(int fromFolder, const char* from, int toFolder, const char* to) noexcept;
  int (*unlinkat)(int folder, const char* path, int flags) noexcept;
  int (*renameat)(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept;
  int (*chmod)(const char* path, mode_t mode) noexcept;
  int (*fchmod)(int file, mode_t mode) noexcept;
  int (*fchownat)(int folder, const char* path, uid_t owner, gid_t group, int flags) noexcept;
  int (*fchown)(int file, uid_t owner, gid_t group) noexcept;
  int (*utimensat)(int folder, const char* path, const timespec* times, int flags) noexcept;

  ssize_t (*listxattr)(const char* path, char* names, std::size_t size) noexcept;
  ssize_t (*getxattr)(const char* path, const char* name, void* value, std::size_t size) noexcept;
  int (*fsetxattr)(int file, const char* name, const void* value, std::size_t size) noexcept;

  int (*eventfd)(int flags) noexcept;
  int (*poll)(pollfd* files, nfds_t count, int milliseconds) noexcept;
  int (*inotifyInit)(int flags) noexcept;
  int (*inotifyAddWatch)(int inotify, const char* path, std::uint32_t mask) noexcept;
  int (*inotifyRemoveWatch)(int inotify, int watch) noexcept;
};

/// The system itself.
extern const SystemCalls realSystemCalls;

/// The calls to make. Like the system's they return -1 and set errno, and EINTR is for the caller to retry.
const SystemCalls& sys() noexcept;

/// Puts other calls in the place of the system's, for all threads; for tests.
/// @param calls  must live as long as they are in place
void setSystemCalls(const SystemCalls& calls) noexcept;

}  // namespace foundation::storage::backend::local::detail
