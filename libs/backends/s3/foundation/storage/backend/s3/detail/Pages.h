#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <string>
#include <vector>

// Beginnings of listings. A page that is not the last may hold less than was asked for, even nothing: some stores stop
// after having skipped much.

namespace foundation::storage::backend::s3::detail {

/// The first page that holds anything, or the last one. Asks nothing where no key is as long as the prefix.
wire::ListPage firstPage(const client::Client& client, const client::Client::Listing& listing);

/// Whether any key begins so.
bool anyBeginsWith(const client::Client& client, const std::string& prefix);

/// What there is of a folder: nothing, only the object that stands for it, or entries.
enum class FolderContent { Missing, OnlyMarker, Entries };
FolderContent contentOf(const client::Client& client, const std::string& prefix);

}  // namespace foundation::storage::backend::s3::detail
