#include "host/bmc/smbios/systemsmbios.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/base/hosterror.h"

namespace velhost {

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
