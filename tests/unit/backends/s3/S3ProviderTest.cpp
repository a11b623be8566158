#include "support/http/FakeObjectStore.h"

#include <foundation/storage/backend/s3/S3ProviderFactory.h>
#include <foundation/storage/backend/s3/UnfinishedUploads.h>
#include <foundation/storage/backend/s3/detail/Configuration.h>
#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/support/InvalidOptionException.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/InvalidateProvider.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace foundation::storage::backend::s3 {
namespace {

using provider::ErrorCode;
using provider::ReplacementPolicy;
using provider::StorageIRI;
using provider::StorageItem;
using storage::testing::http::FakeObjectStore;
using storage::testing::http::ScriptedServer;
using storage::testing::http::StoreTraits;
using Names = std::vector<std::string>;

const StorageIRI root(u"s3://bucket/");

/// A bucket in memory, and providers of it.
class Bucket {
 public:
  explicit Bucket(StoreTraits traits = {}) : store(std::move(traits)) {}

  boost::property_tree::ptree options() const {
    boost::property_tree::ptree tree;
    tree.put("endpoint", server.url());
    tree.put("region", "us-east-1");
    tree.put("access-key", "testkey");
    tree.put("secret-key", "any");
    return tree;
  }
  /// By a provider of its own, which knows nothing yet.
  StorageItem item(const std::string& key) const {
    S3ProviderFactory factory;
    factory.configure(options());
    const auto location = detail::locationOf(root, key);
    return {factory.buildProvider(location), location};
  }
  /// What was asked of the store since then.
  Names since(std::size_t begin) const {
    const auto all = store.operations();
    return {all.begin() + static_cast<std::ptrdiff_t>(begin), all.end()};
  }

  FakeObjectStore store;
  ScriptedServer server{store.handler()};
};

StorageItem sibling(const StorageItem& item, const std::string& key) { return {item, detail::locationOf(root, key)}; }

void write(const StorageItem& file, const std::string& bytes) {
  const auto stream = file.openStream({});
  for (std::size_t done = 0; done < bytes.size();)
    done +=
        static_cast<std::size_t>(stream->write(bytes.data() + done, static_cast<std::int64_t>(bytes.size() - done)));
  stream->close();
}

std::string read(const StorageItem& file) {
  const auto stream = file.openReadOnlyStream();
  std::string bytes(100, '\0');
  const auto count = stream->read(bytes.data(), 100);
  return bytes.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count));
}

Names walk(provider::IProvider::Listing listing) {
  Names names;
  while (listing->hasNext()) {
    listing->next();
    const auto entry = listing->current();
    names.push_back(std::string(entry.getName().begin(), entry.getName().end()) + (entry.isFile() ? "" : "/"));
  }
  return names;
}

/// Whether it fails with that code and that location, and says why.
template <class Action>
void expectRefusal(ErrorCode code, const std::string& key, const Action& action) {
  try {
    action();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const provider::Exception& failure) {
    EXPECT_EQ(failure.getErrorCode(), code) << failure.what();
    EXPECT_EQ(failure.getStorageIRI(), detail::locationOf(root, key));
    EXPECT_TRUE(failure.topExceptionContext()) << failure.what();
  }
}

