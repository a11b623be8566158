// The laws of locations, IRIs and paths over many drawn inputs. A fixed seed, so a failure comes back.

#include "laws/IRILaws.h"
#include "laws/LocationLaws.h"
#include "laws/PathLaws.h"

#include <boost/functional/hash.hpp>
#include <boost/unordered_map.hpp>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace foundation::laws {
namespace {

using fl::filesystem::upath;
using storage::provider::toStorageIRI;

/// Draws names and texts that are full of what could go wrong.
class Source {
 public:
  std::size_t below(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_); }

  std::u16string name() {
    static const std::vector<std::u16string> pieces{u"a",
                                                    u"b",
                                                    u"B",
                                                    u"100%",
                                                    u"%41",
                                                    u"#",
                                                    u"?",
                                                    u" ",
                                                    u"!",
                                                    u"[x]",
                                                    u":",
                                                    u"@",
                                                    u"\\",
                                                    u"..",
                                                    u".",
                                                    u"ä",
                                                    u"€",
                                                    u"😀",
                                                    u"\xdcff\xdcfe",
                                                    u"\xdcc3\xdca4",
                                                    u"\xd800",
                                                    u"\xe000",
                                                    u"\xfffd",
                                                    u"\x200f",
                                                    u"\x7f",
                                                    u"\n",
                                                    u"+",
                                                    u"&="};
    std::u16string name;
    for (std::size_t count = 1 + below(3); count > 0; --count)
      name += pieces[below(pieces.size())];
    return name == u"." || name == u".." ? name + u"x" : name;
  }

  /// A location of one kind, a few folders deep; small enough a choice that equal ones come up.
  StorageIRI location(int kind) {
    static const StorageIRI roots[] = {StorageIRI(u"s://h/"), StorageIRI(u"file:///"), StorageIRI(u"s://ü%C3%BC@h:1/")};
    static const StorageIRI archives[] = {StorageIRI(u"zip:file:///a%20ä!/"), StorageIRI(u"zip:tar:s:/x!/y!/")};
    static const StorageIRI local[] = {toStorageIRI(u"file", upath(u"/")), toStorageIRI(u"file", upath(u"C:/")),
                                       toStorageIRI(u"smb", upath(u"//srv/"))};
    auto at = kind == 0 ? roots[below(3)] : kind == 1 ? archives[below(2)] : local[below(3)];
    for (std::size_t depth = below(4); depth > 0; --depth)
      at = StorageIRI(at, below(3) == 0 ? name() : std::u16string(1, static_cast<char16_t>(u'a' + below(2))));
    return at;
  }

  std::u16string text() {
    static const std::u16string units = u"ab:/?#[]@!$&'%2Fé€\xd83d\xde00.~ \"<C:\\1v";
    std::u16string text;
    for (std::size_t count = below(24); count > 0; --count)
      text.push_back(units[below(units.size())]);
    return below(2) == 0 ? u"s://h/" + text : text;
  }

 private:
  std::mt19937 engine_{20240229};
};

TEST(Property, LocationsOfAllKindsObeyTheirLaws) {
  Source source;
  for (int round = 0; round < 3000; ++round) {
    const auto location = source.location(round % 3);
    checkLocation(location);
    checkChild(location, source.name());
    checkRelativePath(location, source.location(round % 3));
    checkComparison(location, source.location(round % 3), source.location(round % 3));
  }
}

TEST(Property, LocalPathsComeBackFromTheirTexts) {
  Source source;
  for (int round = 0; round < 2000; ++round) {
    const auto location = source.location(2);
    const auto path = location.toUPath();
    // The text cannot tell a drive from a folder of that name under the root.
    if (path.string().starts_with(u'/') && path.string().size() > 2 && path.string()[2] == u':')
      continue;
    if (hasLoneSurrogate(path.string()))
      continue;
    EXPECT_EQ(StorageIRI(location.toString()).toUPath(), path) << location;
    EXPECT_EQ(extract_root_path(location.getResolvedIRI().toUPath()), extract_root_path(path)) << location;
  }
}

TEST(Property, MapsOfLocationsAgree) {
  Source source;
  for (int kind = 0; kind < 3; ++kind) {
    std::map<StorageIRI, int> ordered;
    std::unordered_map<StorageIRI, int> hashed;
    boost::unordered_map<StorageIRI, int> boosted;
    for (int round = 0; round < 1000; ++round) {
      const auto location = source.location(kind);
      ++ordered[location];
      ++hashed[StorageIRI(location, u"")];
      ++boosted[kind == 2 ? location : StorageIRI(location.toString())];
    }
    EXPECT_LT(ordered.size(), 1000u);
    ASSERT_EQ(ordered.size(), hashed.size());
    ASSERT_EQ(ordered.size(), boosted.size());
    for (const auto& [location, count] : ordered) {
      EXPECT_EQ(hashed.at(location), count) << location;
      EXPECT_EQ(boosted.at(location), count) << location;
    }
  }
}

TEST(Property, IRIsAndPathsObeyTheirLaws) {
  Source source;
  std::size_t accepted = 0;
  for (int round = 0; round < 20000; ++round) {
    const auto text = source.text();
    checkDotSegments(text);
    checkPath(upath(text));
    checkPathOrder(upath(text), upath(source.text()), upath(text.substr(text.size() / 2)));
    const auto iri = parsed(text);
    if (!iri)
      continue;
    ++accepted;
    checkIRI(*iri);
    if (const auto base = parsed(source.text()))
      checkReference(*iri, *base);
    if (const auto location = located(text))
      checkLocation(*location);
  }
  EXPECT_GT(accepted, 500u);
}

}  // namespace
}  // namespace foundation::laws
