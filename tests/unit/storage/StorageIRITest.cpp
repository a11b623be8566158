#include "support/Thrown.h"
#include <fl/i18n/Convert.h>
#include <foundation/core/except/IException.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/testing/Together.h>

#include <boost/container_hash/hash.hpp>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <unordered_set>
#include <vector>

namespace foundation::storage::provider {
namespace {

using core::except::IInternalException;
using fl::filesystem::upath;
using fl::i18n::to_string;
using test::textThrownBy;

StorageIRI local(const char16_t* path) { return toStorageIRI(u"file", upath(path)); }

TEST(StorageIRI, ClassifiesAndKeepsTexts) {
  const struct {
    std::u16string text, toString, toAsciiString, path, host;
    bool isOpaque = false;
  } cases[] = {
      {u"s:/a/b", u"s:///a/b", u"s:///a/b", u"/a/b", u""},
      {u"s:/.//a", u"s:///.//a", u"s:///.//a", u"/.//a", u""},
      {u"s://h/a/../B/", u"s://h/a/../B/", u"s://h/a/../B/", u"/a/../B/", u"h"},
      {u"S+x://u@H%c3%b6:1/%2e%41?q#f", u"S+x://u@H%c3%b6:1/%2e%41?q#f", u"S+x://u@H%c3%b6:1/%2e%41?q#f", u"/.A",
       u"Hö"},
      {u"s://hö/ä/%FF", u"s://hö/ä/%FF", u"s://h%C3%B6/%C3%A4/%FF", {u'/', u'ä', u'/', 0xDCFF}, u"hö"},
      {u"s://h", u"s://h", u"s://h", u"", u"h"},
      {u"z:s:/ä!/b", u"z:s:/ä!/b", u"z:s:/%C3%A4!/b", u"/b", u"", true},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    const StorageIRI iri(row.text);
    EXPECT_EQ(iri.toString(), row.toString);
    EXPECT_EQ(iri.toAsciiString(), row.toAsciiString);
    EXPECT_EQ(iri.toIRI().text(), row.toString);
    EXPECT_EQ(iri.getScheme(), row.text.substr(0, row.text.find(u':')));
    EXPECT_EQ(iri.getPath(), row.path);
    EXPECT_EQ(iri.getPathView().toStringCopy(), PathView(row.path).toStringCopy());
    EXPECT_EQ(iri.hasPath(), !row.path.empty());
    EXPECT_EQ(iri.hasHost(), !row.host.empty());
    EXPECT_EQ(iri.isOpaque(), row.isOpaque);
    EXPECT_EQ(iri.hasInnerIRI(), row.isOpaque);
    if (!row.isOpaque) {
      EXPECT_EQ(iri.getHost(), row.host);
    }
  }
}

TEST(StorageIRI, RefusesWhatIsNoLocation) {
  EXPECT_THROW(StorageIRI(u"s:/a b"), network::IRISyntaxException);
  EXPECT_THROW(StorageIRI(u""), IInternalException);
  EXPECT_THROW(StorageIRI(u"a/b"), std::runtime_error);
  EXPECT_EQ(textThrownBy<IInternalException>([] { StorageIRI(u"//hö/a"); }), "IRI '//hö/a' is not absolute.");
}

TEST(StorageIRI, PlacesChildren) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"", u"/p"},        {u"x", u"/p/x"},    {u"x/", u"/p/x"},      {u"x//", u"/p/x/"},
      {u"a/b", u"/p/a/b"}, {u"///x/", u"/x/"}, {u"/x//y", u"/x//y"},  {u"/", u"/"},
      {u"///", u"/"},      {u".", u"/p/."},    {u"../q", u"/p/../q"},
  };
  for (const auto& parent : {StorageIRI(u"s://u@h:1/p?q#f"), StorageIRI(u"z:s:/a!/p"), local(u"/p")})
    for (const auto& [child, path] : cases) {
      const StorageIRI location(parent, child);
      EXPECT_EQ(location.getPath(), path) << parent << " + " << to_string(child);
      EXPECT_EQ(location.getScheme(), parent.getScheme());
    }
  EXPECT_EQ(StorageIRI(StorageIRI(u"s://u@h:1/p?q#f"), u"x y").toString(), u"s://u@h:1/p/x%20y?q#f");
  EXPECT_EQ(StorageIRI(StorageIRI(u"s://h/a/"), u"b").getPath(), u"/a/b");
  EXPECT_EQ(StorageIRI(StorageIRI(u"s://h"), u"b").toString(), u"s://h/b");
  EXPECT_EQ(StorageIRI(StorageIRI(u"s://h"), u"").getPath(), u"");
}

