// The text forms of all enumerations. They stand in logs and in exception texts that programs match,
// so they are written out in full.

#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/CaseModifier.h>
#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/ExistenceType.h>
#include <foundation/storage/provider/ExtendedFeature.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StreamClosePolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

#include <cstddef>
#include <ostream>

namespace foundation::storage::provider {
namespace {

/// The text of `value` in a table indexed by number, or null where the table has none.
template <class Enumeration, std::size_t N>
const char* textOf(Enumeration value, const char* const (&texts)[N]) {
  const auto number = static_cast<std::int64_t>(value);
  return number >= 0 && number < static_cast<std::int64_t>(N) ? texts[number] : nullptr;
}

std::ostream& writeIfKnown(std::ostream& out, const char* text) { return text != nullptr ? out << text : out; }

/// Of two texts, the second stands for every number but 0.
template <class Enumeration>
std::ostream& writeFlag(std::ostream& out, Enumeration value, const char* zero, const char* other) {
  return out << (static_cast<std::int32_t>(value) == 0 ? zero : other);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const ByteStreamAccess& access) {
  return writeFlag(out, access, "ByteStreamAccess::WriteOnly", "ByteStreamAccess::ReadWrite");
}

std::ostream& operator<<(std::ostream& out, const ByteStreamCreate& create) {
  return writeFlag(out, create, "ByteStreamCreate::Create", "ByteStreamCreate::NeverCreate");
}

std::ostream& operator<<(std::ostream& out, const ByteStreamTruncate& truncate) {
  return writeFlag(out, truncate, "ByteStreamTruncate::TruncateExisting", "ByteStreamTruncate::PreserveExisting");
}

std::ostream& operator<<(std::ostream& out, const ByteStreamAppend& append) {
  return writeFlag(out, append, "ByteStreamAppend::Append", "ByteStreamAppend::Overwrite");
}

std::ostream& operator<<(std::ostream& out, const ByteStreamOpenOptions& options) {
  return out << "ByteStreamOpenOptions: {" << options.access << ", " << options.create << ", " << options.truncate
             << ", " << options.append << "}";
}

std::ostream& operator<<(std::ostream& out, CaseModifier modifier) {
  return writeIfKnown(out,
                      textOf(modifier, {"CaseModifier::None", "CaseModifier::Sensitive", "CaseModifier::InSensitive"}));
}

std::ostream& operator<<(std::ostream& out, const ErrorCode& code) {
  const char* text = textOf(
      code, {"ErrorCode::FolderNotEmpty", "ErrorCode::InvalidLocation", "ErrorCode::PermissionDenied",
             "ErrorCode::ResourceAlreadyExists", "ErrorCode::ResourceNotFound", "ErrorCode::FileTooLarge",
             "ErrorCode::ResourceInUse", "ErrorCode::ReadOnlyProvider", "ErrorCode::NoSpaceLeft", "ErrorCode::IOError",
             "ErrorCode::InternalError", "ErrorCode::UnsupportedOperation", "ErrorCode::Unknown"});
  return out << (text != nullptr ? text : "Unhandled ErrorCode");
}

std::ostream& operator<<(std::ostream& out, const ExistenceType& type) {
  const char* text = textOf(type, {"AsFile", "AsFolder", "AsNeither"});
  if (text == nullptr)
    out.setstate(std::ios_base::failbit);
  return writeIfKnown(out, text);
}

std::ostream& operator<<(std::ostream& out, const ExistenceTypeExtended& type) {
  return writeIfKnown(out, textOf(type, {"RegularFile", "SpecialFile", "RegularFolder", "SymlinkToFile",
                                         "SymlinkToFolder", "BrokenSymlink", "None"}));
}

std::ostream& operator<<(std::ostream& out, ExtendedFeature feature) {
  return writeIfKnown(out, textOf(feature, {"ExtendedFeature::RecursiveFolderRemoval"}));
}

std::ostream& operator<<(std::ostream& out, const InterruptSignal& signal) {
  return writeIfKnown(out, textOf(signal, {"InterruptSignal::Continue", "InterruptSignal::Abort"}));
}

std::ostream& operator<<(std::ostream& out, ReplacementPolicy policy) {
  return writeIfKnown(out, textOf(policy, {"ReplacementPolicy::Preserve", "ReplacementPolicy::Overwrite",
                                           "ReplacementPolicy::Clobber", nullptr, "ReplacementPolicy::NoClobber"}));
}

std::ostream& operator<<(std::ostream& out, const StreamClosePolicy& policy) {
  return writeIfKnown(out, textOf(policy, {"StreamClosePolicy::Commit", "StreamClosePolicy::Abort"}));
}

std::ostream& operator<<(std::ostream& out, const TransactionPolicy& policy) {
  return writeIfKnown(out, textOf(policy, {"TransactionPolicy::NonAtomic", "TransactionPolicy::Atomic"}));
}

std::ostream& operator<<(std::ostream& out, const TransactionStatus& status) {
  return writeIfKnown(out, textOf(status, {"TransactionStatus::Completed", "TransactionStatus::Aborted"}));
}

}  // namespace foundation::storage::provider
