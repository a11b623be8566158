#pragma once

#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/wire/Documents.h>

#include <cstdint>
#include <string>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {

/// Puts an object together of the parts of an upload.
class Completion {
 public:
  Completion(Exchange& exchange, std::string bucket, const UploadId& upload, const std::vector<wire::Part>& parts,
             std::uint64_t size, http::Interrupt& interrupt);

  void run(Existing existing);

 private:
  enum class If { Anything, Nothing };  ///< is there

  void create();
  Reply send(If what);
  bool isDone();

  Exchange& exchange_;
  std::string bucket_;
  const UploadId& upload_;
  const std::vector<wire::Part>& parts_;
  std::uint64_t size_;
  http::Interrupt& interrupt_;
};

}  // namespace foundation::storage::backend::s3::detail::client
