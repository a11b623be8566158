#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/provider/Exception.h>

#include <gtest/gtest.h>

#include <string>

namespace foundation::storage::backend::s3::detail {
namespace {

using provider::ErrorCode;
using provider::StorageIRI;

const StorageIRI root(u"s3://bucket/");

TEST(PlaceTest, TakesPathsAsKeys) {
  const struct {
    const char16_t* text;
    std::string key;
    std::string parent;
  } cases[] = {
      {u"s3://bucket", "", ""},
      {u"S3://bucket/", "", ""},
      {u"s3://bucket/a", "a", ""},
      {u"s3://bucket/a/", "a", ""},
      {u"s3://bucket/a//", "a/", ""},
      {u"s3://bucket/a/b", "a/b", "a/"},
      {u"s3://bucket/a//b", "a//b", "a/"},
      {u"s3://bucket//x", "/x", ""},
      {u"s3://bucket/a/../b/.", "a/../b/.", "a/../b/"},
      {u"s3://bucket/%2e%2E/100%25%3F%23", "../100%?#", "../"},
      {u"s3://bucket/a%20b+c", "a b+c", ""},
      {u"s3://bucket/\u00FC/\U0001F600", "\xC3\xBC/\xF0\x9F\x98\x80", "\xC3\xBC/"},
  };
  for (const auto& row : cases) {
    const auto place = placeIn(root, StorageIRI(row.text));
    EXPECT_EQ(place.key, row.key);
    EXPECT_EQ(place.parentPrefix(), row.parent) << row.key;
    EXPECT_EQ(placeIn(root, locationOf(root, row.key + '/')).key, row.key) << "there and back";
    EXPECT_EQ(rootOf(place.location), root);
  }
}

TEST(PlaceTest, TakesKeysOfUpTo1024Bytes) {
  const auto place = [](std::size_t count) {
    return placeIn(root, StorageIRI(root, std::u16string(count, u'\u00FC')));
  };
  EXPECT_EQ(place(512).key.size(), 1024u);
  EXPECT_THROW(place(513), provider::Exception);
}

TEST(PlaceTest, RefusesWhatIsNoKeyInTheBucket) {
  const StorageIRI refused[] = {
      StorageIRI(u"file:///a"),           StorageIRI(u"s3:///a"),         StorageIRI(u"s3:/a"),
      StorageIRI(u"s3://other/a"),        StorageIRI(u"s3://Bucket/a"),   StorageIRI(u"s3://bucket/a?b"),
      StorageIRI(u"s3://bucket/a#b"),     StorageIRI(u"s3://u@bucket/a"), StorageIRI(u"s3://bucket:80/a"),
      StorageIRI(u"s3:s3://bucket/z!/a"), StorageIRI(root, u"a\xDCFF"),   StorageIRI(root, u"a\xD83D"),
  };
  for (const auto& location : refused)
    try {
      placeIn(root, location);
      ADD_FAILURE() << location;
    } catch (const provider::Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::InvalidLocation) << location;
      EXPECT_EQ(failure.getStorageIRI(), location);
      EXPECT_TRUE(failure.topExceptionContext());
    }
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail
