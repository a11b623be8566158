#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <cstddef>
#include <string>
#include <vector>

namespace fstore {

struct TreeOptions {
  bool withHidden = false;
  bool foldersOnly = false;
  std::size_t maxDepth;
  Format format = Format::Text;
};

/// Draws what folders hold, to any depth, and counts it. In JSON, each entry says its depth, from 0 for the argument.
void printTree(const Session& session, const std::vector<std::string>& arguments, const TreeOptions& options);

}  // namespace fstore
