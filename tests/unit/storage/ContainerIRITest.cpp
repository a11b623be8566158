#include "support/Thrown.h"
#include <fl/i18n/Convert.h>
#include <foundation/core/except/IException.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <foundation/network/IRISyntaxException.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace foundation::storage::provider {
namespace {

using core::except::IInternalException;
using fl::i18n::to_string;

TEST(ContainerIRI, Parses) {
  const struct {
    std::u16string text, inner, path;
  } cases[] = {
      {u"zip:file:///a.zip!/e/f", u"file:///a.zip", u"/e/f"},
      {u"zip:file:/a.zip!/", u"file:///a.zip", u"/"},
      {u"c1:c2:file:///a.x!/b.y!/c", u"c2:file:///a.x!/b.y", u"/c"},
      {u"zip:file:///a!b!/c%21%20d", u"file:///a!b", u"/c! d"},
      {u"zip:s3://k@h:1/a?v=1!/e", u"s3://k@h:1/a?v=1", u"/e"},
      {u"zip:s3://h/a#v!/%FF", u"s3://h/a#v", {u'/', 0xDCFF}},
      {u"zip:file:///a!/e?q", u"file:///a", u"/e"},
      {u"zip:file:///a!/e#f?g", u"file:///a", u"/e"},
      {u"zip:file:///a!/e?q#f", u"file:///a", u"/e"},
      {u"zip:file:///a!/e%3Fq%23f", u"file:///a", u"/e?q#f"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    const StorageIRI iri(row.text);
    EXPECT_EQ(iri.toString(), row.text);
    EXPECT_EQ(iri.toIRI().text(), row.text);
    EXPECT_EQ(iri.getInnerIRI().toString(), row.inner);
    EXPECT_EQ(iri.getPath(), row.path);
  }
  const auto innermost = StorageIRI(u"c1:c2:file:///a.x!/b.y!/c").getInnerIRI().getInnerIRI();
  EXPECT_EQ(innermost.toString(), u"file:///a.x");
  EXPECT_FALSE(innermost.isOpaque());
}

TEST(ContainerIRI, RefusesWithAReason) {
  const std::string invalid = "Invalid container-style storage IRI '";
  const std::pair<std::u16string, std::string> cases[] = {
      {u"zip:ä", invalid + "zip:ä'. Expected to find a '!' to begin the path section."},
      {u"zip:", invalid + "zip:'. Expected to find a '!' to begin the path section."},
      {u"zip:file:///a%21/e", invalid + "zip:file:///a%21/e'. Expected to find a '!' to begin the path section."},
      {u"zip:file:///a!/b!e", invalid + "zip:file:///a!/b!e'. Path should begin with a '/'."},
      {u"zip:file:///a!", invalid + "zip:file:///a!'. Path should begin with a '/'."},
      {u"zip:file://host!/e", "IRI 'zip:file://host!/e' does not have an absolute path component on the inner IRI."},
  };
  for (const auto& [text, reason] : cases) {
    const auto parse = [&iri = text] { StorageIRI{iri}; };
    EXPECT_EQ(test::textThrownBy<IInternalException>(parse), reason);
    EXPECT_EQ(test::textThrownBy<std::runtime_error>(parse), reason);
  }
  for (const auto* text : {u"zip:!/e", u"zip:a!/e", u"zip:tar:a!/e", u"zip://h!/e!/f b"})
    EXPECT_THROW(StorageIRI{text}, std::runtime_error) << to_string(text);
}

TEST(ContainerIRI, IsMadeFromParts) {
  const StorageIRI file(u"file:///a%20b.zip");
  const struct {
    StorageIRI inner;
    std::u16string path, text;
  } cases[] = {
      {file, u"/e f!g%", u"zip:file:///a%20b.zip!/e%20f%21g%25"},
      {file, u"", u"zip:file:///a%20b.zip!/"},
      {file, u"e", u"zip:file:///a%20b.zip!/e"},
      {StorageIRI(u"tar", file, u"/in!ner"), u"/", u"zip:tar:file:///a%20b.zip!/in%21ner!/"},
      {toStorageIRI(u"file", fl::filesystem::upath(u"/x!?#ä")), u"/y", u"zip:file:///x!%3F%23ä!/y"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    const StorageIRI iri(u"zip", row.inner, row.path);
    EXPECT_EQ(iri.toString(), row.text);
    EXPECT_EQ(StorageIRI(row.text), iri);
    EXPECT_EQ(StorageIRI(row.text).getPath(), iri.getPath());
    EXPECT_EQ(StorageIRI(row.text).getInnerIRI(), row.inner);
  }
  for (const auto* scheme : {u"", u"1", u"a/b", u"a b", u"ä"})
    EXPECT_THROW(StorageIRI(scheme, file, u"/"), std::runtime_error) << to_string(scheme);
}

TEST(ContainerIRI, SharesItsInnerLocation) {
  const StorageIRI entry(u"zip:tar:s:///a!/b!/c/d");
  const auto* text = &entry.getInnerIRI().toString();
  EXPECT_EQ(&entry.getParent().getInnerIRI().toString(), text);
  EXPECT_EQ(&StorageIRI(entry, u"x").getInnerIRI().toString(), text);
  EXPECT_EQ(&entry.getResolvedIRI().getInnerIRI().toString(), text);
}

TEST(ContainerIRI, NestsToALimit) {
  const auto nested = [](std::size_t depth) {
    std::u16string text;
    for (std::size_t i = 0; i < depth; ++i)
      text += u"z:";
    text += u"f:/a";
    for (std::size_t i = 0; i < depth; ++i)
      text += u"!/";
    return text;
  };
  const StorageIRI deepest(nested(64));
  EXPECT_EQ(deepest.toString(), nested(64));
  EXPECT_THROW(StorageIRI(nested(65)), std::runtime_error);
  EXPECT_THROW(StorageIRI(nested(20000)), std::runtime_error);
  EXPECT_THROW(StorageIRI(u"z", deepest, u"/"), std::runtime_error);
}

TEST(ContainerIRI, LiesAtHostsOfAnyForm) {
  const StorageIRI inner(u"http://[::1]:9000/b/a.zip");
  const StorageIRI entry(u"zip", inner, u"/x[1]!");
  EXPECT_EQ(entry.toString(), u"zip:http://[::1]:9000/b/a.zip!/x%5B1%5D%21");
  EXPECT_EQ(StorageIRI(entry.toString()).getInnerIRI(), inner);
  EXPECT_EQ(StorageIRI(entry.toString()).getName(), u"x[1]!");
}

TEST(ContainerIRI, RefusesPartsThatMakeNone) {
  const StorageIRI inner(u"file:///a");
  EXPECT_THROW(StorageIRI(u"zip:tar", inner, u"/x"), network::IRISyntaxException);
  EXPECT_THROW(StorageIRI(u"", inner, u"/x"), network::IRISyntaxException);
  EXPECT_THROW(StorageIRI(u"zip", StorageIRI(u"s3://bucket"), u"/x"), std::runtime_error);
}

}  // namespace
}  // namespace foundation::storage::provider
