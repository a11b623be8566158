// The test doubles are back ends, too: one that could fail, but does not; and one that has nothing but
// primitives, so that all the rest is what every back end inherits.

#include "MemoryStore.h"

#include <foundation/storage/testing/Conformance.h>
#include <foundation/storage/testing/FaultyProvider.h>
#include <foundation/storage/testing/PrimitiveProvider.h>

namespace foundation::storage::testing {
namespace {

std::shared_ptr<provider::IProvider> makeFaulty(std::optional<std::uint64_t> capacity = {}) {
  return std::make_shared<FaultyProvider>(makeMemoryProvider(capacity), std::make_shared<Faults>());
}

std::shared_ptr<provider::IProvider> makePrimitive(std::optional<std::uint64_t> capacity = {}) {
  return std::make_shared<PrimitiveProvider>(makeMemoryProvider(capacity));
}

std::vector<BackEnd> doubles() {
  using enum Capability;
  return {
      {.name = "Faulty",
       .makeEmptyFolder = [] { return rootOf(makeFaulty()); },
       .capabilities = {Write, Append, RandomAccess, Wildcards, RecursiveListing, RecursiveRemoval, AtomicCopy,
                        AtomicReplacement, ExclusiveCreation, SetLastModified, SetWritable, StorageInfo, LimitedSpace,
                        AnyName, HugeFiles},
       .makeSmallFolder = [](std::uint64_t bytes) { return rootOf(makeFaulty(bytes)); }},
      // No huge files: the inherited truncation copies what stays, gaps and all.
      {.name = "Primitive",
       .makeEmptyFolder = [] { return rootOf(makePrimitive()); },
       .capabilities = {Write, Append, RandomAccess, AtomicReplacement, ExclusiveCreation, LimitedSpace, AnyName},
       .deviations = {{"Location.CanonicalStandsForAllTexts",
                       "the inherited canonical location resolves dots, but keeps empty segments"}},
       .makeSmallFolder = [](std::uint64_t bytes) { return rootOf(makePrimitive(bytes)); }},
  };
}

}  // namespace
}  // namespace foundation::storage::testing

int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  return runConformance(argc, argv, doubles());
}