TEST(S3ProviderTest, AsksNoMoreThanItHasTo) {
  Bucket bucket;
  bucket.store.put("f/", "");
  bucket.store.put("f/a", "content");
  bucket.store.put("f/b", "content");
  bucket.store.put("t/u/v", "content");
  const struct {
    std::string key;
    std::function<void(const StorageItem&)> action;
    Names requests;
  } cases[] = {
      {"f/a", [](const auto& item) { EXPECT_TRUE(item.fileExists()); }, {"HeadObject"}},
      {"f", [](const auto& item) { EXPECT_TRUE(item.folderExists()); }, {"ListObjectsV2"}},
      {"f/a", [](const auto& item) { EXPECT_EQ(item.getFileAttributes().getSize(), 7u); }, {"HeadObject"}},
      {"f", [](const auto& item) { EXPECT_EQ(walk(item.listAll({})).size(), 2u); }, {"ListObjectsV2"}},
      {"f", [](const auto& item) { EXPECT_EQ(walk(item.listFilesNamesOnly({})).size(), 2u); }, {"ListObjectsV2"}},
      {"", [](const auto& item) { EXPECT_EQ(walk(item.listAllRecursive({})).size(), 6u); }, {"ListObjectsV2"}},
      {"f/a", [](const auto& item) { EXPECT_EQ(read(item), "content"); }, {"GetObject"}},
      {"f/c", [](const auto& item) { write(item, "x"); }, {"ListObjectsV2", "PutObject"}},
      {"f/c", [](const auto& item) { item.removeFile(); }, {"HeadObject", "DeleteObject"}},
      {"f/a",
       [](const auto& item) { item.copyFile(sibling(item, "f/c"), ReplacementPolicy::Overwrite); },
       {"HeadObject", "HeadObject", "ListObjectsV2", "CopyObject"}},
      {"f/c",
       [](const auto& item) { item.moveFile(detail::locationOf(root, "f/d"), ReplacementPolicy::Overwrite); },
       {"HeadObject", "ListObjectsV2", "CopyObject", "DeleteObject"}},
      {"t", [](const auto& item) { item.removeFolderRecursively(); }, {"ListObjectsV2", "DeleteObjects"}},
  };
  for (const auto& row : cases) {
    const auto before = bucket.store.operations().size();
    const auto item = bucket.item(row.key);
    EXPECT_EQ(bucket.store.operations().size(), before) << "opening a provider";
    sibling(item, "none").fileExists();  // with the first that is missing the bucket is asked, too
    const auto begin = bucket.store.operations().size();
    row.action(item);
    EXPECT_EQ(bucket.since(begin), row.requests) << row.key;
  }
}

TEST(S3ProviderTest, ManyFilesInAFolderCostOneRequestEach) {
  Bucket bucket;
  bucket.store.put("f/old", "");
  const auto folder = bucket.item("f");
  for (int number = 0; number < 20; ++number)
    write(sibling(folder, "f/" + std::to_string(number)), "x");
  EXPECT_EQ(bucket.store.operations().size(), 21u);
  sibling(folder, "f/sub").createFolder();
  EXPECT_ANY_THROW(write(sibling(folder, "f/sub"), "x")) << "what this program does itself, it knows";
  const auto begin = bucket.store.operations().size();
  write(sibling(folder, "f/sub/a"), "x");
  EXPECT_EQ(bucket.since(begin), Names{"PutObject"});
  invalidateProvider(folder);
  write(sibling(folder, "f/more"), "x");
  EXPECT_EQ(bucket.since(begin), (Names{"PutObject", "ListObjectsV2", "PutObject"}));
}

TEST(S3ProviderTest, KeysAreTakenAsTheyAre) {
  Bucket bucket;
  const auto item = bucket.item("x");
  for (const std::string folder : {"a/..", "a/."})
    sibling(item, folder).createFolderRecursive();
  for (const std::string key : {"..", ".", "a/../b", "a/./b", "/x", "a//b", " a+b%20c ", "100%", "what?x=1#2", "a\\b:c",
                                "*[x]'\"<&>", "\x01\n\x7F", "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80"}) {
    const auto file = sibling(item, key);
    write(file, "content of " + key);
    ASSERT_TRUE(bucket.store.get(key)) << key;
    EXPECT_EQ(bucket.store.get(key)->content, "content of " + key);
    EXPECT_EQ(read(file), "content of " + key);
    EXPECT_EQ(file.getFileAttributes().getSize(), 11 + key.size()) << key;
    EXPECT_EQ(file.getCanonicalLocation(), file.getLocation()) << key;
    file.moveFile(detail::locationOf(root, "a/moved"), ReplacementPolicy::NoClobber);
    sibling(item, "a/moved").moveFile(file.getLocation(), ReplacementPolicy::NoClobber);
    file.removeFile();
    EXPECT_FALSE(bucket.store.get(key)) << key;
  }
  const std::string longest(1024, 'k');
  write(sibling(item, longest), "x");
  EXPECT_TRUE(bucket.store.get(longest));
  expectRefusal(ErrorCode::InvalidLocation, std::string(1024, 'f'),
                [&] { sibling(item, std::string(1024, 'f')).createFolder(); });
  sibling(item, std::string(1023, 'f')).createFolder();
}

