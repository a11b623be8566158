#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <atomic>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/openat2.h>
#include <stdio.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {
namespace {

int openBeneath(int folder, const char* path, int flags, mode_t mode, std::uint64_t resolve) noexcept {
  open_how how{};
  how.flags = static_cast<__u64>(flags);
  how.mode = mode;
  how.resolve = resolve;
  return static_cast<int>(::syscall(SYS_openat2, folder, path, &how, sizeof how));
}

int fileSystemType(int file, long* type) noexcept {
  struct statfs status;
  if (::fstatfs(file, &status) == -1)
    return -1;
  *type = status.f_type;
  return 0;
}

// The wrappers stand for functions that are variadic, overloaded, or take more than is needed here.
constexpr SystemCalls makeRealSystemCalls() {
  SystemCalls calls{};
  calls.openat = [](int folder, const char* path, int flags, mode_t mode) noexcept {
    return ::openat(folder, path, flags, mode);
  };
  calls.openBeneath = openBeneath;
  calls.close = [](int file) noexcept { return ::close(file); };
  calls.read = [](int file, void* buffer, std::size_t size) noexcept { return ::read(file, buffer, size); };
  calls.write = [](int file, const void* buffer, std::size_t size) noexcept { return ::write(file, buffer, size); };
  calls.lseek = ::lseek;
  calls.ftruncate = ::ftruncate;
  calls.fsync = [](int file) noexcept { return ::fsync(file); };
  calls.cloneContent = [](int to, int from) noexcept { return ::ioctl(to, FICLONE, from); };
  calls.copyFileRange = [](int from, int to, std::size_t size) noexcept {
    return ::copy_file_range(from, nullptr, to, nullptr, size, 0);
  };
  calls.getdents = [](int folder, void* buffer, std::size_t size) noexcept {
    return ::getdents64(folder, buffer, size);
  };
  calls.fileFlags = [](int file) noexcept { return ::fcntl(file, F_GETFL); };
  calls.setFileFlags = [](int file, int flags) noexcept { return ::fcntl(file, F_SETFL, flags); };
  calls.fstat = ::fstat;
  calls.fstatat = ::fstatat;
  calls.faccessat = ::faccessat;
  calls.readlinkat = ::readlinkat;
  calls.realpath = [](const char* path) noexcept { return ::realpath(path, nullptr); };
  calls.statvfs = ::statvfs;
  calls.fileSystemType = fileSystemType;
  calls.inodeFlags = [](int file, int* flags) noexcept { return ::ioctl(file, FS_IOC_GETFLAGS, flags); };
  calls.mkdirat = ::mkdirat;
  calls.mknodat = ::mknodat;
  calls.symlinkat = ::symlinkat;
  calls.linkat = [](int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return ::linkat(fromFolder, from, toFolder, to, 0);
  };
  calls.unlinkat = ::unlinkat;
  calls.renameat = ::renameat2;
  calls.chmod = ::chmod;
  calls.fchmod = ::fchmod;
  calls.fchownat = ::fchownat;
  calls.fchown = ::fchown;
  calls.utimensat = ::utimensat;
  calls.futimens = ::futimens;
  calls.listxattr = ::listxattr;
  calls.getxattr = ::getxattr;
  calls.fsetxattr = [](int file, const char* name, const void* value, std::size_t size) noexcept {
    return ::fsetxattr(file, name, value, size, 0);
  };
  calls.fgetxattr = ::fgetxattr;
  calls.fremovexattr = ::fremovexattr;
  calls.eventfd = [](int flags) noexcept { return ::eventfd(0, flags); };
  calls.poll = [](pollfd* files, nfds_t count, int milliseconds) noexcept {
    return ::poll(files, count, milliseconds);
  };
  calls.inotifyInit = ::inotify_init1;
  calls.inotifyAddWatch = ::inotify_add_watch;
  calls.inotifyRemoveWatch = ::inotify_rm_watch;
  return calls;
}

}  // namespace

constinit const SystemCalls realSystemCalls = makeRealSystemCalls();

namespace {

constinit std::atomic<const SystemCalls*> currentCalls{&realSystemCalls};

}  // namespace

const SystemCalls& sys() noexcept { return *currentCalls.load(std::memory_order_acquire); }

void setSystemCalls(const SystemCalls& calls) noexcept { currentCalls.store(&calls, std::memory_order_release); }

}  // namespace foundation::storage::backend::local::detail
