// Puts the example to the same checks as our own back ends.

#include "DictionaryProvider.h"

#include <foundation/storage/testing/Conformance.h>

// [conformance]
int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  using enum Capability;
  const auto makeEmptyFolder = [] {
    const example::provider::StorageIRI root(u"dictionary:///");
    const auto provider = std::make_shared<example::DictionaryProvider>();
    return std::make_shared<const example::provider::StorageItem>(provider, root);
  };
  return runConformance(argc, argv,
                        {{.name = "Dictionary",
                          .makeEmptyFolder = makeEmptyFolder,
                          .capabilities = {Write, Append, AtomicReplacement, ExclusiveCreation, AnyName}}});
}
// [conformance]
