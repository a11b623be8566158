#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

namespace fstore {

/// Prints which stores and filters there are, and what each says that it can do.
void printBackEnds(const Session& session, Format format);

}  // namespace fstore
