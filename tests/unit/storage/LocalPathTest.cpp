#include "support/Thrown.h"
#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LocalPath.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace foundation::storage::provider {
namespace {

using fl::filesystem::upath;
using fl::i18n::to_string;
using test::textThrownBy;

const std::u16string paths[] = {
    u"/",       u"/a",     u"/a b/100%",     u"/ä/#?!",      u"/a//b",
    u"/a/",     u"/ab:/c", u"/C:x",          u"C:/",         u"C:/a/b:",
    u"c:/x y/", u"//srv/", u"//srv/share/a", u"//s rv/ä%/b", {u'/', 0xDCFF, 0xD800},
};

TEST(LocalPath, ComesBackFromItsLocation) {
  for (const auto& path : paths) {
    SCOPED_TRACE(to_string(path));
    const auto location = toStorageIRI(u"file", upath(path));
    EXPECT_EQ(location.getPath(), path);
    EXPECT_EQ(fromStorageIRI(location).string(), path);
    EXPECT_EQ(StorageIRI(location, u""), location) << "its own path leads elsewhere: " << StorageIRI(location, u"");
  }
}

TEST(LocalPath, ComesBackFromTheTextOfItsLocation) {
  for (const auto& path : paths) {
    SCOPED_TRACE(to_string(path));
    const auto location = toStorageIRI(u"file", upath(path));
    const StorageIRI parsed(location.toString());
    EXPECT_EQ(parsed.toAsciiString(), location.toAsciiString());
    EXPECT_TRUE(parsed == location && location == parsed);
    EXPECT_FALSE(parsed < location || location < parsed);
    EXPECT_EQ(to_string(parsed.toUPath().string()), to_string(path));
    EXPECT_EQ(parsed.hasHost(), location.hasHost());
    EXPECT_EQ(parsed.getHost(), location.getHost());
  }
  // A server alone is its root, however it is written.
  const auto server = toStorageIRI(u"file", upath(u"//srv"));
  EXPECT_EQ(StorageIRI(server, u""), server);
  EXPECT_EQ(StorageIRI(server.toString()).toUPath().string(), server.toUPath().string());
  // A drive may stand under the root, where the text cannot tell it apart from the drive itself.
  const auto underRoot = toStorageIRI(u"file", upath(u"/C:/x"));
  EXPECT_EQ(underRoot.getPath(), u"/C:/x");
  EXPECT_EQ(StorageIRI(underRoot.toString()).toUPath().string(), u"C:/x");
}

TEST(LocalPath, ResolvesUnderItsRoot) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"/a/./b/../c", u"/a/c"},
      {u"/../..", u"/"},
      {u"C:/a/../b", u"C:/b"},
      {u"C:/../../b", u"C:/b"},
      {u"C:/..", u"C:/"},
      {u"C:/../D:/x", u"C:/D:/x"},
      {u"//srv/a/../b", u"//srv/b"},
      {u"//srv/../x", u"//srv/x"},
      {u"//srv/../../x/", u"//srv/x/"},
      {u"//srv/..", u"//srv/"},
      {u"", u""},
  };
  for (const auto& [path, resolved] : cases)
    EXPECT_EQ(toStorageIRI(u"file", upath(path)).getResolvedIRI().getPath(), resolved) << to_string(path);
}

TEST(LocalPath, HasTextParentAndName) {
  const struct {
    const char16_t *path, *text, *parent, *name, *host;
    bool hasParent;
  } cases[] = {
      {u"/a b/c", u"f:///a%20b/c", u"/a b", u"c", u"", true},
      {u"/a", u"f:///a", u"/", u"a", u"", true},
      {u"/", u"f:///", nullptr, u"/", u"", false},
      {u"C:/a", u"f:///C:/a", u"C:/", u"a", u"", true},
      {u"C:/", u"f:///C:/", u"/", u"C:", u"", false},
      {u"//s v/a", u"f://s%20v/a", u"//s v/", u"a", u"s v", true},
      {u"//srv/", u"f://srv/", nullptr, u"srv", u"srv", false},
      {u"", u"f://", nullptr, u"", u"", false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.path));
    const auto location = toStorageIRI(u"f", upath(row.path));
    EXPECT_EQ(location.toString(), row.text);
    EXPECT_EQ(location.getName(), row.name);
    EXPECT_EQ(location.getHost(), row.host);
    EXPECT_EQ(location.hasHost(), *row.host != u'\0');
    EXPECT_EQ(location.hasParent(), row.hasParent);
    EXPECT_FALSE(location.isOpaque());
    if (row.parent != nullptr) {
      EXPECT_EQ(location.getParent(), toStorageIRI(u"f", upath(row.parent)));
    } else {
      EXPECT_EQ(textThrownBy<std::logic_error>([&] { location.getParent(); }), "IRI does not have a parent IRI.");
    }
  }
}

