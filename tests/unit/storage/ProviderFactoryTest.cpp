#include "support/MemoryProvider.h"
#include <foundation/storage/provider/ContainerProviderFactory.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/IReadOnlyProvider.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/testing/Together.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <stdexcept>

namespace foundation::storage::provider {
namespace {

using boost::property_tree::ptree;
using Log = std::vector<std::string>;

ptree tree(const std::string& value) {
  ptree options;
  options.put("option", value);
  return options;
}

/// What the providers and factories of a test do, in order, and which of it fails.
struct Record {
  void add(const std::string& line) {
    if (whenCalled)
      whenCalled();
    const std::scoped_lock lock(mutex);
    log.push_back(line);
    failIfAsked(line);
  }
  void failIfAsked(const std::string& line) const {
    if (failing.contains(line))
      throw std::runtime_error(line);
  }
  Log take() {
    const std::scoped_lock lock(mutex);
    return std::exchange(log, {});
  }

  std::mutex mutex;
  Log log;
  std::set<std::string> failing;
  std::function<void()> whenCalled;
};

class PlainProvider final : public test::BasicMemoryProvider<IReadOnlyProvider> {
 public:
  PlainProvider(std::shared_ptr<Record> record, std::string name)
      : record_(std::move(record)), name_(std::move(name)) {}

 private:
  void doShutdown() override { record_->add("shutdown " + name_); }

  std::shared_ptr<Record> record_;
  std::string name_;
};

/// Read-only stores have no options, so this one spells out what it does not need.
class OptionProvider final : public test::BasicMemoryProvider<IConfigurableProvider> {
 public:
  OptionProvider(std::shared_ptr<Record> record, std::string name)
      : record_(std::move(record)), name_(std::move(name)) {}

  bool isConfigured() const { return isConfigured_; }

 private:
  void doConfigure(ptree options) override {
    record_->add("configure " + name_ + " " + options.get<std::string>("option"));
    isConfigured_ = true;
  }
  void doShutdown() override { record_->add("shutdown " + name_); }
  void doCreateFile(const StorageIRI&) const override {}
  void doCreateFolder(const StorageIRI&) const override {}
  void doRemoveFile(const StorageIRI&) const override {}
  void doRemoveFolder(const StorageIRI&) const override {}
  void doMoveFile(const StorageIRI&, const StorageIRI&, const ReplacementPolicy&) const override {}
  void doMoveFolder(const StorageIRI&, const StorageIRI&, const ReplacementPolicy&) const override {}
  std::unique_ptr<ByteStream> doOpenStream(const StorageIRI&, const ByteStreamOpenOptions&) const override {
    return nullptr;
  }

  std::shared_ptr<Record> record_;
  std::string name_;
  std::atomic<bool> isConfigured_ = false;
};

/// What both kinds of factory make here: providers named by their input; a key is the location's first letter.
std::shared_ptr<IProvider> makeProvider(const std::shared_ptr<Record>& record, const StorageIRI& location) {
  const auto name = fl::i18n::to_string(location.getName());
  record->add("build " + name);
  if (name.starts_with("none"))
    return nullptr;
  if (name.starts_with("plain"))
    return std::make_shared<PlainProvider>(record, name);
  return std::make_shared<OptionProvider>(record, name);
}

StorageIRI makeKey(const std::shared_ptr<Record>& record, const StorageIRI& location) {
  record->failIfAsked("key " + fl::i18n::to_string(location.getName()));
  return StorageIRI(u"key:///" + location.getName().substr(0, 1));
}

class Physical final : public PhysicalProviderFactory {
 public:
  explicit Physical(std::shared_ptr<Record> record) : record_(std::move(record)) {}

 private:
  std::shared_ptr<IProvider> doBuildProvider(const StorageIRI& location) const override {
    return makeProvider(record_, location);
  }
  StorageIRI doGetKey(const StorageIRI& location) const override { return makeKey(record_, location); }

  std::shared_ptr<Record> record_;
};

class Container final : public ContainerProviderFactory {
 public:
  explicit Container(std::shared_ptr<Record> record) : record_(std::move(record)) {}

 private:
  std::shared_ptr<IProvider> doBuildProvider(const StorageItem& item) const override {
    return makeProvider(record_, item.getLocation());
  }
  StorageIRI doGetKey(const StorageItem& item) const override { return makeKey(record_, item.getLocation()); }

