#include "disk/Workloads.h"

#include <memory>
#include <stdexcept>
#include <vector>

namespace bench {
namespace {

Workload reading(const Place& place, std::uint64_t size, std::size_t block) {
  const auto path = bigFile(place.space, size);
  Workload workload{.title = "stream: " + std::to_string(size >> 20) + " MiB read by " + std::to_string(block >> 10) +
                             " KiB, " + place.title,
                    .unit = Unit::Bytes,
                    .amount = static_cast<double>(size)};
  const auto buffer = std::make_shared<std::vector<char>>(block);
  for (const auto& peer : peers()) {
    if (!peer.read)
      continue;
    const auto total = std::make_shared<std::size_t>();
    workload.entrants.push_back(
        {.name = peer.name,
         .run = [=, read = peer.read](std::size_t) { *total = read(path, buffer->data(), block); },
         .check =
             [total, size](std::size_t) {
               if (*total != size)
                 throw std::runtime_error("not all bytes were read");
             }});
  }
  return workload;
}

}  // namespace

std::vector<Offer> streams(const Place& place, const Scale& scale) {
  std::vector<Offer> offers;
  for (const std::size_t kibibytes : {std::size_t{64}, std::size_t{4}})
    offers.push_back({"stream-" + std::to_string(kibibytes) + "k" + (place.isMemory ? "-memory" : ""),
                      [&place, scale, kibibytes] { return reading(place, scale.big, kibibytes * 1024); }});
  return offers;
}

}  // namespace bench