TEST(S3ProviderTest, AFolderIsThereAsLongAsAnythingLiesInItOrItWasMade) {
  Bucket bucket;
  bucket.store.put("implied/deep/file", "x");
  const auto item = bucket.item("implied/deep");
  write(StorageItem(item, u"other"), "x");
  for (const auto* name : {u"file", u"other"}) {
    EXPECT_TRUE(sibling(item, "implied").folderExists());
    StorageItem(item, name).removeFile();
  }
  EXPECT_FALSE(sibling(item, "implied").folderExists());
  expectRefusal(ErrorCode::ResourceNotFound, "implied/deep/new", [&] { write(StorageItem(item, u"new"), "x"); });

  item.createFolderRecursive();
  write(StorageItem(item, u"file"), "x");
  StorageItem(item, u"file").removeFile();
  EXPECT_TRUE(item.folderExists());
  EXPECT_EQ(bucket.store.keys(), (Names{"implied/", "implied/deep/"}));
}

TEST(S3ProviderTest, AFileAndAFolderMayHaveOneName) {
  Bucket bucket;
  bucket.store.put("f/a", "file");
  bucket.store.put("f/a/b", "inner");
  const auto item = bucket.item("f/a");
  EXPECT_EQ(item.exists(), provider::ExistenceType::AsFile);
  EXPECT_TRUE(item.folderExists());
  EXPECT_EQ(walk(item.getParent().listAllNamesOnly({})), (Names{"a/", "a"}));
  EXPECT_EQ(walk(item.listAllNamesOnly({})), Names{"b"});
  item.removeFile();
  EXPECT_EQ(bucket.store.keys(), Names{"f/a/b"});
}

TEST(S3ProviderTest, OfAFileAndAFolderOfOneNameEachIsTakenForItself) {
  const struct {
    std::function<void(const StorageItem&)> action;
    Names keys;
  } cases[] = {
      {[](const auto& item) { item.removeFile(); }, {"a/", "a/b"}},
      {[](const auto& item) { item.removeFolderRecursively(); }, {"a"}},
      {[](const auto& item) { item.moveFile(detail::locationOf(root, "c"), ReplacementPolicy::NoClobber); },
       {"a/", "a/b", "c"}},
      {[](const auto& item) { item.moveFolder(detail::locationOf(root, "c"), ReplacementPolicy::NoClobber); },
       {"a", "c/", "c/b"}},
      {[](const auto& item) { item.copyFile(sibling(item, "c"), ReplacementPolicy::NoClobber); },
       {"a", "a/", "a/b", "c"}},
      {[](const auto& item) { item.truncateToSize(0); }, {"a", "a/", "a/b"}},
      {[](const auto& item) {
         expectRefusal(ErrorCode::FolderNotEmpty, "a", [&] { item.removeFolder(); });
         expectRefusal(ErrorCode::InvalidLocation, "a", [&] { write(item, "x"); });
         expectRefusal(ErrorCode::ResourceAlreadyExists, "a", [&] { item.createFile(); });
         expectRefusal(ErrorCode::ResourceAlreadyExists, "a", [&] { item.createFolder(); });
       },
       {"a", "a/", "a/b"}},
  };
  for (const auto& row : cases) {
    Bucket bucket;
    for (const auto* key : {"a", "a/", "a/b"})
      bucket.store.put(key, "content");
    row.action(bucket.item("a"));
    EXPECT_EQ(bucket.store.keys(), row.keys);
  }
}