TEST(LocalPath, ComparesByPath) {
  const auto at = [](const char16_t* scheme, const char16_t* path) { return toStorageIRI(scheme, upath(path)); };
  EXPECT_EQ(at(u"a", u"/x"), at(u"b", u"/x"));
  EXPECT_FALSE(at(u"a", u"/x") < at(u"b", u"/x") || at(u"b", u"/x") < at(u"a", u"/x"));
  EXPECT_EQ(at(u"a", u"/x"), StorageIRI(u"a:///x"));
  EXPECT_NE(at(u"a", u"/x"), StorageIRI(u"b:///x"));
  // Segment by segment, while texts are compared unit by unit, where '.' comes before '/'.
  EXPECT_LT(at(u"a", u"/x/y"), at(u"a", u"/x.y"));
  EXPECT_LT(at(u"a", u"/x.y"), StorageIRI(u"a:///x/y"));
  EXPECT_LT(at(u"b", u"/x"), at(u"a", u"/x/y"));
}

TEST(LocalPath, RefusesRelativePaths) {
  EXPECT_EQ(textThrownBy<std::runtime_error>([] { toStorageIRI(u"file", upath(u"ä/b")); }),
            "File path ä/b is not absolute.");
  EXPECT_THROW(toStorageIRI(u"file", upath(u"C:")), std::runtime_error);
  EXPECT_THROW(toStorageIRI(u"a b", upath(u"/")), std::runtime_error);
}

class CanonicalPath : public testing::Test {
 protected:
  CanonicalPath() {
    std::string name = (std::filesystem::temp_directory_path() / "canonicalXXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
    folder_ = std::filesystem::canonical(name);
    std::filesystem::create_directory(folder_ / "real");
    std::ofstream(folder_ / "real" / "100%\xFF");
    std::filesystem::create_directory_symlink("real", folder_ / "link");
    std::filesystem::create_symlink("loop", folder_ / "loop");
  }
  ~CanonicalPath() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  upath in(const std::string& name) const { return upath(fl::i18n::to_ustring((folder_ / name).string())); }

  std::filesystem::path folder_;
};

TEST_F(CanonicalPath, FollowsLinksAndDropsDots) {
  const auto location = toCanonicalizedStorageIRI(u"file", in("link/../link/./100%\xFF"));
  EXPECT_EQ(location.getPath(), in("real/100%\xFF").string());
  EXPECT_EQ(location.getScheme(), u"file");
  EXPECT_EQ(toCanonicalizedStorageIRI(u"file", upath(u"//")).getPath(), u"/");
}

TEST_F(CanonicalPath, TranslatesFailures) {
  const std::pair<upath, ErrorCode> cases[] = {
      {in("missing/x"), ErrorCode::ResourceNotFound}, {in("real/100%\xFF/x"), ErrorCode::ResourceNotFound},
      {in("loop"), ErrorCode::InvalidLocation},       {in(std::string(300, 'n')), ErrorCode::InvalidLocation},
      {upath(u"C:/x"), ErrorCode::InvalidLocation},   {upath(std::u16string(u"/a\0b", 4)), ErrorCode::InvalidLocation},
  };
  for (const auto& [path, code] : cases) {
    SCOPED_TRACE(to_string(path.string()));
    try {
      toCanonicalizedStorageIRI(u"file", path);
      ADD_FAILURE() << "was accepted";
    } catch (const Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), code);
      EXPECT_EQ(failure.getStorageIRI(), toStorageIRI(u"file", path));
    }
  }
  EXPECT_EQ(textThrownBy<std::runtime_error>([] { toCanonicalizedStorageIRI(u"file", upath(u"a/b")); }),
            "File path a/b is not absolute.");
  const auto text = textThrownBy<std::runtime_error>([] { toCanonicalizedStorageIRI(u"1", upath(u"/")); });
  EXPECT_NE(text.find("'1' is not a valid IRI"), std::string::npos) << text;
}

}  // namespace
}  // namespace foundation::storage::provider
