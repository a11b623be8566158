#include <fstore/CopyAndMove.h>
#include <fstore/FileCopier.h>
#include <fstore/Progress.h>
#include <fstore/Refusal.h>
#include <fstore/StopSignal.h>
#include <fstore/Target.h>
#include <fstore/TreeCopy.h>

#include <optional>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::ExistenceTypeExtended;
using provider::ReplacementPolicy;
using provider::StorageItem;

namespace {

/// Does `work(source, place)` for each source.
template <class Work>
void forEachSource(const Session& session, std::vector<std::string> arguments, const Work& work) {
  const auto last = arguments.back();
  const auto destination = session.open(last);
  arguments.pop_back();
  if (!destination)
    return;
  session.report.attempt(destination->getLocation(), [&] {
    Target target(*destination, last, arguments.size());
    session.forEach(arguments, [&](const StorageItem& source, const std::string&) {
      session.inUse.use(*destination);  // however many sources there are
      work(source, target.placeFor(source));
    });
  });
}

/// Opening the destination would empty the source, if the two were one.
void requireElsewhere(const StorageItem& source, const StorageItem& place) {
  if (physicalLocation(source.getCanonicalLocation()) == physicalLocation(writtenLocation(place)))
    throw refusal(ErrorCode::InvalidLocation, place.getLocation(), u"A file cannot be copied onto itself");
}

/// An archive is a store of its own, whatever serves the others of its scheme.
void requireSameContainer(const StorageItem& source, const StorageItem& place) {
  const bool isInside = source.getLocation().hasInnerIRI();
  if (!isInside && !place.getLocation().hasInnerIRI())
    return;  // their stores know
  const auto containerOf = [](const StorageItem& item) {
    return physicalLocation(StorageItem(item, u"/").getCanonicalLocation());
  };
  if (isInside != place.getLocation().hasInnerIRI() || containerOf(source) != containerOf(place))
    throw refusal(ErrorCode::InvalidLocation, place.getLocation(),
                  u"It cannot be moved into or out of an archive; copy it, and remove it then");
}

void moveItem(const StorageItem& source, const StorageItem& place, ReplacementPolicy policy) {
  const auto type = source.existsExtended();
  if (type == ExistenceTypeExtended::None)
    (void)source.getFileAttributes();  // throws the store's own reason
  requireSameContainer(source, place);
  if (entryLocation(source) == entryLocation(place))
    throw refusal(ErrorCode::InvalidLocation, place.getLocation(), u"It cannot be moved onto itself");
  if (type == ExistenceTypeExtended::RegularFolder && contains(source.getCanonicalLocation(), writtenLocation(place)))
    throw refusal(ErrorCode::InvalidLocation, place.getLocation(), u"A folder cannot be moved into itself");
  if (type == ExistenceTypeExtended::RegularFolder || type == ExistenceTypeExtended::SymlinkToFolder)
    source.moveFolder(place.getLocation(), policy);
  else
    source.moveFile(place.getLocation(), policy);
}

}  // namespace

void copy(const Session& session, const std::vector<std::string>& arguments, const CopyOptions& options) {
  const StopSignal stop;
  const std::vector<std::string> sources(arguments.begin(), arguments.end() - 1);
  Progress progress(
      session.report, session.stores, sources,
      options.verbosity == Verbosity::Quiet ? Progress::Visibility::Hidden : Progress::Visibility::OnTerminal);
  FileCopier copier(session, options, stop, progress);
  forEachSource(session, arguments, [&](const StorageItem& source, const StorageItem& place) {
    if (copier.isStopped())
      return;
    if (source.folderExists())
      TreeCopy(session.report, copier).run(source, place);
    else
      copier.add(source, place, requireElsewhere, std::nullopt);
  });
  copier.finish();
  if (!session.inUse.handOver())
    copier.countNothing();
  copier.printSummary();
  if (stop.isAsked())
    session.report.endedBy(stop.number());
}

void move(const Session& session, std::vector<std::string> arguments, ReplacementPolicy policy) {
  const StopSignal stop;  // which waits for a move that is under way: to another file system it is a copy
  forEachSource(session, std::move(arguments), [&](const StorageItem& source, const StorageItem& place) {
    if (!stop.isAsked())
      moveItem(source, place, policy);
  });
  if (stop.isAsked())
    session.report.endedBy(stop.number());
}

}  // namespace fstore