/// A page that the store ends after that many entries, though more follow.
storage::testing::http::Fault endingAfter(const std::string& most) {
  return [most](auto request, const auto& act) {
    const auto begin = request.target.find("max-keys=") + 9;
    request.target.replace(begin, request.target.find('&', begin) - begin, most);
    return act(request);
  };
}

TEST(S3ProviderTest, APageMayHoldLessThanThereIs) {
  const std::function<void(const StorageItem&)> actions[] = {
      [](const auto& item) { EXPECT_TRUE(item.folderExists()); },
      [](const auto& item) { EXPECT_EQ(walk(item.listAll({})), Names{"x"}); },
      [](const auto& item) { EXPECT_EQ(walk(item.listAll(u"x")), Names{"x"}); },
      [](const auto& item) { write(sibling(item, "f/x"), ""); },
      [](const auto& item) { expectRefusal(ErrorCode::FolderNotEmpty, "f", [&] { item.removeFolder(); }); },
      [](const auto& item) {
        const auto move = [&] { sibling(item, "g").moveFolder(item.getLocation(), ReplacementPolicy::Overwrite); };
        expectRefusal(ErrorCode::FolderNotEmpty, "f", move);
      },
      [](const auto& item) {
        item.removeFolderRecursively();
        EXPECT_FALSE(item.folderExists());
      },
  };
  for (const auto& action : actions) {
    Bucket bucket;
    for (const auto* key : {"f/", "f/x", "g/y"})
      bucket.store.put(key, "");
    bucket.store.failNext("ListObjectsV2", 1, endingAfter("0"));
    bucket.store.failNext("ListObjectsV2", 100, endingAfter("1"));
    action(bucket.item("f"));
    EXPECT_TRUE(bucket.store.get("g/y"));
  }
}

TEST(S3ProviderTest, ListsAPageAtATime) {
  Bucket bucket;
  for (int number = 0; number < 2500; ++number)
    bucket.store.put("f/" + std::to_string(1000 + number), "");
  const auto listing = bucket.item("f").listAll({});
  std::size_t entries = 0;
  for (; listing->hasNext(); ++entries) {
    EXPECT_EQ(bucket.store.count("ListObjectsV2"), entries / 1000 + 1);
    listing->next();
  }
  EXPECT_EQ(entries, 2500u);
  listing->reset();
  EXPECT_EQ(walk(bucket.item("").listAllRecursive({})).size(), 2501u) << "the folder once, though it is on each page";
}

TEST(S3ProviderTest, AListingGoesOnAfterAFailure) {
  Bucket bucket;
  for (int number = 0; number < 1001; ++number)
    bucket.store.put("f/" + std::to_string(number), "");
  auto listing = bucket.item("f").listAll({});
  for (int number = 0; number < 1000; ++number)
    listing->next();
  bucket.store.failNext("ListObjectsV2", 1, storage::testing::http::failing(403, "AccessDenied"));
  expectRefusal(ErrorCode::PermissionDenied, "f", [&] { listing->hasNext(); });
  EXPECT_EQ(walk(std::move(listing)).size(), 1u);
}

TEST(S3ProviderTest, AListingThatCannotBeResetStaysWhereItIs) {
  Bucket bucket;
  for (int number = 0; number < 1001; ++number)
    bucket.store.put("f/" + std::to_string(number), "");
  auto listing = bucket.item("f").listAll({});
  bucket.store.failNext("ListObjectsV2", 1, storage::testing::http::failing(403, "AccessDenied"));
  expectRefusal(ErrorCode::PermissionDenied, "f", [&] { listing->reset(); });
  EXPECT_EQ(walk(std::move(listing)).size(), 1001u);
}

