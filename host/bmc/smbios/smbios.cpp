#include "host/bmc/smbios/smbios.h"

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "host/base/digits.h"
#include "host/base/hosterror.h"

namespace velhost {

namespace {

using boost::endian::load_big_u16;
using boost::endian::load_little_u16;
using boost::endian::load_little_u32;
using TBytes = std::span<const std::uint8_t>;

// Offsets, sizes and types of the entry points and structures (DMTF DSP0134). Numbers are little-endian. Every
// structure is a formatted area, whose size its length byte gives, followed by a set of NUL-terminated strings that
// ends with one more NUL.

// Structure header.
constexpr std::size_t kType = 0;
constexpr std::size_t kLength = 1;
constexpr std::size_t kHandle = 2;
constexpr std::size_t kHeaderSize = kHandle + 2;
constexpr std::size_t kStringsEndSize = 2;  // an empty set is two NULs

// Structure types.
constexpr std::uint8_t kSystemInformation = 1;
constexpr std::uint8_t kIpmiDevice = 38;
constexpr std::uint8_t kEndOfTable = 127;

// System information: product name and serial number by their numbers, from 1, in the string set, 0 for none; and the
// UUID's 16 bytes.
constexpr std::size_t kProductName = 5;
constexpr std::size_t kSerialNumber = 7;
constexpr std::size_t kUuid = 8;

// Entry points, 32-bit and 64-bit: the anchor text, the version (major, minor) and the size of the structure table.
constexpr std::string_view kAnchor32 = "_SM_";
constexpr std::size_t kVersion32 = 0x06;
constexpr std::size_t kTableSize32 = 0x16;  // two bytes
constexpr std::string_view kAnchor64 = "_SM3_";
constexpr std::size_t kVersion64 = 0x07;
constexpr std::size_t kTableSize64 = 0x0C;  // four bytes, an upper limit
constexpr std::uint16_t kVersion26 = 0x0206;

static_assert(kHeaderSize == 4 && kProductName >= kHeaderSize);

struct TStructure {
  TBytes formatted;
  TBytes strings;  ///< with each string's NUL, without the one that ends the set
  std::size_t size;
};

std::string At(std::size_t offset, const char* what) {
  std::array<char, 32> place{};
  std::snprintf(place.data(), place.size(), "at offset 0x%zx: ", offset);
  return place.data() + std::string(what);
}

/// The offset after the two NULs that end the string set beginning at `from`; empty if they are missing. A set
/// without strings is two NULs.
std::optional<std::size_t> EndOfStrings(TBytes bytes, std::size_t from) {
  for (std::size_t i = from; i + kStringsEndSize <= bytes.size(); ++i) {
    if (bytes[i] == 0 && bytes[i + 1] == 0) return i + kStringsEndSize;
  }
  return std::nullopt;
}

/// The structure that `rest` begins with; if it is not whole, empty, and `defect` says why.
std::optional<TStructure> FirstStructure(TBytes rest, const char*& defect) {
  if (rest.size() < kHeaderSize) {
    defect = "a structure header needs 4 bytes, but the table ends before that";
    return std::nullopt;
  }
  const std::size_t length = rest[kLength];
  if (length < kHeaderSize) {
    defect = "the structure's length is less than its header's 4 bytes";
    return std::nullopt;
  }
  if (length > rest.size()) {
    defect = "the structure's length reaches beyond the end of the table";
    return std::nullopt;
  }
  const auto end = EndOfStrings(rest, length);
  if (!end) {
    defect = "the structure's strings are not terminated";
    return std::nullopt;
  }
  return TStructure{rest.first(length), rest.subspan(length, *end - 1 - length), *end};
}

/// String `number`, from 1; empty for 0 and past the last one.
std::string StringOf(const TStructure& structure, std::size_t number) {
  auto begin = structure.strings.begin();
  while (number > 0 && begin != structure.strings.end()) {
    const auto end = std::find(begin, structure.strings.end(), std::uint8_t{0});
    if (--number == 0) return {begin, end};
    if (end == structure.strings.end()) break;
    begin = end + 1;
  }
  return {};
}

/// The string whose number is at `offset`; empty if the structure is too short to have one.
std::string StringAt(const TStructure& structure, std::size_t offset) {
  return offset < structure.formatted.size() ? StringOf(structure, structure.formatted[offset]) : std::string();
}

/// Empty if it is not set, which is all zeros or all ones.
std::optional<TSmbiosUuid> UuidOf(const TStructure& structure) {
  TSmbiosUuid uuid{};
  if (structure.formatted.size() < kUuid + uuid.size()) return std::nullopt;
  std::copy_n(structure.formatted.begin() + kUuid, uuid.size(), uuid.begin());
  const bool isSet = std::any_of(uuid.begin(), uuid.end(), [&uuid](std::uint8_t byte) {
    return byte != uuid.front() || (byte != 0x00 && byte != 0xFF);
  });
  return isSet ? std::optional(uuid) : std::nullopt;
}

bool StartsWith(TBytes bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin());
}

}  // namespace

