// Four lines: a location, a name, and two more locations to compare with.

#include "Input.h"
#include "laws/LocationLaws.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace foundation;
  fuzz::Input input(data, size);
  const auto location = laws::located(input.line());
  if (!location)
    return 0;
  laws::checkLocation(*location);
  auto name = input.line();
  std::erase_if(name, [](char16_t unit) { return unit == u'/' || unit == 0; });
  if (!name.empty() && location->hasPath())
    laws::checkChild(*location, name);
  const auto second = laws::located(input.line());
  const auto third = laws::located(input.line());
  if (second)
    laws::checkRelativePath(*location, *second);
  if (second && third)
    laws::checkComparison(*location, *second, *third);
  return 0;
}
