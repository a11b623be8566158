#include <fstore/Facts.h>
#include <fstore/Progress.h>
#include <fstore/Size.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace fstore {

using foundation::storage::provider::StorageItem;
using std::chrono::duration_cast;
using std::chrono::milliseconds;

namespace {

constexpr std::chrono::seconds patience(1);
constexpr milliseconds updatePeriod(100);
constexpr std::size_t longestBar = 40;

std::size_t terminalWidth() {
  winsize size{};
  const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : 80;
}

/// `M:SS`, with hours where there are any.
std::string durationText(std::uint64_t seconds) {
  const auto twoDigits = [](std::uint64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  const auto minutes = seconds / 60;
  return (minutes < 60 ? std::to_string(minutes) : std::to_string(minutes / 60) + ":" + twoDigits(minutes % 60)) + ":" +
         twoDigits(seconds % 60);
}

std::string bar(double part, std::size_t width) {
  const auto filled = std::min(width, static_cast<std::size_t>(part * static_cast<double>(width)));
  return "[" + std::string(filled, '#') + std::string(width - filled, ' ') + "] ";
}

}  // namespace

Progress::Progress(Report& report, const Stores& stores, const std::vector<std::string>& sources, Visibility visibility)
    : report_(report),
      stores_(stores),
      sources_(sources),
      isShown_(visibility == Visibility::OnTerminal && isatty(STDERR_FILENO) == 1),
      nextUpdate_(begin_ + patience) {}

Progress::~Progress() {
  isEnding_ = true;
  if (counting_.joinable())
    counting_.join();
  clear();
}

void Progress::add(std::uint64_t bytes) {
  done_ += bytes;
  if (!isShown_)
    return;
  const std::unique_lock lock(mutex_, std::try_to_lock);  // whoever has it shows the line, or has just done so
  const auto now = Clock::now();
  if (!lock || now < nextUpdate_)
    return;
  nextUpdate_ = now + updatePeriod;
  if (!counting_.joinable() && !isCounted_) {
    try {
      counting_ = std::thread([this] { count(); });
    } catch (const std::system_error&) {  // no thread to be had: it goes without
      isCounted_ = true;
    }
  }
  report_.showStatus(line(now - begin_));
}

void Progress::clear() {
  if (isShown_)
    report_.showStatus("");
}

/// What cannot be looked at is left out: copying will say why.
void Progress::count() {
  std::vector<StorageItem> folders;
  for (const auto& source : sources_) {
    try {
      const auto item = stores_.open(source);
      const auto entry = entryOf(item, u"");
      whole_ += sizeOf(entry).value_or(0);
      if (!entry.isFile())
        folders.push_back(item);
    } catch (const std::exception&) {
      continue;
    }
  }
  while (!folders.empty() && !isEnding_) {
    const auto folder = std::move(folders.back());
    folders.pop_back();
    countFolder(folder, folders);
  }
  isCounted_ = true;
}

void Progress::countFolder(const StorageItem& folder, std::vector<StorageItem>& folders) {
  try {
    for (const auto listing = folder.listAll(u""); !isEnding_ && listing->hasNext();) {
      listing->next();
      const auto entry = listing->current();
      whole_ += sizeOf(entry).value_or(0);
      if (!entry.isFile() && !isLink(entry).value_or(true))
        folders.emplace_back(folder, entry.getName());
    }
  } catch (const std::exception&) {  // left out, as count() says
  }
}

std::string Progress::line(Clock::duration elapsed) const {
  const auto passed =
      static_cast<std::uint64_t>(std::max<std::int64_t>(1, duration_cast<milliseconds>(elapsed).count()));
  const std::uint64_t done = done_;
  const std::uint64_t whole = isCounted_ ? whole_.load() : 0;
  const auto rate = done / passed * 1000 + done % passed * 1000 / passed;
  std::string text = shortSize(done);
  if (whole > 0)
    text += " of " + shortSize(std::max(done, whole));
  text += ", " + shortSize(rate) + "/s";
  if (whole > done && rate > 0)
    text += ", " + durationText((whole - done + rate - 1) / rate) + " left";
  // The last column stays free: some terminals begin a new line behind it.
  const auto width = terminalWidth() - 1;
  if (whole > 0 && width > text.size() + 10) {
    const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(whole));
    text = bar(part, std::min(longestBar, width - text.size() - 3)) + text;
  }
  return text.substr(0, width);
}

}  // namespace fstore
