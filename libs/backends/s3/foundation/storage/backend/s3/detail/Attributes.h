#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/provider/ExtendedAttributes.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <string>

namespace foundation::storage::backend::s3::detail {

/// What is known of a file. Everything counts as writable: who may write what, the store does not tell beforehand.
/// @param path          its last name decides whether the file is hidden
/// @param lastModified  any fraction of a second is dropped: listings have one, where objects by themselves have not
provider::FileAttributes attributesOfFile(const std::u16string& path, std::uint64_t size,
                                          const boost::posix_time::ptime& lastModified);

/// The same of a folder, which has no times.
provider::FolderAttributes attributesOfFolder(const std::u16string& path);

/// What else is stored with an object, by the names of the headers; all are `std::string`.
provider::ExtendedAttributes objectAttributes(const client::ObjectInfo& object);

/// What is known of the store.
provider::ExtendedAttributes bucketAttributes(const client::Client& client);

}  // namespace foundation::storage::backend::s3::detail
