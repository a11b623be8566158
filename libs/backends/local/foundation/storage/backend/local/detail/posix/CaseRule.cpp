#include <foundation/storage/backend/local/detail/posix/CaseRule.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <algorithm>
#include <array>
#include <linux/fs.h>

namespace foundation::storage::backend::local::detail {

using provider::CaseModifier;

namespace {

// File systems of systems to which case is no difference: statfs(2), and linux/magic.h.
constexpr std::array insensitiveTypes{
    0x4d44L,      // vfat
    0x2011bab0L,  // exfat
    0x5346544eL,  // ntfs
    0x7366746eL,  // ntfs3
    0x517bL,      // smb
    0xff534d42L,  // cifs
    0xfe534d42L,  // smb2
    0x4244L,      // hfs
    0x482bL,      // hfs+
};

/// The nearest folder to a path that there is.
Descriptor openFolder(const FileSystem& files, std::string path) {
  for (;;) {
    auto folder = files.open(path, O_RDONLY | O_DIRECTORY);
    if (folder.isOpen() || path == "/")
      return folder;
    path = withoutTrailingSlashes(folderOf(path));
  }
}

}  // namespace

CaseModifier caseRuleAt(const FileSystem& files, std::string path) {
  const auto folder = openFolder(files, std::move(path));
  if (!folder.isOpen())
    return CaseModifier::Sensitive;
  int flags = 0;
  if (sys().inodeFlags(folder.get(), &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0)
    return CaseModifier::InSensitive;
  long type = 0;
  const bool isKnown = sys().fileSystemType(folder.get(), &type) == 0;
  const bool isInsensitive = isKnown && std::find(insensitiveTypes.begin(), insensitiveTypes.end(),
                                                  type & 0xffffffffL) != insensitiveTypes.end();
  return isInsensitive ? CaseModifier::InSensitive : CaseModifier::Sensitive;
}

}  // namespace foundation::storage::backend::local::detail
