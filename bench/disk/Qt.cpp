#include "disk/Peer.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QString>

#include <stdexcept>

namespace bench {
namespace {

constexpr auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

void check(bool wentWell, const QString& what) {
  if (!wentWell)
    throw std::runtime_error("Qt: " + what.toStdString());
}

Tally listNames(const std::string& folder) {
  Tally tally;
  for (QDirIterator entries(QString::fromStdString(folder), everything); entries.hasNext();) {
    entries.next();
    ++tally.entries;
    tally.nameLength += static_cast<std::size_t>(entries.fileName().size());
  }
  return tally;
}

Tally listAttributes(const std::string& folder) {
  Tally tally;
  for (QDirIterator entries(QString::fromStdString(folder), everything); entries.hasNext();) {
    const auto entry = entries.nextFileInfo();
    ++tally.entries;
    tally.nameLength += static_cast<std::size_t>(entry.fileName().size());
    if (entry.isFile())
      ++tally.files;
    tally.bytes += static_cast<std::uint64_t>(entry.size());
    tally.modified += entry.lastModified().toSecsSinceEpoch();
  }
  return tally;
}

Tally walk(const std::string& folder) {
  Tally tally;
  for (QDirIterator entries(QString::fromStdString(folder), everything, QDirIterator::Subdirectories);
       entries.hasNext();) {
    ++tally.entries;
    if (!entries.nextFileInfo().isDir())
      ++tally.files;
  }
  return tally;
}

std::vector<QString> texts(const Paths& paths) {
  std::vector<QString> all;
  for (const auto& path : paths)
    all.push_back(QString::fromStdString(path));
  return all;
}

Peer::Job copier(const Paths& from, const Paths& to) {
  return [from = texts(from), to = texts(to)](std::size_t number) {
    check(QFile::copy(from[number], to[number]), from[number]);
  };
}

std::function<void(const std::string&)> replacer(const std::string& folder, const std::string& name) {
  return [target = QString::fromStdString(folder + "/" + name)](const std::string& content) {
    QSaveFile file(target);
    check(file.open(QIODevice::WriteOnly), file.errorString());
    const auto size = static_cast<qint64>(content.size());
    check(file.write(content.data(), size) == size && file.commit(), file.errorString());
  };
}

std::size_t readAll(const std::string& path, char* buffer, std::size_t block) {
  QFile file(QString::fromStdString(path));
  check(file.open(QIODevice::ReadOnly), file.errorString());
  std::size_t total = 0;
  for (qint64 got; (got = file.read(buffer, static_cast<qint64>(block))) != 0;) {
    check(got > 0, file.errorString());
    total += static_cast<std::size_t>(got);
  }
  return total;
}

void removeTree(const std::string& folder) {
  check(QDir(QString::fromStdString(folder)).removeRecursively(), QString::fromStdString(folder));
}

// QSaveFile syncs the new file, whether one wants that or not.
const bool added = add({.name = "Qt",
                        .listNames = listNames,
                        .listAttributes = listAttributes,
                        .walk = walk,
                        .copy = copier,
                        .replace = replacer,
                        .replaceDurably = replacer,
                        .read = readAll,
                        .removeTree = removeTree,
                        .copySyncs = true,
                        .replaceSyncs = true});

}  // namespace
}  // namespace bench
