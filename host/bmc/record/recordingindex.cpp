#include "host/bmc/record/recordingindex.h"

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <iterator>
#include <string_view>
#include <vector>

#include "host/base/sha256.h"
#include "host/bmc/record/checkedrecording.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

constexpr std::uint64_t kStartMask = (std::uint64_t{1} << 40U) - 1;
constexpr std::uint64_t kSizeMask = (std::uint64_t{1} << 23U) - 1;
static_assert(kLargestRecording <= kStartMask && kLongestRecordingLine <= kSizeMask);

void Add(TSha256& hash, std::string_view bytes) {
  hash.Add(std::to_string(bytes.size()) + ":");  // so that no two lists of parts read the same
  hash.Add(bytes);
}

void Add(TSha256& hash, const std::vector<std::uint8_t>& bytes) {
  Add(hash, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::vector<std::uint8_t> WithoutHandle(std::vector<std::uint8_t> request) {
  const std::size_t start = std::min(wire::StorageArea::kHandle, request.size());
  const std::size_t end = std::min(start + wire::StorageArea::kHandleSize, request.size());
  std::fill(request.begin() + static_cast<std::ptrdiff_t>(start), request.begin() + static_cast<std::ptrdiff_t>(end),
            std::uint8_t{0});
  while (!request.empty() && request.back() == 0) request.pop_back();
  return request;
}

}  // namespace

TAskedKey KeyOf(const TRecordedLine& line, const std::optional<std::string>& area) {
  TSha256 hash;
  hash.Add(std::to_string(static_cast<int>(line.kind)) + " " + std::to_string(line.node) + " " +
           std::to_string(line.command) + (area ? " area " : " "));
  Add(hash, area.value_or(std::string()));
  Add(hash, area ? WithoutHandle(line.request) : line.request);
  Add(hash, line.identifier);
  Add(hash, line.parameters);
  return boost::endian::load_big_u64(hash.Digest().data());
}

void TRecordingIndex::Add(TAskedKey key, const TLinePlace& place) {
  entries_.push_back({key, place.start & kStartMask, place.size & kSizeMask, 0});
}

void TRecordingIndex::Complete() {
  std::sort(entries_.begin(), entries_.end(), [](const TEntry& one, const TEntry& other) {
    return one.key != other.key ? one.key < other.key : one.start < other.start;
  });
}

std::optional<TLinePlace> TRecordingIndex::Next(TAskedKey key) {
  // Of the entries with a key, the used ones come first.
  const auto isBefore = [key](const TEntry& entry) {
    return entry.key < key || (entry.key == key && entry.isUsed != 0);
  };
  auto found = std::partition_point(entries_.begin(), entries_.end(), isBefore);
  if (found == entries_.end() || found->key != key) {
    if (found == entries_.begin() || std::prev(found)->key != key) return std::nullopt;
    --found;
  }
  found->isUsed = 1;
  return TLinePlace{found->start, found->size};
}

}  // namespace velhost