TEST(S3ProviderTest, ListsTreesWithTheirFolders) {
  Bucket bucket;
  for (const auto* key : {"a", "a-b", "a/", "a/x", "a/y/", "a/z/w/v", "b//c", "b/d", "/e"})
    bucket.store.put(key, "");
  const auto item = bucket.item("");
  EXPECT_EQ(walk(item.listAllRecursive({})),
            (Names{"a", "a-b", "a/", "a/x", "a/y/", "a/z/", "a/z/w/", "a/z/w/v", "b/", "b/d"}));
  EXPECT_EQ(walk(item.listAllNamesOnly({})), (Names{"a/", "b/", "a", "a-b"}));
  EXPECT_EQ(walk(sibling(item, "a/z").listAllRecursive({})), (Names{"w/", "w/v"}));
  sibling(item, "b").removeFolderRecursively();
  EXPECT_FALSE(bucket.store.get("b//c")) << "entries without a name go along";
}

TEST(S3ProviderTest, AWildcardNarrowsWhatIsAskedFor) {
  Bucket bucket;
  for (const auto* key : {"f/", "f/abc", "f/abd/x", "f/ac", "f/b"})
    bucket.store.put(key, "");
  const struct {
    const char16_t* wildcard;
    std::string prefix;
    Names found;
  } cases[] = {
      {u"ab*", "prefix=f%2Fab", {"abd/", "abc"}},
      {u"*c", "prefix=f%2F", {"abc", "ac"}},
      {u"ac", "prefix=f%2Fac", {"ac"}},
      {u"a[c]", "prefix=f%2Fa", {"ac"}},
      {u"x?", "prefix=f%2Fx", {}},
  };
  for (const auto& row : cases) {
    const auto begin = bucket.server.requests().size();
    EXPECT_EQ(walk(bucket.item("f").listAll(row.wildcard)), row.found);
    EXPECT_TRUE(bucket.server.requests()[begin].target.ends_with(row.prefix)) << bucket.server.requests()[begin].target;
  }
  EXPECT_TRUE(walk(bucket.item("").listAll(u"x*")).empty());
  expectRefusal(ErrorCode::ResourceNotFound, "g", [&] { bucket.item("g").listAll(u"x*"); });
}

TEST(S3ProviderTest, ARecursiveRemovalTriesEverything) {
  Bucket bucket({.lockedKeys = {"f/a", "f/b c"}});
  for (const auto* key : {"f/a", "f/b c", "f/d", "g"})
    bucket.store.put(key, "");
  expectRefusal(ErrorCode::PermissionDenied, "f/a", [&] { bucket.item("f").removeFolderRecursively(); });
  EXPECT_EQ(bucket.store.keys(), (Names{"f/a", "f/b c", "g"}));
}

TEST(S3ProviderTest, AFolderIsMovedAsAWholeOrNotAtAll) {
  Bucket bucket;
  for (const auto* key : {"from/", "from/a", "from/b/c", "from//d", "to/"})
    bucket.store.put(key, key);
  const auto before = bucket.store.keys();
  const auto item = bucket.item("from");
  const auto to = detail::locationOf(root, "to");
  bucket.store.failNext("CopyObject", 2, storage::testing::http::damaging([](const auto& answer) { return answer; }));
  bucket.store.failNext("CopyObject", 1, [](const auto& request, const auto& act) {
    act(request);  // the copy is made, but nobody is told
    return storage::testing::http::failing(403, "AccessDenied")(request, act);
  });
  EXPECT_THROW(item.moveFolder(to, ReplacementPolicy::Overwrite), provider::Exception);
  EXPECT_EQ(bucket.store.keys(), before);
  item.moveFolder(to, ReplacementPolicy::Overwrite);
  EXPECT_EQ(bucket.store.keys(), (Names{"to/", "to//d", "to/a", "to/b/c"}));
  EXPECT_EQ(bucket.store.get("to/b/c")->content, "from/b/c");
}

