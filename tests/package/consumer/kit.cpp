// Puts a back end to the conformance kit, as its author would.
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/testing/Conformance.h>

#include <boost/property_tree/ptree.hpp>

using foundation::storage::backend::memory::MemoryProviderFactory;
using namespace foundation::storage;

namespace {

std::shared_ptr<const provider::StorageItem> makeStore(std::uint64_t capacity) {
  MemoryProviderFactory factory;
  boost::property_tree::ptree options;
  options.put("capacity", capacity);
  factory.configure(options);
  const provider::StorageIRI root(u"memory:///");
  return std::make_shared<const provider::StorageItem>(factory.buildProvider(root), root);
}

}  // namespace

int main(int argc, char** argv) {
  return testing::runConformance(argc, argv,
                                 {{.name = "Memory",
                                   .makeEmptyFolder = [] { return makeStore(std::uint64_t{1} << 40); },
                                   .capabilities = MemoryProviderFactory::capabilities(),
                                   .makeSmallFolder = makeStore}});
}
