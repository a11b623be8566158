#pragma once

/// Object stores over the S3 protocol.
namespace foundation::storage::backend::s3 {}
