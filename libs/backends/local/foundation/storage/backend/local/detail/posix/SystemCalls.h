#pragma once

#include <foundation/storage/backend/local/detail/posix/SystemCall.h>

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
  SystemCall<int(int folder, const char* path, int flags, mode_t mode)> openat;
  /// openat2(2)
  SystemCall<int(int folder, const char* path, int flags, mode_t mode, std::uint64_t resolve)> openBeneath;
  int (*close)(int file) noexcept;  // not repeated: it is closed in any case
  SystemCall<ssize_t(int file, void* buffer, std::size_t size)> read;
  SystemCall<ssize_t(int file, const void* buffer, std::size_t size)> write;
  SystemCall<off_t(int file, off_t offset, int origin)> lseek;
  SystemCall<int(int file, off_t size)> ftruncate;
  SystemCall<int(int file)> fsync;
  /// ioctl_ficlone(2)
  SystemCall<int(int to, int from)> cloneContent;
  SystemCall<ssize_t(int from, int to, std::size_t size)> copyFileRange;
  SystemCall<ssize_t(int folder, void* buffer, std::size_t size)> getdents;
  /// fcntl(2), F_GETFL and F_SETFL
  SystemCall<int(int file)> fileFlags;
  SystemCall<int(int file, int flags)> setFileFlags;

  SystemCall<int(int file, struct stat* status)> fstat;
  SystemCall<int(int folder, const char* path, struct stat* status, int flags)> fstatat;
  SystemCall<int(int folder, const char* path, int mode, int flags)> faccessat;
  SystemCall<ssize_t(int folder, const char* path, char* text, std::size_t size)> readlinkat;
  /// realpath(3), to be freed
  SystemCall<char*(const char* path)> realpath;
  SystemCall<int(const char* path, struct statvfs* status)> statvfs;
  /// The magic number of statfs(2).
  SystemCall<int(int file, long* type)> fileSystemType;
  /// FS_IOC_GETFLAGS of ioctl_iflags(2)
  SystemCall<int(int file, int* flags)> inodeFlags;

  SystemCall<int(int folder, const char* path, mode_t mode)> mkdirat;
  SystemCall<int(int folder, const char* path, mode_t mode, dev_t device)> mknodat;
  SystemCall<int(const char* text, int folder, const char* path)> symlinkat;
  SystemCall<int(int fromFolder, const char* from, int toFolder, const char* to)> linkat;
  SystemCall<int(int folder, const char* path, int flags)> unlinkat;
  SystemCall<int(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags)> renameat;
  SystemCall<int(const char* path, mode_t mode)> chmod;
  SystemCall<int(int file, mode_t mode)> fchmod;
  SystemCall<int(int folder, const char* path, uid_t owner, gid_t group, int flags)> fchownat;
  SystemCall<int(int file, uid_t owner, gid_t group)> fchown;
  SystemCall<int(int folder, const char* path, const timespec* times, int flags)> utimensat;
  SystemCall<int(int file, const timespec* times)> futimens;

  SystemCall<ssize_t(const char* path, char* names, std::size_t size)> listxattr;
  SystemCall<ssize_t(const char* path, const char* name, void* value, std::size_t size)> getxattr;
  SystemCall<int(int file, const char* name, const void* value, std::size_t size)> fsetxattr;
  SystemCall<ssize_t(int file, const char* name, void* value, std::size_t size)> fgetxattr;
  SystemCall<int(int file, const char* name)> fremovexattr;

  SystemCall<int(int flags)> eventfd;
  SystemCall<int(pollfd* files, nfds_t count, int milliseconds)> poll;
  SystemCall<int(int flags)> inotifyInit;
  SystemCall<int(int inotify, const char* path, std::uint32_t mask)> inotifyAddWatch;
  SystemCall<int(int inotify, int watch)> inotifyRemoveWatch;
};

/// The system itself.
extern const SystemCalls realSystemCalls;

/// The calls to make. Like the system's they return -1 and set errno.
const SystemCalls& sys() noexcept;

/// Puts other calls in the place of the system's, for all threads; for tests.
/// @param calls  must live as long as they are in place
void setSystemCalls(const SystemCalls& calls) noexcept;

}  // namespace foundation::storage::backend::local::detail
