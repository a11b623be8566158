#include <foundation/storage/events/EntryType.h>
#include <foundation/storage/events/Kind.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/CaseModifier.h>
#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/ExistenceType.h>
#include <foundation/storage/provider/ExtendedFeature.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StreamClosePolicy.h>
#include <foundation/storage/provider/TransactionPolicy.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <vector>

namespace foundation::storage::provider {
namespace {

/// Writes the numbers from -1 up, each in a field of 44, and compares with `type` + text; the texts of
/// the first and the last number, which are no enumerators, are given whole. No text: nothing is
/// written, not even the fill.
template <class E>
void expectTexts(const std::string& type, const std::string& outside, const std::vector<std::string>& texts,
                 bool failsOutside = false) {
  for (int number = -1; number <= static_cast<int>(texts.size()); ++number) {
    SCOPED_TRACE(type + std::to_string(number));
    const bool isOutside = number < 0 || number == static_cast<int>(texts.size());
    const std::string name = isOutside ? "" : texts[static_cast<std::size_t>(number)];
    const std::string text = isOutside ? outside : name.empty() ? "" : type + name;
    std::ostringstream out;
    out << std::setfill('.') << std::setw(44) << static_cast<E>(number);
    EXPECT_EQ(out.str(), text.empty() ? "" : std::string(44 - text.size(), '.') + text);
    EXPECT_EQ(out.fail(), isOutside && failsOutside);
  }
}

TEST(Enumerations, WriteTheirTexts) {
  expectTexts<ByteStreamAccess>("ByteStreamAccess::", "ByteStreamAccess::ReadWrite", {"WriteOnly", "ReadWrite"});
  expectTexts<ByteStreamAppend>("ByteStreamAppend::", "ByteStreamAppend::Overwrite", {"Append", "Overwrite"});
  expectTexts<ByteStreamCreate>("ByteStreamCreate::", "ByteStreamCreate::NeverCreate", {"Create", "NeverCreate"});
  expectTexts<ByteStreamTruncate>("ByteStreamTruncate::", "ByteStreamTruncate::PreserveExisting",
                                  {"TruncateExisting", "PreserveExisting"});
  expectTexts<CaseModifier>("CaseModifier::", "", {"None", "Sensitive", "InSensitive"});
  expectTexts<ErrorCode>("ErrorCode::", "Unhandled ErrorCode",
                         {"FolderNotEmpty", "InvalidLocation", "PermissionDenied", "ResourceAlreadyExists",
                          "ResourceNotFound", "FileTooLarge", "ResourceInUse", "ReadOnlyProvider", "NoSpaceLeft",
                          "IOError", "InternalError", "UnsupportedOperation", "Unknown"});
  expectTexts<ExistenceType>("", "", {"AsFile", "AsFolder", "AsNeither"}, true);
  expectTexts<ExistenceTypeExtended>(
      "", "",
      {"RegularFile", "SpecialFile", "RegularFolder", "SymlinkToFile", "SymlinkToFolder", "BrokenSymlink", "None"});
  expectTexts<ExtendedFeature>("ExtendedFeature::", "", {"RecursiveFolderRemoval", "", "", "", "", ""});
  expectTexts<InterruptSignal>("InterruptSignal::", "", {"Continue", "Abort"});
  expectTexts<ReplacementPolicy>("ReplacementPolicy::", "", {"Preserve", "Overwrite", "Clobber", "", "NoClobber"});
  expectTexts<StreamClosePolicy>("StreamClosePolicy::", "", {"Commit", "Abort"});
  expectTexts<TransactionPolicy>("TransactionPolicy::", "", {"NonAtomic", "Atomic"});
  expectTexts<TransactionStatus>("TransactionStatus::", "", {"Completed", "Aborted"});
}

// Back ends and stored settings hold these numbers.
TEST(Enumerations, KeepTheirNumbers) {
  EXPECT_EQ(static_cast<int>(ErrorCode::IOError), 9);
  EXPECT_EQ(static_cast<int>(ErrorCode::Unknown), 12);
  EXPECT_EQ(static_cast<int>(ReplacementPolicy::NoClobber), 4);
  EXPECT_EQ(static_cast<int>(ExtendedFeature::AtomicFileCopy), 5);
  EXPECT_EQ(static_cast<int>(ExistenceTypeExtended::None), 6);
  EXPECT_EQ(static_cast<int>(events::Kind::EntryRemoved), 4);
  EXPECT_EQ(static_cast<int>(events::EntryType::Folder), 1);
}

TEST(Enumerations, WriteOpenOptions) {
  std::ostringstream out;
  out << ByteStreamOpenOptions{} << '\n'
      << ByteStreamOpenOptions{ByteStreamAccess::ReadWrite, ByteStreamCreate::NeverCreate,
                               ByteStreamTruncate::PreserveExisting, ByteStreamAppend::Overwrite};
  EXPECT_EQ(out.str(),
            "ByteStreamOpenOptions: {ByteStreamAccess::WriteOnly, ByteStreamCreate::Create, "
            "ByteStreamTruncate::TruncateExisting, ByteStreamAppend::Append}\n"
            "ByteStreamOpenOptions: {ByteStreamAccess::ReadWrite, ByteStreamCreate::NeverCreate, "
            "ByteStreamTruncate::PreserveExisting, ByteStreamAppend::Overwrite}");
}

}  // namespace
}  // namespace foundation::storage::provider
