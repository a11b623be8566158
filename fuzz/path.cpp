// Three lines, each a path.

#include "Input.h"
#include "laws/PathLaws.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace foundation;
  using fl::filesystem::upath;
  fuzz::Input input(data, size);
  const upath a(input.line()), b(input.line()), c(input.line());
  laws::checkPath(a);
  laws::checkPathOrder(a, b, c);
  return 0;
}
