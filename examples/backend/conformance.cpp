// Puts the example to the same checks as our own back ends.

#include "DictionaryProvider.h"

#include <foundation/storage/testing/Conformance.h>

#include <string>

// [conformance]
int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  using enum Capability;
  const auto makeEmptyFolder = [stores = 0]() mutable {
    const auto host = std::to_string(++stores);  // a store of its own
    const example::provider::StorageIRI root(u"dictionary://" + std::u16string(host.begin(), host.end()) + u"/");
    const auto provider = example::DictionaryProviderFactory().buildProvider(root);
    return std::make_shared<const example::provider::StorageItem>(provider, root);
  };
  return runConformance(argc, argv,
                        {{.name = "Dictionary",
                          .makeEmptyFolder = makeEmptyFolder,
                          .capabilities = {Write, Append, AtomicReplacement, ExclusiveCreation, AnyName}}});
}
// [conformance]
