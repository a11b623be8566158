#include <fl/filesystem/Exceptions.h>
#include <fl/filesystem/Path.h>
#include <fl/i18n/Convert.h>

#include <gtest/gtest.h>

#include <sys/fsuid.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace fl::filesystem {
namespace {

TEST(Path, IsTakenApartInAllAbsoluteForms) {
  const struct {
    std::u16string path, root, parent, name;
    bool absolute;
  } cases[] = {
      {u"/", u"/", u"", u"/", true},
      {u"///", u"/", u"", u"/", true},
      {u"/a", u"/", u"/", u"a", true},
      {u"/a/b", u"/", u"/a", u"b", true},
      {u"/a/b/", u"/", u"/a", u"b", true},
      {u"/a//b", u"/", u"/a", u"b", true},
      {u"/a\\b", u"/", u"/", u"a\\b", true},
      {u"/C:/x", u"/", u"/C:", u"x", true},
      {u"C:/", u"C:/", u"", u"C:", true},
      {u"C:/a", u"C:/", u"C:/", u"a", true},
      {u"z:/a/b/", u"z:/", u"z:/a", u"b", true},
      {u"C:", u"C:/", u"", u"C:", false},
      {u"1:/a", u"", u"1:", u"a", false},
      {u"//server/", u"//server/", u"", u"server", true},
      {u"//server", u"//server/", u"", u"server", true},
      {u"//server/share", u"//server/", u"//server/", u"share", true},
      {u"//server/share/a", u"//server/", u"//server/share", u"a", true},
      {u"", u"", u"", u"", false},
      {u"a", u"", u"", u"a", false},
      {u"a/b", u"", u"a", u"b", false},
      {u"C:a/b", u"C:/", u"C:a", u"b", false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(i18n::to_string(row.path));
    const upath path(row.path);
    EXPECT_EQ(extract_root_path(path).string(), row.root);
    EXPECT_EQ(extract_parent_path(path).string(), row.parent);
    EXPECT_EQ(extract_filename(path).string(), row.name);
    EXPECT_EQ(is_absolute(path), row.absolute);
  }
}

TEST(Path, GenericFormCollapsesLeadingSeparatorsThatNameNoServer) {
  const struct {
    std::u16string path, generic;
  } cases[] = {{u"", u""},           {u"/", u"/"},       {u"//", u"/"},      {u"///", u"/"},    {u"///a", u"/a"},
               {u"//s/a", u"//s/a"}, {u"/a//", u"/a//"}, {u"a\\b", u"a\\b"}, {u"//s", u"//s/"}, {u"//s//a", u"//s/a"}};
  for (const auto& row : cases)
    EXPECT_EQ(make_generic_form(upath(row.path)).string(), row.generic) << i18n::to_string(row.path);
}

TEST(Path, IsOrderedSegmentBySegment) {
  // '!' and '-' rank below '/' as code units, but "a!" is a longer name than "a".
  const std::vector<std::u16string> ordered{u"",   u"/",       u"/a",  u"/a/",  u"/a/b",  u"/a/b/c", u"/a!", u"/a-b",
                                            u"/b", u"/\xffff", u"//s", u"//s/", u"//s/a", u"//s!",   u"C:/"};
  std::vector<upath> paths(ordered.begin(), ordered.end());
  std::shuffle(paths.begin(), paths.end(), std::mt19937(7));
  std::sort(paths.begin(), paths.end());
  for (std::size_t i = 0; i < ordered.size(); ++i)
    EXPECT_EQ(paths[i].string(), ordered[i]) << i;
  EXPECT_EQ(upath(u"/a"), upath(u"/a"));
  EXPECT_FALSE(upath(u"/a") < upath(u"/a"));
  EXPECT_TRUE(upath(u"/\x7fff") < upath(u"/\x8000"));  // unsigned
  using NarrowPath = basic_path<char, char>;
  EXPECT_TRUE(NarrowPath("/a/b") < NarrowPath("/a\xff") && NarrowPath("/z") < NarrowPath("/\xff"));
}

class VolumeTest : public testing::Test {
 protected:
  VolumeTest() {
    auto name = (std::filesystem::temp_directory_path() / "foundation-path-XXXXXX").string();
    folder = std::filesystem::canonical(mkdtemp(name.data())).string();
  }
  ~VolumeTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  static upath pathOf(const std::string& name) { return upath(i18n::to_ustring(name)); }

  std::string folder;
};

TEST_F(VolumeTest, ResolvesLinksDotsAndNamesOfAnyBytes) {
  std::filesystem::create_directory(folder + "/\xff\xfe");
  std::filesystem::create_directory_symlink("\xff\xfe", folder + "/link");
  EXPECT_EQ(get_pathname_from_volume(pathOf(folder + "/./link/../link//")), pathOf(folder + "/\xff\xfe"));
  EXPECT_EQ(get_pathname_from_volume(pathOf("//" + folder)), pathOf(folder));
}

TEST_F(VolumeTest, SaysWhyByType) {
  std::filesystem::create_symlink("loop", folder + "/loop");
  std::filesystem::copy_file("/proc/self/cmdline", folder + "/file");
  EXPECT_THROW(get_pathname_from_volume(pathOf(folder + "/missing")), PathNotFound);
  EXPECT_THROW(get_pathname_from_volume(pathOf(folder + "/file/below")), PathNotFound);
  EXPECT_THROW(get_pathname_from_volume(pathOf(folder + "/loop")), InvalidArgument);
  EXPECT_THROW(get_pathname_from_volume(pathOf(folder + "/" + std::string(300, 'n'))), InvalidArgument);
  for (const auto* text : {u"", u"relative", u"C:/a", u"//server/share"})
    EXPECT_THROW(get_pathname_from_volume(upath(text)), InvalidArgument) << i18n::to_string(text);
}

TEST_F(VolumeTest, SaysThatTheCallerMayNot) {
  std::filesystem::create_directories(folder + "/closed/below");
  std::filesystem::permissions(folder + "/closed", std::filesystem::perms::none);
  const auto user = static_cast<uid_t>(setfsuid(65534));  // root may do anything; fails for all others, rightly
  EXPECT_THROW(get_pathname_from_volume(pathOf(folder + "/closed/below")), AccessDenied);
  setfsuid(user);
  std::filesystem::permissions(folder + "/closed", std::filesystem::perms::owner_all);
}

TEST_F(VolumeTest, NamesOperationPathAndReason) {
  const struct {
    upath path;
    int error;
    std::string text;
  } cases[] = {
      {pathOf(folder + "/missing\xff"), ENOENT, folder + "/missing\xff': No such file or directory (2)"},
      {upath(std::u16string(u"/tmp\0x", 6)), 0, "/tmp\\x00x': The path is not of a form that the system knows"},
  };
  for (const auto& row : cases) {
    try {
      get_pathname_from_volume(row.path);
      ADD_FAILURE() << row.text;
    } catch (const FsysExceptionBase& failure) {
      EXPECT_EQ(failure.what(), "get_pathname_from_volume '" + row.text);
      EXPECT_EQ(failure.getOperation(), "get_pathname_from_volume");
      EXPECT_EQ(failure.getPath(), row.path);
      EXPECT_EQ(failure.getErrorNumber(), row.error);
    }
  }
}

}  // namespace
}  // namespace fl::filesystem
