#pragma once

#include <string>
#include <vector>

namespace fstore {

struct ListOptions {
  bool withDetails = false;
  bool withHidden = false;
  bool unsorted = false;  ///< as the store gives them, each printed as it comes
};

/// The operations that print what is known of files and folders. Each takes the command's arguments and
/// returns its exit code.
int list(const std::vector<std::string>& arguments, const ListOptions& options);
int describe(const std::vector<std::string>& arguments);

}  // namespace fstore