  std::shared_ptr<Record> record_;
};

StorageIRI at(const std::string& name) { return StorageIRI(u"s:///" + fl::i18n::to_ustring(name)); }

template <class Factory>
std::shared_ptr<IProvider> build(const Factory& factory, const std::string& name) {
  if constexpr (std::is_base_of_v<ContainerProviderFactory, Factory>)
    return factory.buildProvider(StorageItem(nullptr, at(name)));
  else
    return factory.buildProvider(at(name));
}

template <class Factory>
class ProviderFactories : public ::testing::Test {
 protected:
  const std::shared_ptr<Record> record_ = std::make_shared<Record>();
  Factory factory_{record_};
};

using Kinds = ::testing::Types<Physical, Container>;
TYPED_TEST_SUITE(ProviderFactories, Kinds, );

TYPED_TEST(ProviderFactories, ShareAProviderAsLongAsSomebodyHoldsIt) {
  auto first = build(this->factory_, "a1");
  EXPECT_EQ(build(this->factory_, "a2"), first);
  EXPECT_NE(build(this->factory_, "b1"), first);
  EXPECT_EQ(this->record_->take(), (Log{"build a1", "build b1"}));
  const std::weak_ptr<IProvider> watched = first;
  first.reset();
  EXPECT_TRUE(watched.expired()) << "the cache must not own it";
  const auto second = build(this->factory_, "a2");
  EXPECT_EQ(build(this->factory_, "a1"), second);
  EXPECT_EQ(this->record_->take(), Log{"build a2"}) << "built from the input, not from the key";
}

TYPED_TEST(ProviderFactories, HandOutWhatIsBuiltEvenIfItIsNothing) {
  EXPECT_EQ(build(this->factory_, "none"), nullptr);
  EXPECT_EQ(build(this->factory_, "none"), nullptr);
  EXPECT_EQ(this->record_->take(), (Log{"build none", "build none"}));
  this->factory_.configure(tree("x"));
  this->factory_.shutdownProvider();
}

TYPED_TEST(ProviderFactories, ConfigureTheLivingAndTheUnborn) {
  const auto b = build(this->factory_, "b");
  const auto plain = build(this->factory_, "plain");
  const auto a = build(this->factory_, "a");
  build(this->factory_, "dropped");
  this->factory_.configure({});
  this->record_->take();
  this->factory_.configure(tree("1"));
  EXPECT_EQ(this->record_->take(), (Log{"configure a 1", "configure b 1"}));
  const auto c = build(this->factory_, "c");
  const auto again = build(this->factory_, "c2");
  EXPECT_EQ(this->record_->take(), (Log{"build c", "configure c 1"}));
  this->factory_.configure({});
  EXPECT_EQ(this->record_->take(), Log{});
  const auto d = build(this->factory_, "d");
  EXPECT_EQ(this->record_->take(), Log{"build d"}) << "an empty configuration is none";
}

TYPED_TEST(ProviderFactories, ShareEverythingWithTheirCopies) {
  const auto copy = this->factory_;
  auto assigned = TypeParam(std::make_shared<Record>());
  assigned = copy;
  const auto a = build(this->factory_, "a");
  EXPECT_EQ(build(copy, "a"), a);
  EXPECT_EQ(build(assigned, "a"), a);
  assigned.configure(tree("1"));
  this->record_->take();
  const auto b = build(copy, "b");
  EXPECT_EQ(this->record_->take(), (Log{"build b", "configure b 1"}));
  copy.shutdownProvider();
  EXPECT_EQ(this->record_->take(), (Log{"shutdown a", "shutdown b"}));
  EXPECT_NE(build(this->factory_, "a"), a);
  EXPECT_EQ(this->record_->take(), (Log{"build a", "configure a 1"})) << "the configuration survives";
}

TYPED_TEST(ProviderFactories, StayAsTheyWereWhenSomethingFails) {
  this->factory_.configure(tree("1"));
  for (const auto* failing : {"key a", "build a", "configure a 1"}) {
    this->record_->failing = {failing};
    EXPECT_THROW(build(this->factory_, "a"), std::runtime_error) << failing;
  }
  this->record_->failing.clear();
  this->record_->take();
  const auto a = build(this->factory_, "a");
  const auto b = build(this->factory_, "b");
  const auto c = build(this->factory_, "c");
  EXPECT_EQ(this->record_->take().size(), 6u) << "no failed one was remembered";

  this->record_->failing = {"configure b 2"};
  EXPECT_THROW(this->factory_.configure(tree("2")), std::runtime_error);
  EXPECT_EQ(this->record_->take(), (Log{"configure a 2", "configure b 2"})) << "those after it stay as they were";
  const auto d = build(this->factory_, "d");
  EXPECT_EQ(this->record_->take(), (Log{"build d", "configure d 2"})) << "new ones get the new configuration";

  this->record_->failing = {"shutdown b"};
  EXPECT_THROW(this->factory_.shutdownProvider(), std::runtime_error);
  EXPECT_EQ(build(this->factory_, "a"), a) << "nothing was forgotten";
}

TYPED_TEST(ProviderFactories, CanBeUsedByAProviderThatIsConfiguredOrShutDown) {
  const auto a = build(this->factory_, "a");
  int asked = 0;
  this->record_->whenCalled = [&] { asked += build(this->factory_, "a") == a ? 1 : 0; };
  this->factory_.configure(tree("1"));
  this->factory_.shutdownProvider();
  this->record_->whenCalled = nullptr;
  EXPECT_EQ(asked, 2) << "neither waited for itself";
}

TYPED_TEST(ProviderFactories, BuildOnceThoughManyAsk) {
  for (int round = 0; round < 50; ++round) {
    std::vector<std::shared_ptr<IProvider>> got(8);
    testing::together(got.size(),
                      [&](std::size_t number) { got[number] = build(this->factory_, "a" + std::to_string(number)); });
    EXPECT_EQ(std::set<std::shared_ptr<IProvider>>(got.begin(), got.end()).size(), 1u);
    EXPECT_EQ(this->record_->take().size(), 1u);
  }
}

TYPED_TEST(ProviderFactories, NeverHandOutWhatIsNotConfigured) {
  this->factory_.configure(tree("0"));
  testing::together(6, [&](std::size_t number) {
    for (int round = 0; round < 200; ++round)
      if (number == 0)
        this->factory_.configure(tree(std::to_string(round)));
      else if (number == 1)
        this->factory_.shutdownProvider();
      else {
        const auto provider = build(this->factory_, number % 2 == 0 ? "a" : "b");
        EXPECT_TRUE(static_cast<const OptionProvider&>(*provider).isConfigured());
      }
  });
}

}  // namespace
}  // namespace foundation::storage::provider
