#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/StorageItem.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace foundation::storage::backend::local {

using namespace provider;

/// Tests in a folder of their own, as an item of the back end and as a path for looking at it from outside.
class LocalTest : public ::testing::Test {
 protected:
  explicit LocalTest(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : path(makeFolder(parent)) {
    ::chmod(path.c_str(), 0755);
  }
  ~LocalTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  static std::string makeFolder(const std::filesystem::path& parent) {
    auto name = (parent / "foundation-local-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
    return name;
  }

  StorageItem child(const std::u16string& name) const { return {folder, name}; }
  std::string native(const std::string& name) const { return path + "/" + name; }

  void put(const std::string& name, const std::string& bytes) const {
    std::ofstream(native(name), std::ios::binary) << bytes;
  }
  std::string content(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(native(name), std::ios::binary).rdbuf();
    return bytes.str();
  }

  const std::string path;
  const StorageIRI location = toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(path)));
  const StorageItem folder{LocalProviderFactory().buildProvider(location), location};
};

/// The code of the `Exception` or stream failure that `action` throws. An `Exception` has to carry
/// `expected`, a stream failure to name it.
template <class Action>
ErrorCode codeThrownAt(const StorageIRI& expected, const Action& action) {
  try {
    action();
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getStorageIRI(), expected);
    EXPECT_TRUE(failure.topExceptionContext().has_value());
    return failure.getErrorCode();
  } catch (const ByteStreamFailure& failure) {
    const std::string text = failure.what();
    EXPECT_NE(text.find(fl::i18n::to_string(expected.toString()) + ": "), std::string::npos) << text;
    return failure.getErrorCode();
  }
  ADD_FAILURE() << "nothing was thrown";
  return ErrorCode::Unknown;
}

template <class Action>
ErrorCode codeThrownAt(const StorageItem& expected, const Action& action) {
  return codeThrownAt(expected.getLocation(), action);
}

/// A new folder on another file system than that of `path`; empty where there is none.
inline std::string makeFolderElsewhere(const std::string& path) {
  std::string name = "/dev/shm/foundation-elsewhere-XXXXXX";
  struct stat here, there;
  const bool isOther = stat("/dev/shm", &there) == 0 && stat(path.c_str(), &here) == 0 && here.st_dev != there.st_dev;
  return isOther && mkdtemp(name.data()) != nullptr ? name : std::string();
}

/// Gives up root's rights, which know no permissions, for the time of a scope.
class WithoutPrivileges {
 public:
  WithoutPrivileges() : wasRoot_(geteuid() == 0) {
    if (wasRoot_ && seteuid(nobody) != 0)
      throw std::runtime_error("root's rights cannot be given up");
  }
  ~WithoutPrivileges() { EXPECT_TRUE(!wasRoot_ || seteuid(0) == 0); }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

 private:
  static constexpr uid_t nobody = 65534;
  bool wasRoot_;
};

}  // namespace foundation::storage::backend::local