TSmbiosFacts ParseSmbiosTable(std::span<const std::uint8_t> table) {
  TSmbiosFacts facts;
  bool systemSeen = false;
  std::size_t offset = 0;
  while (offset < table.size()) {
    const char* defect = nullptr;
    const auto structure = FirstStructure(table.subspan(offset), defect);
    if (!structure) {
      facts.defect = At(offset, defect);
      break;
    }
    const std::uint8_t type = structure->formatted[kType];
    if (type == kEndOfTable) break;
    if (type == kIpmiDevice) facts.declaresIpmiDevice = true;
    if (type == kSystemInformation && !systemSeen) {
      systemSeen = true;
      facts.productName = StringAt(*structure, kProductName);
      facts.serialNumber = StringAt(*structure, kSerialNumber);
      facts.uuid = UuidOf(*structure);
    }
    offset += structure->size;
  }
  return facts;
}

std::optional<std::size_t> SmbiosTableSize(std::span<const std::uint8_t> entryPoint) {
  if (StartsWith(entryPoint, kAnchor64) && entryPoint.size() >= kTableSize64 + 4) {
    return load_little_u32(entryPoint.subspan(kTableSize64, 4).data());
  }
  if (StartsWith(entryPoint, kAnchor32) && entryPoint.size() >= kTableSize32 + 2) {
    return load_little_u16(entryPoint.subspan(kTableSize32, 2).data());
  }
  return std::nullopt;
}

std::string UuidText(TSmbiosUuid uuid, std::span<const std::uint8_t> entryPoint) {
  const std::size_t version = StartsWith(entryPoint, kAnchor64)   ? kVersion64
                              : StartsWith(entryPoint, kAnchor32) ? kVersion32
                                                                  : entryPoint.size();
  const bool isOld =
      version + 1 < entryPoint.size() && load_big_u16(entryPoint.subspan(version, 2).data()) < kVersion26;
  if (!isOld) {
    std::reverse(uuid.begin(), uuid.begin() + 4);
    std::reverse(uuid.begin() + 4, uuid.begin() + 6);
    std::reverse(uuid.begin() + 6, uuid.begin() + 8);
  }
  boost::uuids::uuid bytes{};
  std::copy(uuid.begin(), uuid.end(), bytes.begin());
  return to_string(bytes);
}

std::string MachineTypeOf(std::string_view productName) {
  const auto groups = DigitGroups(productName, 4);
  return groups.empty() ? std::string() : std::string(groups.front());
}

namespace {

constexpr std::size_t kMaxTable = 16U << 20;
constexpr std::size_t kMaxSmallFile = 64U << 10;

/// The content; if it cannot be read, an empty text, and `status` says why.
std::string ReadOr(ISourceReader& reader, const std::string& path, std::size_t limit, ESmbiosStatus& status) {
  try {
    return reader.Read(path, limit);
  } catch (const THostError& error) {
    status = error.Kind() == EFailure::kDenied   ? ESmbiosStatus::kDenied
             : error.Kind() == EFailure::kAbsent ? ESmbiosStatus::kAbsent
                                                 : ESmbiosStatus::kMalformed;
    return {};
  }
}

std::vector<std::uint8_t> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

TSmbiosFacts ParseWithEntryPoint(const std::vector<std::uint8_t>& entryPoint, const std::string& table) {
  const std::vector<std::uint8_t> bytes = Bytes(table);
  const std::size_t size = SmbiosTableSize(entryPoint).value_or(bytes.size());
  return ParseSmbiosTable(std::span(bytes).first(std::min(size, bytes.size())));
}

/// The kernel appends a line feed to the name.
std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

TSystemSmbios ReadSystemSmbios(ISourceReader& reader, const std::string& root) {
  const std::string tables = root + "/firmware/dmi/tables/";
  TSystemSmbios smbios;
  smbios.status = ESmbiosStatus::kRead;
  const std::string table = ReadOr(reader, tables + "DMI", kMaxTable, smbios.status);
  // A missing entry point does no harm: the kernel gives the table its true size.
  ESmbiosStatus ignored = ESmbiosStatus::kRead;
  if (smbios.status == ESmbiosStatus::kRead) {
    const std::vector<std::uint8_t> entryPoint =
        Bytes(ReadOr(reader, tables + "smbios_entry_point", kMaxSmallFile, ignored));
    smbios.facts = ParseWithEntryPoint(entryPoint, table);
    if (smbios.facts.uuid) smbios.uuid = UuidText(*smbios.facts.uuid, entryPoint);
    if (!smbios.facts.defect.empty()) smbios.status = ESmbiosStatus::kMalformed;
  } else {
    smbios.facts.productName = FirstLine(ReadOr(reader, root + "/class/dmi/id/product_name", kMaxSmallFile, ignored));
  }
  smbios.machineType = MachineTypeOf(smbios.facts.productName);
  return smbios;
}

}  // namespace velhost
