#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

struct ListingOptions {
  bool withDetails = false;
  bool withHidden = false;
  bool sorted = true;            ///< by code units; otherwise in the store's order, each entry as soon as it is known
  Format format = Format::Text;  ///< JSON always has the details
};

/// Lists the entries of folders, and files themselves. With several arguments the files come first, then
/// the folders, each under a line with its argument.
void list(const Session& session, const std::vector<std::string>& arguments, const ListingOptions& options);

}  // namespace fstore