// Names as stores hold them; the last few are bytes that are no UTF-8, or no characters at all.
TEST(StorageIRI, CarriesAnyNameThroughItsText) {
  const std::u16string names[] = {
      u"100%", u"a#b?c", u"a b",  u"ä€😀", u"..x", u"a!b",           u"!",     u"[x]",
      u"a:b",  u"C:",    u"a\\b", u"%41", u"\t",  {0xDCFF, 0xDCFE}, {0xD800}, {0xDCC3, 0xDCA4},
  };
  const StorageIRI folders[] = {
      StorageIRI(u"file:///dir"),
      StorageIRI(u"s3://ann@bücket:9/d%20r"),
      StorageIRI(u"zip:file:///a.zip!/dir"),
      StorageIRI(u"zip:tar:s3://h/a!b!/c!/d%21r"),
      StorageIRI(u"zip", local(u"/a!b"), u"/dir"),
      local(u"/dir"),
      local(u"C:/dir"),
      local(u"//srv/dir"),
  };
  for (const auto& folder : folders)
    for (const auto& name : names) {
      SCOPED_TRACE(to_string(folder.toString()) + " + " + to_string(name));
      const StorageIRI child(folder, name);
      EXPECT_EQ(child.getName(), name);
      EXPECT_EQ(child.getPath(), folder.getPath() + u"/" + name);
      EXPECT_EQ(StorageIRI(child.getParent(), name), child);
      EXPECT_EQ(child.getParent().getName(), folder.getName());
      EXPECT_TRUE(folder.isAncestorOf(child));
      for (const auto& text : {child.toString(), child.toAsciiString()}) {
        const StorageIRI parsed(text);
        EXPECT_EQ(parsed, child);
        EXPECT_EQ(parsed.hashValue(), child.hashValue());
        EXPECT_EQ(to_string(parsed.getName()), to_string(name));
        EXPECT_EQ(parsed.isOpaque(), child.isOpaque());
      }
      const auto relative = child.makePathRelativeTo(folder);
      EXPECT_EQ(to_string(StorageIRI(folder, relative).getResolvedPath()), to_string(child.getResolvedPath()));
    }
}

TEST(StorageIRI, NamesAndParents) {
  const struct {
    const char16_t *text, *name, *parent;  // no parent: null
  } cases[] = {
      {u"s://h/a/b", u"b", u"s://h/a/"},   {u"s://h/a/b/", u"b", u"s://h/a/"}, {u"s://h/a?q", u"a", u"s://h/?q"},
      {u"s:/a//b", u"b", u"s:///a//"},     {u"s://h/", u"/", nullptr},         {u"z:s:/a!/b/c", u"c", u"z:s:///a!/b/"},
      {u"z:s:/a!/b", u"b", u"z:s:///a!/"}, {u"z:s:/a!/", u"/", nullptr},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    const StorageIRI iri(row.text);
    EXPECT_EQ(iri.getName(), row.name);
    EXPECT_EQ(iri.hasParent(), row.parent != nullptr);
    if (row.parent != nullptr) {
      EXPECT_EQ(iri.getParent().toString(), row.parent);
    } else {
      EXPECT_EQ(textThrownBy<IInternalException>([&] { iri.getParent(); }), "IRI does not have a parent IRI.");
    }
  }
  // Without a path there is no parent to give, but no root to stand on either.
  EXPECT_TRUE(StorageIRI(u"s://h").hasParent());
  EXPECT_THROW(StorageIRI(u"s://h").getParent(), std::logic_error);
}

TEST(StorageIRI, ConvertsToLocalPaths) {
  const std::pair<const char16_t*, std::u16string> cases[] = {
      {u"file:///a%20b/c", u"/a b/c"},
      {u"s://srv/share/x", u"//srv/share/x"},
      {u"file://srv//x", u"//srv/x"},
      {u"file://srv", u"//srv/"},
      {u"file:///C:/x", u"C:/x"},
      {u"file:///c:", u"c:/"},
      {u"file:///C:x", u"/C:x"},
      {u"file:///a/b:", u"/a/b:"},
      {u"file://", u""},
      {u"file:///%FF", {u'/', 0xDCFF}},
  };
  for (const auto& [text, path] : cases)
    EXPECT_EQ(StorageIRI(text).toUPath().string(), path) << to_string(text);
}

