#include <foundation/storage/backend/s3/UnfinishedUploads.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/S3Provider.h>

#include <exception>

namespace foundation::storage::backend::s3 {

using boost::posix_time::ptime;
using detail::S3Provider;

namespace {

/// The uploads below a folder, those of one page after those of the other.
template <class Visit>
void visitUploads(const detail::client::Client& client, const detail::Place& folder, const Visit& visit) {
  detail::wire::UploadsPage page;
  do {
    page = detail::at(folder.location,
                      [&] { return client.listUploads(folder.prefix(), page.nextKeyMarker, page.nextUploadIdMarker); });
    for (const auto& upload : page.uploads)
      visit(upload);
  } while (!page.nextKeyMarker.empty());
}

/// No time is before or after one that is not known.
bool isBefore(const ptime& time, const ptime& limit) {
  return !time.is_not_a_date_time() && !limit.is_not_a_date_time() && time < limit;
}

}  // namespace

std::size_t abortUnfinishedUploads(const provider::StorageItem& folder, const ptime& olderThan) {
  const auto* provider = folder.findExtension<const S3Provider>();
  if (provider == nullptr)
    throw detail::refusal(provider::ErrorCode::UnsupportedOperation, folder.getLocation(), u"This is no object store");
  const auto client = provider->session()->client;
  std::size_t aborted = 0;
  std::exception_ptr firstFailure;
  visitUploads(client, provider->place(folder.getLocation()), [&](const detail::wire::OpenUpload& upload) {
    if (!isBefore(upload.initiated, olderThan))
      return;
    try {
      detail::at(detail::locationOf(provider->root(), upload.key), [&] {
        client.abortUpload({upload.key, upload.uploadId});
      });
      ++aborted;
    } catch (const provider::Exception&) {
      if (!firstFailure)
        firstFailure = std::current_exception();
    }
  });
  if (firstFailure)
    std::rethrow_exception(firstFailure);
  return aborted;
}

}  // namespace foundation::storage::backend::s3
