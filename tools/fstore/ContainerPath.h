#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fstore {

/// A place in containers, the outermost of which is named by a path: "zip:letters.zip!/may.txt", or, in an archive in
/// an archive, "zip:tar:old/all.tar!/letters.zip!/may.txt". Nothing in it is escaped; so a folder whose name ends in
/// '!' can only be named by a location.
struct ContainerPath {
  struct Step {
    std::string scheme;  ///< with the filters before it
    std::string path;    ///< in the container; begins with '/'
  };

  std::string file;         ///< the path of the outermost container
  std::vector<Step> steps;  ///< from there inwards
};

/// @param isContainer  whether a scheme, without filters and as it is written, is one of containers
/// @return none where `argument` does not begin with such a scheme, and where a location follows instead of a path
/// Throws `ArgumentFailure` where the path of a file, or a "!/", is missing.
std::optional<ContainerPath> parseContainerPath(std::string_view argument,
                                                const std::function<bool(std::string_view)>& isContainer);

}  // namespace fstore