TEST(S3ProviderTest, ACopyFailsWhereTheReasonLies) {
  Bucket bucket;
  bucket.store.put("f/a", "x");
  const auto file = bucket.item("f/a");
  const std::function<void()> actions[] = {
      [&] { file.copyFile(sibling(file, "b"), ReplacementPolicy::Overwrite); },
      [&] { file.moveFile(detail::locationOf(root, "b"), ReplacementPolicy::Overwrite); },
      [&] { sibling(file, "f").moveFolder(detail::locationOf(root, "b"), ReplacementPolicy::Overwrite); },
  };
  for (const auto& action : actions) {
    const auto to = &action == &actions[2] ? "b/a" : "b";
    bucket.store.failNext("CopyObject", 1, storage::testing::http::failing(404, "NoSuchKey"));
    expectRefusal(ErrorCode::ResourceNotFound, "f/a", action);
    bucket.store.failNext("CopyObject", 1, storage::testing::http::failing(403, "AccessDenied"));
    expectRefusal(ErrorCode::PermissionDenied, to, action);
  }
  EXPECT_EQ(bucket.store.keys(), Names{"f/a"});
}

TEST(S3ProviderTest, WhatACallbackThrowsEndsACopy) {
  Bucket bucket;
  bucket.store.put("a", "x");
  const auto file = bucket.item("a");
  const auto interrupt = []() -> provider::InterruptSignal { throw std::domain_error("enough"); };
  EXPECT_THROW(file.copyFile(sibling(file, "b"), {.transactionPolicy = provider::TransactionPolicy::Atomic,
                                                  .interruptCallback = interrupt}),
               std::domain_error);
  EXPECT_EQ(bucket.store.keys(), Names{"a"});
}

TEST(S3ProviderTest, StreamsAndListingsOutliveTheirProvider) {
  Bucket bucket;
  for (int number = 0; number < 1001; ++number)
    bucket.store.put("f/" + std::to_string(number), "content");
  auto item = std::make_unique<StorageItem>(bucket.item("f"));
  const auto output = sibling(*item, "f/new").openStream({});
  const auto input = sibling(*item, "f/1").openReadOnlyStream();
  auto listing = item->listAll({});
  item.reset();
  EXPECT_EQ(output->write("x", 1), 1);
  output->close();
  EXPECT_TRUE(bucket.store.get("f/new"));
  char byte = 0;
  EXPECT_EQ(input->read(&byte, 1), 1);
  EXPECT_GE(walk(std::move(listing)).size(), 1001u);
}

TEST(S3ProviderTest, TheBucketItselfStaysWhatItIs) {
  Bucket bucket;
  const auto item = bucket.item("");
  EXPECT_TRUE(item.folderExists());
  EXPECT_TRUE(walk(item.listAll({})).empty());
  expectRefusal(ErrorCode::ResourceAlreadyExists, "", [&] { item.createFolder(); });
  expectRefusal(ErrorCode::InvalidLocation, "", [&] { item.removeFolder(); });
  expectRefusal(ErrorCode::InvalidLocation, "", [&] { item.removeFolderRecursively(); });
  expectRefusal(ErrorCode::InvalidLocation, "", [&] { write(item, "x"); });
}

TEST(S3ProviderTest, InAMissingBucketNothingIs) {
  Bucket bucket;
  const StorageIRI location(u"s3://missing/a");
  S3ProviderFactory factory;
  factory.configure(bucket.options());
  const StorageItem item(factory.buildProvider(location), location);
  EXPECT_EQ(item.exists(), provider::ExistenceType::AsNeither);
  EXPECT_FALSE(item.getParent().folderExists());
  const std::function<void()> refused[] = {[&] { item.getFileAttributes(); }, [&] { write(item, "x"); },
                                           [&] { read(item); }, [&] { item.getParent().listAll({}); }};
  for (const auto& action : refused)
    try {
      action();
      ADD_FAILURE();
    } catch (const provider::Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::ResourceNotFound);
      EXPECT_EQ(failure.topExceptionContext()->getExceptionContextInfo()->getResponseErrorCode(), u"NoSuchBucket");
    }
}