TEST(StorageIRI, TellsAncestors) {
  // clang-format off
  const struct {
    const char16_t *folder, *other;
    bool expected;
  } cases[] = {
      {u"s:///a", u"s:///a/b", true},       {u"s:///a", u"s:///ab", false},       {u"s:///a", u"s:///a", false},
      {u"s:///a/b", u"s:///a", false},      {u"s:///", u"s:///a", true},          {u"s:///", u"s:///", false},
      {u"s://h", u"s://h/a", true},         {u"s://h/a", u"s://g/a/b", true},     {u"s:///a", u"t:///a/b", false},
      {u"s:///a/../b", u"s:///b/c", false}, {u"z:s:/a!/", u"z:s:/a!/b", true},    {u"z:s:/a!/", u"z:s:///a!/b", true},
      {u"z:s:/a!/", u"z:s:/b!/b", false},   {u"z:///", u"z:s:/a!/b", false},      {u"z:s:/a!/", u"z:///b", false},
      // A path that ends in '/' loses two code units.
      {u"s:///a/", u"s:///a/b", true},      {u"s:///ab/", u"s:///a/x", true},     {u"s:///ab/", u"s:///ab/x", false},
  };
  // clang-format on
  for (const auto& row : cases)
    EXPECT_EQ(StorageIRI(row.folder).isAncestorOf(StorageIRI(row.other)), row.expected)
        << to_string(row.folder) << " of " << to_string(row.other);
  EXPECT_TRUE(local(u"/a").isAncestorOf(StorageIRI(u"file:///a/b")));
}

