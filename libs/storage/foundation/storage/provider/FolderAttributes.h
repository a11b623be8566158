#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/Question.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <functional>
#include <memory>
#include <utility>

namespace foundation::storage::provider {

/// What a provider knows of a folder. The flags may be lazy: a function given for one is called when it
/// is first asked for, and once it has answered never again, however many copies there are. What it throws, asking
/// throws, and the next one to ask calls it again.
///
/// Copies share one record: a flag found out through one is known to all, and a `with...` operation on
/// one changes all. Reading is safe from any number of threads; `with...` operations are for the back
/// end that builds the object, before it hands it out.
class FOUNDATION_EXPORT FolderAttributes {
 public:
  /// @param lastModified  UTC; `not_a_date_time` if it is not known
  /// @param writable      whether this process may change the entries of the folder, or a function that finds it out
  ///
  /// Hidden and symlink are false until set.
  /// @{
  FolderAttributes(const boost::posix_time::ptime& lastModified, bool writable);
  FolderAttributes(const boost::posix_time::ptime& lastModified, std::function<bool()> writable);
  /// @}
  /// The same for any callable; without it a captureless lambda could be taken for a truth value.
  template <Question Writable>
  FolderAttributes(const boost::posix_time::ptime& lastModified, Writable writable)
      : FolderAttributes(lastModified, std::function<bool()>(std::move(writable))) {}

  /// UTC; `not_a_date_time` if it is not known.
  boost::posix_time::ptime getLastModified() const;
  /// Whether listings for people leave it out; the rule is the store's.
  bool isHidden() const;
  /// Whether the entry itself is a link.
  bool isSymlink() const;
  /// Whether this process may change the entries of the folder.
  bool isWritable() const;

  /// Sets the flag, or the function that finds it out.
  /// @return this object
  /// @{
  FolderAttributes& withHiddenAttribute(bool hidden);
  FolderAttributes& withHiddenAttribute(std::function<bool()> hidden);
  FolderAttributes& withHiddenAttribute(Question auto hidden) {
    return withHiddenAttribute(std::function<bool()>(std::move(hidden)));
  }
  /// @}
  /// Sets the flag, or the function that finds it out.
  /// @return this object
  /// @{
  FolderAttributes& withSymlinkStatusAttribute(bool symlink);
  FolderAttributes& withSymlinkStatusAttribute(std::function<bool()> symlink);
  FolderAttributes& withSymlinkStatusAttribute(Question auto symlink) {
    return withSymlinkStatusAttribute(std::function<bool()>(std::move(symlink)));
  }
  /// @}

 private:
  struct Record;
  std::shared_ptr<Record> record_;
};

}  // namespace foundation::storage::provider