TEST(S3ProviderTest, TellsWhatTheStoreSays) {
  Bucket bucket;
  bucket.store.put("f/a", "x");
  const auto item = bucket.item("f/a");
  EXPECT_EQ(item.getExtendedAttributes().getAttribute<std::string>("etag"), bucket.store.get("f/a")->eTag);
  EXPECT_EQ(sibling(item, "").getExtendedAttributes().getAttribute<std::string>("conditions"), "unknown");
  sibling(item, "new").createFile();
  EXPECT_EQ(sibling(item, "").getExtendedAttributes().getAttribute<std::string>("conditions"), "kept");
  const auto identity = [](const StorageItem& file) {
    return file.findExtension<provider::extensions::IFileIdentity>()->getFileIdentity(file.getLocation());
  };
  EXPECT_EQ(identity(item), identity(bucket.item("f/a")));
  EXPECT_NE(identity(item), identity(sibling(item, "new")));
  expectRefusal(ErrorCode::ResourceNotFound, "none", [&] { sibling(item, "none").getExtendedAttributes(); });
}

TEST(S3ProviderTest, RefusedOptionsChangeNothing) {
  Bucket bucket;
  bucket.store.put("a", "x");
  const auto item = bucket.item("a");
  auto options = bucket.options();
  options.put("endpoint", "http://127.0.0.1:1");
  options.put("no-such", "1");
  EXPECT_THROW(item.configure(options), support::InvalidOptionException);
  EXPECT_EQ(read(item), "x");
}

TEST(S3ProviderTest, AnEnvironmentThatMakesNoSenseIsAMatterOfTheFirstOperation) {
  Bucket bucket;
  setenv("AWS_ENDPOINT_URL_S3", "no URL", 1);
  const auto item = StorageItem(S3ProviderFactory().buildProvider(root), root);
  expectRefusal(ErrorCode::InvalidLocation, "", [&] { item.folderExists(); });
  item.configure(bucket.options());
  EXPECT_TRUE(item.folderExists());
  unsetenv("AWS_ENDPOINT_URL_S3");
}

TEST(S3ProviderTest, ShuttingDownEndsAllWaiting) {
  ScriptedServer server([](const auto&) { return storage::testing::http::ScriptedAnswer{}.stalledAtOnce(); });
  auto options = Bucket().options();
  options.put("endpoint", server.url());
  S3ProviderFactory factory;
  factory.configure(options);
  const StorageItem item(factory.buildProvider(root), detail::locationOf(root, "a"));
  auto waiting = std::async(std::launch::async,
                            [&] { expectRefusal(ErrorCode::IOError, "a", [&] { item.getFileAttributes(); }); });
  server.awaitRequests(1);
  item.shutdownProvider();
  waiting.get();
}

TEST(S3ProviderTest, ThrowsUnfinishedUploadsAway) {
  using boost::posix_time::hours;
  Bucket bucket;
  bucket.store.put("f/", "");
  const detail::client::Client client(detail::readConfiguration(bucket.options()), "bucket");
  for (const auto* key : {"f/a", "f", "f2/a"})
    client.beginUpload(key);
  const auto now = boost::posix_time::second_clock::universal_time();
  const auto other = bucket.item("f");
  EXPECT_EQ(abortUnfinishedUploads(other, now - hours(1)), 0u);
  EXPECT_EQ(abortUnfinishedUploads(other, {}), 0u);
  EXPECT_EQ(abortUnfinishedUploads(sibling(other, "g"), now + hours(1)), 0u);
  bucket.store.failNext("AbortMultipartUpload", 1, storage::testing::http::failing(403, "AccessDenied"));
  expectRefusal(ErrorCode::PermissionDenied, "f/a", [&] { abortUnfinishedUploads(other, now + hours(1)); });
  EXPECT_EQ(abortUnfinishedUploads(other, now + hours(1)), 1u);
  EXPECT_EQ(bucket.store.uploads(), (Names{"f", "f2/a"}));
  EXPECT_EQ(abortUnfinishedUploads(sibling(other, ""), now + hours(1)), 2u);
}

}  // namespace
}  // namespace foundation::storage::backend::s3