TEST(StorageIRI, MakesRelativePaths) {
  const struct {
    StorageIRI location, base;
    const char16_t* relative;
  } cases[] = {
      {StorageIRI(u"s:///a/b%23"), StorageIRI(u"s:///a"), u"b#"},
      {StorageIRI(u"s:///a"), StorageIRI(u"s:///a"), u"../a"},
      {StorageIRI(u"s:///"), StorageIRI(u"s:///a/b"), u"../../"},
      {StorageIRI(u"s:///x"), StorageIRI(u"s:///"), u"x"},
      {StorageIRI(u"s://h/a/b/c"), StorageIRI(u"s://h/a/x/y"), u"../../b/c"},
      {StorageIRI(u"z:s:/a!/x/y"), StorageIRI(u"z:s:/a!/x"), u"y"},
      {local(u"C:/a/b"), local(u"C:/a"), u"b"},
      {local(u"//srv/a b"), local(u"//srv/c"), u"../a b"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(row.location.makePathRelativeTo(row.base), row.relative) << row.location << " from " << row.base;

  EXPECT_EQ(textThrownBy<std::runtime_error>([] { StorageIRI(u"s://ö/a").makePathRelativeTo(StorageIRI(u"s://h/a")); }),
            "Can not make relative path between s://ö/a and s://h/a as they don't have a common root.");
  EXPECT_THROW(StorageIRI(u"z:s:/a!/x").makePathRelativeTo(StorageIRI(u"z:s:/b!/x")), std::runtime_error);
  EXPECT_THROW(local(u"C:/a").makePathRelativeTo(local(u"D:/a")), std::runtime_error);
}

TEST(StorageIRI, ResolvesDotSegmentsOnDemand) {
  const struct {
    StorageIRI location;
    const char16_t *path, *text;
  } cases[] = {
      {StorageIRI(u"s://h/a/./b/../c"), u"/a/c", u"s://h/a/c"},
      {StorageIRI(u"s://h/a/.."), u"/", u"s://h/"},
      {StorageIRI(u"s://h/../.%2e/a/"), u"/a/", u"s://h/a/"},
      {StorageIRI(u"s://h/"), u"/", u"s://h/"},
      {StorageIRI(u"s://h"), u"", u"s://h"},
      {StorageIRI(u"z:s:/a!/b/../../c"), u"/c", u"z:s:///a!/c"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.location.toString()));
    const auto written = row.location.toString();
    EXPECT_EQ(row.location.getResolvedPath(), row.path);
    EXPECT_EQ(row.location.getResolvedIRI().toString(), row.text);
    EXPECT_EQ(row.location.toString(), written);
  }
}

TEST(StorageIRI, ComparesAsciiTexts) {
  const StorageIRI sorted[] = {
      StorageIRI(u"S:///a"), StorageIRI(u"s://"),        StorageIRI(u"s:///"),           StorageIRI(u"s:///%61"),
      StorageIRI(u"s:///ä"), StorageIRI(u"s:///\u9999"), StorageIRI(u"s:///\U00010400"), StorageIRI(u"s:///\U00010401"),
      StorageIRI(u"s:///a"), StorageIRI(u"s:///a/"),     StorageIRI(u"s:///a/b"),        StorageIRI(u"s:///a/b/../b"),
      StorageIRI(u"s:///b"), StorageIRI(u"s:///z!/a"),   StorageIRI(u"s:s:///z!/a"),
  };
  for (std::size_t i = 0; i < std::size(sorted); ++i)
    for (std::size_t j = 0; j < std::size(sorted); ++j) {
      EXPECT_EQ(sorted[i] < sorted[j], i < j) << sorted[i] << " < " << sorted[j];
      EXPECT_EQ(sorted[i] == sorted[j], i == j) << sorted[i] << " == " << sorted[j];
    }
  EXPECT_EQ(StorageIRI(u"s:/a"), StorageIRI(u"s:///a"));
  EXPECT_EQ(StorageIRI(u"s:///ä"), StorageIRI(u"s:///%C3%A4"));
  const std::unordered_set<StorageIRI, boost::hash<StorageIRI>> set{StorageIRI(u"s:///ä"), StorageIRI(u"s:/%C3%A4"),
                                                                    StorageIRI(u"s:///b")};
  EXPECT_EQ(set.size(), 2u);
}

TEST(StorageIRI, HashesBitExactly) {
  EXPECT_EQ(StorageIRI(u"file:///a").hashValue(), 10147133195322045136u);
  EXPECT_EQ(hash_value(local(u"/a")), 10147133195322045136u);
  std::uint64_t seed = 0;
  for (const char unit : std::string("z:s:///%C3%A4!/b")) {
    std::uint64_t x = seed + 0x9e3779b9 + static_cast<unsigned char>(unit);
    x = (x ^ x >> 32) * 0xe9846af9b1a615d;
    x = (x ^ x >> 32) * 0xe9846af9b1a615d;
    seed = x ^ x >> 28;
  }
  EXPECT_EQ(StorageIRI(u"z:s:///ä!/b").hashValue(), seed);
}

TEST(StorageIRI, RefusesWhatAKindDoesNotHave) {
  const StorageIRI entry(u"z:s:/ä!/b");
  EXPECT_EQ(textThrownBy<std::logic_error>([&] { entry.getHost(); }),
            "StorageIRI z:s:/ä!/b is container based so by definition has no host.");
  EXPECT_EQ(textThrownBy<std::logic_error>([&] { entry.toUPath(); }),
            "Can not extract a file system path from StorageIRI z:s:/ä!/b as it represents a location inside a "
            "container.");
  for (const auto& location : {StorageIRI(u"s:///a"), local(u"/a")}) {
    EXPECT_EQ(textThrownBy<IInternalException>([&] { location.getInnerIRI(); }), "IRI does not have an inner IRI.");
    EXPECT_THROW(location.getInnerIRI(), std::logic_error);
  }
}

TEST(StorageIRI, SharesItsTextsAmongCopies) {
  const StorageIRI first(u"s:///ä/%20");
  StorageIRI copy = first;
  EXPECT_EQ(&copy.getPath(), &first.getPath());
  const StorageIRI moved = std::move(copy);
  EXPECT_EQ(&moved.toAsciiString(), &first.toAsciiString());
  copy = StorageIRI(u"t:///x");
  EXPECT_EQ(copy.getName(), u"x");
  std::ostringstream out;
  out << first;
  EXPECT_EQ(out.str(), "s:///ä/%20");
}

TEST(StorageIRI, ComputesOnceForManyFirstReaders) {
  for (const auto* folder : {u"s:///ä/%20", u"z:s:///ä!/b", u"L"})
    for (int round = 0; round < 50; ++round) {
      const auto parent = *folder == u'L' ? local(u"/ä") : StorageIRI(folder);
      const StorageIRI location(parent, u"€ /../x");
      std::vector<std::vector<const std::u16string*>> seen(8);
      std::vector<std::uint64_t> hashes(8);
      testing::together(8, [&](std::size_t number) {
        hashes[number] = location.hashValue();
        seen[number] = {&location.toAsciiString(), &location.toString(),        &location.getPath(),
                        &location.getName(),       &location.getResolvedPath(), &location.getParent().toString()};
      });
      for (const auto& each : seen)
        ASSERT_EQ(each, seen.front());
      ASSERT_EQ(std::vector<std::uint64_t>(8, location.hashValue()), hashes);
      ASSERT_EQ(location, StorageIRI(location.toString()));
    }
}

TEST(StorageIRI, LetsGoOfLongChainsOfParents) {
  std::u16string path;
  for (int i = 0; i < 1000; ++i)
    path += u"/segment";
  std::size_t depth = 0;
  {
    const StorageIRI location(u"s://h" + path);
    for (auto at = location; at.hasParent(); at = at.getParent())
      ++depth;
  }
  EXPECT_EQ(depth, 1000u);
}

}  // namespace
}  // namespace foundation::storage::provider
