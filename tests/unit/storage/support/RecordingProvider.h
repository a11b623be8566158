#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/extensions/IFlushableFilesystem.h>
#include <foundation/storage/provider/extensions/IInvalidatable.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <sstream>
#include <string>
#include <utility>

namespace foundation::storage::provider::test {

/// Overrides every virtual operation and does nothing but note its name and arguments, without "do".
class RecordingProvider final : public IConfigurableProvider,
                                public extensions::IFlushableFilesystem,
                                public extensions::IInvalidatable {
 public:
  std::string take() const { return std::exchange(calls_, {}); }

 private:
  using L = const StorageIRI&;
  using Policy = const ReplacementPolicy&;
  using Kinds = const std::vector<events::Kind>&;
  using Options = const ByteStreamOpenOptions&;
  using Text = std::u16string;
  using Millis = std::chrono::milliseconds;
  using FW = RecursiveFileWatching;
  using CP = RecursiveChangePolling;

  void doCreateFile(L a) const override { note("CreateFile", a); }
  void doCreateFolder(L a) const override { note("CreateFolder", a); }
  void doCreateFolderRecursive(L a) const override { note("CreateFolderRecursive", a); }
  bool doFileExists(L a) const override { return note("FileExists", a), true; }
  bool doFolderExists(L a) const override { return note("FolderExists", a), true; }
  void doRemoveFile(L a) const override { note("RemoveFile", a); }
  void doMoveFile(L a, L b, Policy p) const override { note("MoveFile", a, b, p); }
  void doRemoveFolder(L a) const override { note("RemoveFolder", a); }
  void doRemoveFolderRecursively(L a) const override { note("RemoveFolderRecursively", a); }
  void doMoveFolder(L a, L b, Policy p) const override { note("MoveFolder", a, b, p); }
  FileAttributes doGetFileAttributes(L a) const override { return note("GetFileAttributes", a), file_; }
  FolderAttributes doGetFolderAttributes(L a) const override { return note("GetFolderAttributes", a), folder_; }
  std::unique_ptr<ByteStream> doOpenStream(L a, Options o) const override { return note("OpenStream", a, o), nullptr; }
  std::unique_ptr<ByteStream> doOpenReadOnlyStream(L a) const override {
    return note("OpenReadOnlyStream", a), nullptr;
  }
  std::unique_ptr<TransactionalStream> doOpenTransactionalStream(L a, Options o) const override {
    return note("OpenTransactionalStream", a, o), nullptr;
  }
  std::unique_ptr<TransactionalStream> doOpenTransactionalStreamAtScratchLocation(L a, L b, Options o) const override {
    return note("OpenTransactionalStreamAtScratchLocation", a, b, o), nullptr;
  }
  Listing doListAll(L a) const override { return list("ListAll", a); }
  Listing doListAllWildcards(L a, Text w) const override { return list("ListAllWildcards", a, w); }
  Listing doListFiles(L a) const override { return list("ListFiles", a); }
  Listing doListFilesWildcards(L a, Text w) const override { return list("ListFilesWildcards", a, w); }
  Listing doListFolders(L a) const override { return list("ListFolders", a); }
  Listing doListFoldersWildcards(L a, Text w) const override { return list("ListFoldersWildcards", a, w); }
  Listing doListAllNamesOnly(L a) const override { return list("ListAllNamesOnly", a); }
  Listing doListAllNamesOnlyWildcards(L a, Text w) const override { return list("ListAllNamesOnlyWildcards", a, w); }
  Listing doListFoldersNamesOnly(L a) const override { return list("ListFoldersNamesOnly", a); }
  Listing doListFoldersNamesOnlyWildcards(L a, Text w) const override {
    return list("ListFoldersNamesOnlyWildcards", a, w);
  }
  Listing doListFilesNamesOnly(L a) const override { return list("ListFilesNamesOnly", a); }
  Listing doListFilesNamesOnlyWildcards(L a, Text w) const override {
    return list("ListFilesNamesOnlyWildcards", a, w);
  }
  Listing doListAllRecursive(L a) const override { return list("ListAllRecursive", a); }
  Listing doListAllRecursiveWildcards(L a, Text w) const override { return list("ListAllRecursiveWildcards", a, w); }
  Listing doListAllRecursiveNamesOnly(L a) const override { return list("ListAllRecursiveNamesOnly", a); }
  Listing doListAllRecursiveNamesOnlyWildcards(L a, Text w) const override {
    return list("ListAllRecursiveNamesOnlyWildcards", a, w);
  }
  void doCopyFile(L a, L b, Policy p) const override { note("CopyFile", a, b, p); }
  TransactionStatus doCopyFileAtomic(L a, L b, Policy p, const InterruptCallback& c) const override {
    return note("CopyFileAtomic", a, b, p, c), TransactionStatus::Aborted;
  }
  void doSetLastModified(L a, const boost::posix_time::ptime& t) const override { note("SetLastModified", a, t); }
  void doSetWritable(L a, bool w) const override { note("SetWritable", a, w); }
  void doPublishFolderEventsFor(L a, const ChangeCallback& c, Kinds k, FW r) const override {
    note("PublishFolderEventsFor", a, c, k, r);
  }
  void doPublishFileEventsFor(L a, const ChangeCallback& c, Kinds k) const override {
    note("PublishFileEventsFor", a, c, k);
  }
  void doStopPublishingEventsFor(L a) const override { note("StopPublishingEventsFor", a); }
  void doStartChangePollingMechanism(L a, const ChangeCallback& c, Kinds k, Millis m, CP r) const override {
    note("StartChangePollingMechanism", a, c, k, m, r);
  }
  void doStopChangePollingMechanism(L a) const override { note("StopChangePollingMechanism", a); }
  bool doHasFeature(const ExtendedFeature& f) const override { return note("HasFeature", f), true; }
  PathComparator doGetPathComparator(L a) const override { return note("GetPathComparator", a), nullptr; }
  StorageIRI doGetCanonicalLocation(L a) const override { return note("GetCanonicalLocation", a), a; }
  FilenameSensitivity doGetFilenameSensitivity(L a) const override { return note("GetFilenameSensitivity", a), fold_; }
  void doShutdown() override { note("Shutdown"); }
  ExistenceType doExists(L a) const override { return note("Exists", a), ExistenceType::AsFolder; }
  ExistenceTypeExtended doExistsExtended(L a) const override {
    return note("ExistsExtended", a), ExistenceTypeExtended::SpecialFile;
  }
  ExtendedAttributes doGetExtendedAttributes(L a) const override { return note("GetExtendedAttributes", a), more_; }
  ProviderStorageInfo doGetProviderStorageInfo(L a) const override { return note("GetProviderStorageInfo", a), info_; }
  void doTruncateToSize(L a, std::uint64_t s) const override { note("TruncateToSize", a, s); }
  ProviderCacheUsage doGetProviderCacheUsage(L a) const override { return note("GetProviderCacheUsage", a), usage_; }
  void doConfigure(boost::property_tree::ptree t) override { note("Configure", t.get<std::string>("key")); }
  void doFlushFilesystem() override { note("FlushFilesystem"); }
  void doInvalidate(L a) override { note("Invalidate", a); }

  template <class... Arguments>
  void note(const char* operation, const Arguments&... arguments) const {
    std::ostringstream out;
    out << operation;
    ((out << ' ', write(out, arguments)), ...);
    calls_ += (calls_.empty() ? "" : ", ") + out.str();
  }
  template <class... Arguments>
  Listing list(const char* operation, const Arguments&... arguments) const {
    return note(operation, arguments...), nullptr;
  }
  template <class T>
  static void write(std::ostream& out, const T& value) {
    if constexpr (std::is_same_v<T, std::u16string>)
      out << fl::i18n::to_string(value);
    else if constexpr (requires { value.time_of_day(); })
      out << value.time_of_day().total_seconds() << 's';
    else if constexpr (requires { value.count(); })
      out << value.count() << "ms";
    else if constexpr (requires {
                         value.size();
                         value.front();
                       } &&
                       !std::is_same_v<T, std::string>)
      out << value.size() << " kinds";
    else if constexpr (requires { value.target_type(); })
      out << (value ? "callback" : "no callback");
    else if constexpr (requires { out << value; })
      out << value;
    else
      out << static_cast<int>(value);
  }

  FileAttributes file_{7, {}, true};
  FolderAttributes folder_{{}, true};
  FilenameSensitivity fold_{false, true};
  ExtendedAttributes more_{{{"key", 1}}};
  ProviderStorageInfo info_ = ProviderStorageInfo().withSpaceOccupied(8);
  ProviderCacheUsage usage_ = ProviderCacheUsage().withSpaceAvailable(9);
  mutable std::string calls_;
};

}  // namespace foundation::storage::provider::test
