// From texts to items, and what registries do with many threads and at their end.

#include "Stores.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/backend/s3/S3ProviderFactory.h>
#include <foundation/storage/registry/InvalidRegistrationException.h>
#include <foundation/storage/registry/ReadOnlyFilter.h>
#include <foundation/storage/testing/Together.h>

#include <atomic>

namespace foundation::storage::registry {
namespace {

using backend::archive::ArchiveFormat;
using backend::archive::ArchiveProviderFactory;
using backend::local::LocalProviderFactory;
using backend::memory::MemoryProviderFactory;
using backend::s3::S3ProviderFactory;

/// Names of all that the tests below know, and a file that can hold a container.
class ProviderRegistryTest : public ::testing::Test {
 protected:
  ProviderRegistryTest() { registry.addContainer(u"box", box); }

  const std::shared_ptr<BoxFactory> box = std::make_shared<BoxFactory>();
  ProviderRegistry registry = makeDefaultRegistry();
  const StorageItem holder = registry.item(u"memory:///o.box");
};

TEST_F(ProviderRegistryTest, FindsTheProviderOfAText) {
  holder.createFile();
  const auto count = std::u16string(16 * 9, u'x').size();
  std::u16string deepest = u"memory:///o.box";
  for (int i = 0; i < 64; ++i)
    deepest = u"box:" + deepest + u"!/i.box";
  std::u16string manyFilters;
  for (std::size_t i = 0; i < count / 9; ++i)
    manyFilters += u"readonly+";
  for (const auto& text :
       {std::u16string(u"file:///usr/lib"), std::u16string(u"FILE:///usr"), std::u16string(u"memory:/a%20b/%80"),
        std::u16string(u"memory://host/"), std::u16string(u"readonly+memory:///a"),
        std::u16string(u"ReadOnly+Memory:///a"), std::u16string(u"readonly+readonly+file:///usr"),
        manyFilters + u"memory:///", std::u16string(u"box:memory:///o.box!/a+b/%21"),
        std::u16string(u"readonly+box:memory:///o.box!/"), std::u16string(u"box:readonly+memory:///o.box!/x"),
        std::u16string(u"readonly+box:readonly+box:memory:///o.box!/i!/x"), deepest}) {
    SCOPED_TRACE(fl::i18n::to_string(text));
    const auto item = registry.item(text);
    EXPECT_EQ(item.getLocation().toString(), StorageIRI(text).toString());
    item.exists();
  }
}

TEST_F(ProviderRegistryTest, RefusesWhatNothingIsRegisteredFor) {
  holder.createFile();
  struct Case {
    std::u16string text;
    ErrorCode code;
    std::u16string location;  ///< where it differs
    std::u16string reason;
  };
  const std::u16string schemes = u"\" is not known; these are: archive, box, file, memory, s3, sevenzip, tar, zip";
  const std::u16string filters = u"\" is not known; these are: readonly";
  std::u16string tooMany;
  for (int i = 0; i < 17; ++i)
    tooMany += u"readonly+";
  const auto unknown = ErrorCode::UnsupportedOperation;
  for (const auto& [text, code, location, reason] : std::vector<Case>{
           {u"ftp://host/a", unknown, u"", u"The scheme \"ftp" + schemes},
           {u"readonly:///a", unknown, u"", u"The scheme \"readonly" + schemes},
           {u"readonly+ftp:///a", unknown, u"", u"The scheme \"ftp" + schemes},
           {u"readonly+:///a", unknown, u"", u"The scheme \"" + schemes},
           {u"crypt+memory:///a", unknown, u"", u"The filter \"crypt" + filters},
           {u"readonly+crypt+memory:///a", unknown, u"", u"The filter \"crypt" + filters},
           {u"readonly++memory:///a", unknown, u"", u"The filter \"" + filters},
           {u"file+memory:///a", unknown, u"", u"The filter \"file" + filters},
           {u"box:ftp:///a!/b", unknown, u"ftp:///a", u"The scheme \"ftp" + schemes},
           {u"box:crypt+memory:///a!/b", unknown, u"crypt+memory:///a", u"The filter \"crypt" + filters},
           {u"box:///a", ErrorCode::InvalidLocation, u"",
            u"The scheme is one of a container, whose own location has"
            u" to follow it"},
           {u"memory:memory:///a!/b", ErrorCode::InvalidLocation, u"", u"The scheme is not one of a container"},
           {tooMany + u"memory:///a", ErrorCode::InvalidLocation, u"", u"A scheme has at most 16 filters"}}) {
    SCOPED_TRACE(fl::i18n::to_string(text));
    const auto failure = thrownBy([&, &text = text] { registry.item(text); });
    EXPECT_EQ(failure.getErrorCode(), code);
    EXPECT_EQ(failure.getStorageIRI(), StorageIRI(location.empty() ? text : location));
    EXPECT_EQ(failure.getExceptionContextsString(), u"registry");
    const auto context = failure.topExceptionContext();
    ASSERT_TRUE(context);
    EXPECT_EQ(context->getExceptionContextInfo()->getProviderMessage(), reason);
  }
  const auto missing = thrownBy([&] { registry.item(u"box:memory:///none!/a"); });
  EXPECT_EQ(missing.getErrorCode(), ErrorCode::ResourceNotFound) << "a factory's own failure";
  EXPECT_ANY_THROW(registry.item(u"memory:///a b")) << "no location";
  EXPECT_ANY_THROW(registry.item(u"relative"));
}

TEST_F(ProviderRegistryTest, BuildsContainersOnTheItemsThatHoldThem) {
  holder.createFile();
  const auto entry = registry.item(u"box:readonly+memory:///o.box!/x");
  EXPECT_EQ(box->lastHolder(), registry.item(u"readonly+memory:///o.box"));
  const auto inner = registry.item(u"box:box:readonly+memory:///o.box!/x!/y");
  EXPECT_EQ(box->lastHolder(), entry);
}

TEST_F(ProviderRegistryTest, GivesOneProviderForOneText) {
  holder.createFile();
  for (const auto* text : {u"memory:///a", u"file:///a", u"readonly+memory:///a", u"readonly+readonly+memory:///a",
                           u"box:memory:///o.box!/a", u"readonly+box:readonly+memory:///o.box!/a"}) {
    SCOPED_TRACE(fl::i18n::to_string(text));
    const auto item = registry.item(text);
    const auto copy = registry;
    EXPECT_EQ(copy.item(text), item);
  }
  EXPECT_EQ(registry.item(u"READONLY+memory:///a"),
            StorageItem(registry.item(u"readonly+memory:///b"), StorageIRI(u"READONLY+memory:///a")));
  // Every provider of these is gone before the next one comes, maybe at the same address.
  for (int i = 0; i < 100; ++i) {
    const auto other = StorageIRI(u"memory://h" + std::u16string(1, static_cast<char16_t>(u'a' + i % 26)) + u"/f");
    registry.item(other).createFile();
    EXPECT_FALSE(registry.item(StorageIRI(u"readonly+" + other.toString())).fileExists()) << "a new, empty store";
  }
}

TEST_F(ProviderRegistryTest, RefusesNamesThatItCannotTellApart) {
  const auto nameRefused = [](const auto& add) -> std::u16string {
    try {
      add();
    } catch (const InvalidRegistrationException& refused) {
      return refused.getName();
    }
    return u"none";
  };
  const auto memory = std::make_shared<MemoryProviderFactory>();
  const auto filter = std::make_shared<ReadOnlyFilter>();
  for (const auto* name :
       {u"", u"1a", u"a b", u"a:", u"\u00E4", u"a+b", u"a+", u"memory", u"MEMORY", u"box", u"readonly"}) {
    SCOPED_TRACE(fl::i18n::to_string(name));
    EXPECT_EQ(nameRefused([&] { registry.addPhysical(name, memory); }), name);
    EXPECT_EQ(nameRefused([&] { registry.addContainer(name, box); }), name);
    EXPECT_EQ(nameRefused([&] { registry.addFilter(name, filter); }), name);
  }
  EXPECT_EQ(nameRefused([&] { registry.addPhysical(u"new", nullptr); }), u"new");
  EXPECT_EQ(nameRefused([&] { registry.addFilter(u"new", nullptr); }), u"new");
  registry.addPhysical(u"X-1.y", std::make_shared<MemoryProviderFactory>());
  using enum Role;
  EXPECT_EQ(registry.registrations(),
            (std::vector<Registration>{
                {u"archive", Container, ArchiveProviderFactory::capabilities(ArchiveFormat::Any)},
                {u"box", Container},
                {u"file", Physical, LocalProviderFactory::capabilities()},
                {u"memory", Physical, MemoryProviderFactory::capabilities()},
                {u"readonly", Filter},
                {u"s3", Physical, S3ProviderFactory::capabilities()},
                {u"sevenzip", Container, ArchiveProviderFactory::capabilities(ArchiveFormat::SevenZip)},
                {u"tar", Container, ArchiveProviderFactory::capabilities(ArchiveFormat::Tar)},
                {u"x-1.y", Physical},
                {u"zip", Container, ArchiveProviderFactory::capabilities(ArchiveFormat::Zip)}}));
}

TEST_F(ProviderRegistryTest, ShutsDownAllEvenIfOneFails) {
  class Recorded final : public PhysicalProviderFactory {
   public:
    explicit Recorded(std::shared_ptr<testing::Faults> faults) : faults_(std::move(faults)) {}

   private:
    std::shared_ptr<IProvider> doBuildProvider(const StorageIRI& location) const override {
      return std::make_shared<testing::FaultyProvider>(
          MemoryProviderFactory().buildProvider(StorageIRI(u"memory://" + location.getHost() + u"/")), faults_);
    }
    StorageIRI doGetKey(const StorageIRI& location) const override { return location; }
    std::shared_ptr<testing::Faults> faults_;
  };
  const auto first = std::make_shared<testing::Faults>();
  const auto last = std::make_shared<testing::Faults>();
  registry.addPhysical(u"a", std::make_shared<Recorded>(first));
  registry.addPhysical(u"z", std::make_shared<Recorded>(last));
  holder.createFile();
  const auto entry = registry.item(u"box:memory:///o.box!/x");
  const auto before = registry.item(u"z:///x");
  const auto other = registry.item(u"a:///x");
  box->faults->fail(testing::Operation::Shutdown, 1, ErrorCode::IOError);
  first->fail(testing::Operation::Shutdown, 1, ErrorCode::NoSpaceLeft);
  EXPECT_EQ(thrownBy([&] { registry.shutdown(); }).getErrorCode(), ErrorCode::IOError) << "the first failure";
  for (const auto& faults : {box->faults, first, last})
    EXPECT_EQ(faults->calls(), std::vector<std::string>{"Shutdown provider:///"});
  EXPECT_FALSE(registry.item(u"z:///x") == before) << "a new one";
}

TEST_F(ProviderRegistryTest, ShutsDownFiltersThatAreInUseFromTheOutside) {
  class Noted final : public FilterFactory {
   public:
    explicit Noted(std::vector<std::u16string>& ended) : ended_(ended) {}

   private:
    std::shared_ptr<IProvider> doBuildProvider(std::shared_ptr<IProvider> inner,
                                               const std::u16string& prefix) const override {
      const auto faults = std::make_shared<testing::Faults>();
      faults->delay(testing::Operation::Shutdown, 1, [this, prefix] { ended_.push_back(prefix); });
      return std::make_shared<testing::FaultyProvider>(std::move(inner), faults);
    }
    std::vector<std::u16string>& ended_;
  };
  std::vector<std::u16string> ended;
  for (const auto* prefix : {u"a", u"z"})
    registry.addFilter(prefix, std::make_shared<Noted>(ended));
  const auto held = registry.item(u"z+a+memory:///x");
  registry.item(u"a+memory://gone/x");
  registry.shutdown();
  EXPECT_EQ(ended, (std::vector<std::u16string>{u"z", u"a"}));
  EXPECT_FALSE(registry.item(u"z+a+memory:///x") == held) << "a new one";
}

TEST_F(ProviderRegistryTest, ServesManyThreadsAtOnce) {
  holder.createFile();
  const auto held = registry.item(u"readonly+memory:///o.box");
  std::atomic<int> same = 0;
  boost::property_tree::ptree options;
  options.put("memory.capacity", 1000);
  testing::together(8, [&](std::size_t number) {
    for (int i = 0; i < 100; ++i) {
      if (number == 0)
        registry.addPhysical(u"x" + fl::i18n::to_ustring(std::to_string(i)), std::make_shared<MemoryProviderFactory>());
      else if (number == 1)
        registry.configure(options);
      else if (number == 2)
        registry.registrations();
      same += registry.item(u"readonly+memory:///o.box") == held;
      // Nobody holds these for long, so that they are built again and again, by several threads at once.
      EXPECT_FALSE(registry.item(u"readonly+readonly+memory://many/a").fileExists());
      EXPECT_TRUE(registry.item(u"readonly+box:memory:///o.box!/a").fileExists());
    }
  });
  EXPECT_EQ(same, 800);
  EXPECT_EQ(registry.registrations().size(), 109u);
  EXPECT_EQ(holder.getProviderStorageInfo().getStorageCapacity(), 1000u);
}

}  // namespace
}  // namespace foundation::storage::registry
