// Two lines: an IRI or reference, and a base.

#include "Input.h"
#include "laws/IRILaws.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace foundation;
  fuzz::Input input(data, size);
  const auto text = input.line();
  laws::checkDotSegments(text);
  if (const auto iri = laws::parsed(text)) {
    laws::checkIRI(*iri);
    if (const auto base = laws::parsed(input.line()))
      laws::checkReference(*iri, *base);
  }
  return 0;
}
