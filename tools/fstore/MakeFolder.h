#pragma once

#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

enum class MissingParents {
  Fail,
  Create,  ///< and be content with a folder that exists
};

void makeFolders(const Session& session, const std::vector<std::string>& arguments, MissingParents parents);

}  // namespace fstore
