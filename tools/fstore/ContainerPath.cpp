#include <fstore/ContainerPath.h>
#include <fstore/Stores.h>

#include <algorithm>

namespace fstore {
namespace {

/// Takes the schemes of containers off the front, the innermost container's first.
std::vector<ContainerPath::Step> takeSchemes(std::string_view& text,
                                             const std::function<bool(std::string_view)>& isContainer) {
  std::vector<ContainerPath::Step> steps;
  while (isLocationText(text)) {
    const auto scheme = text.substr(0, text.find(':'));
    // npos + 1 is 0: without a filter it is the whole.
    if (!isContainer(scheme.substr(scheme.rfind('+') + 1)))
      break;
    steps.push_back({std::string(scheme), {}});
    text.remove_prefix(scheme.size() + 1);
  }
  return steps;
}

/// Takes the last "!/" and what follows it off the end.
std::string takePath(std::string_view& text) {
  const auto mark = text.rfind("!/");
  if (mark == std::string_view::npos || mark == 0)
    throw ArgumentFailure("A place in an archive is written as in zip:letters.zip!/may.txt, with a '!/' for each");
  const std::string path(text.substr(mark + 1));
  text = text.substr(0, mark);
  return path;
}

}  // namespace

std::optional<ContainerPath> parseContainerPath(std::string_view argument,
                                                const std::function<bool(std::string_view)>& isContainer) {
  auto steps = takeSchemes(argument, isContainer);
  if (steps.empty() || isLocationText(argument))
    return std::nullopt;
  for (auto& step : steps)
    step.path = takePath(argument);
  std::reverse(steps.begin(), steps.end());
  return ContainerPath{std::string(argument), std::move(steps)};
}

}  // namespace fstore
