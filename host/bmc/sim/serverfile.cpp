#include "host/bmc/sim/serverfile.h"

#include <malloc.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/bmc/sim/tomltable.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

using TBytes = std::vector<std::uint8_t>;

template <std::size_t N>
std::array<std::uint8_t, N> ToArray(const TBytes& bytes) {
  std::array<std::uint8_t, N> array{};
  std::copy_n(bytes.begin(), std::min(bytes.size(), N), array.begin());
  return array;
}

/// Reads the tables of one server file.
class TServerFileReader {
 public:
  TServerFileReader(const TTomlDocument& document, ISourceReader& reader, IDataFolder& folder)
      : document_(document), reader_(reader), folder_(folder), sizeInAll_(document.text.size()) {}

  TServerFile Read();

 private:
  void ReadDot(const TTomlTable& table);
  void ReadNode(const TTomlTable& table);
  void ReadRegister(const TTomlTable& table, TSimulatedNode& node);
  void ReadArea(const TTomlTable& table, TSimulatedNode& node);
  TStoredBytes BytesOrFile(const TTomlTable& table, std::string_view bytes, std::string_view file, std::size_t limit);
  TStoredBytes DataFile(const TTomlTable& table, const TTomlMember& member, std::size_t limit);
  TStoredBytes OpenDataFile(const TTomlTable& table, const TTomlMember& member, std::size_t limit);

  const TTomlDocument& document_;
  ISourceReader& reader_;
  IDataFolder& folder_;
  std::size_t sizeInAll_;
  std::map<std::string, TStoredBytes, std::less<>> dataFiles_;  // by name, so that a file named twice is opened once
  TServerFile server_;
  std::map<std::uint32_t, std::uint32_t> linesOfRegisters_;  // of the node being read
  std::set<std::string> namesOfAreas_;                       // of the node being read, cut to what a request carries
};

TServerFile TServerFileReader::Read() {
  const TTomlTable root(document_, document_.root, "a table");
  root.AllowOnly({"machine_type", "local_time", "unlisted_registers", "ipmi", "dot", "bmc_node", "fault"});
  root.Require("machine_type", "the machine type of the server, such as machine_type = \"6203\"");
  server_.machineType = *root.String("machine_type");
  if (const auto moment = root.Moment("local_time")) server_.localTime = TCIMDateTime::FromString(*moment);
  if (const auto unlisted = root.String("unlisted_registers")) {
    if (*unlisted != "absent" && *unlisted != "pattern") {
      root.Fail(root.Find("unlisted_registers")->value.place, "found " + Quoted(*unlisted) +
                                                                  " for \"unlisted_registers\", expected \"absent\" or "
                                                                  "\"pattern\"");
    }
    server_.patternRegisters = *unlisted == "pattern";
  }
  if (const auto ipmi = root.Table("ipmi")) {
    ipmi->AllowOnly({"driver_present"});
    server_.driverPresent = ipmi->Boolean("driver_present").value_or(true);
  }
  if (const auto dot = root.Table("dot")) ReadDot(*dot);
  root.ForEach("bmc_node", kMostNodes, [this](const TTomlTable& table) {
    reader_.CheckStop();
    ReadNode(table);
  });
  root.ForEach("fault", kMostTomlValues,
               [this](const TTomlTable& table) { server_.faults.push_back(ReadFault(table)); });
  return std::move(server_);
}

void TServerFileReader::ReadDot(const TTomlTable& table) {
  table.AllowOnly({"sp_comm", "service_processor"});
  server_.dot.emplace();
  server_.dot->communication = table.Boolean("sp_comm").value_or(true);
  table.ForEach("service_processor", kMostServiceProcessors, [this](const TTomlTable& processor) {
    processor.AllowOnly({"block", "block_file"});
    server_.dot->blocks.push_back(BytesOrFile(processor, "block", "block_file", kLargestBlockFile));
  });
}

void TServerFileReader::ReadNode(const TTomlTable& table) {
  table.AllowOnly({"timestamp", "register", "storage_area"});
  TSimulatedNode node;
  if (const auto timestamp = table.Bytes("timestamp", wire::RegisterRead::kTimestampSize)) {
    node.timestamp = ToArray<wire::RegisterRead::kTimestampSize>(*timestamp);
  }
  linesOfRegisters_.clear();
  namesOfAreas_.clear();
  table.ForEach("register", kMostTomlValues, [this, &node](const TTomlTable& entry) { ReadRegister(entry, node); });
  table.ForEach("storage_area", kMostAreas, [this, &node](const TTomlTable& area) { ReadArea(area, node); });
  server_.nodes.push_back(std::move(node));
}

void TServerFileReader::ReadRegister(const TTomlTable& table, TSimulatedNode& node) {
  table.AllowOnly({"chip", "address", "value", "header"});
  const auto chip = static_cast<std::uint8_t>(table.Integer("chip", 0, 0xFF).value_or(0));
  const TTomlMember& address = table.Require("address", "the register's address");
  table.Require("value", "the register's eight bytes, least significant first");
  const std::int64_t whole = *table.Integer("address", 0, std::numeric_limits<std::uint32_t>::max());
  const std::uint32_t key = TSimulatedNode::RegisterKey(chip, static_cast<std::uint32_t>(whole));
  const auto [line, isNew] = linesOfRegisters_.emplace(key, address.value.place.line);
  if (!isNew) {
    table.Fail(address.value.place, "found a register that line " + std::to_string(line->second) +
                                        " already has, expected each chip and address (its low 24 bits) once");
  }
  TSimulatedRegister& entry = node.registers[key];
  entry.value = ToArray<wire::RegisterRead::kValueSize>(*table.Bytes("value", wire::RegisterRead::kValueSize));
  if (const auto header = table.Bytes("header", wire::RegisterRead::kHeaderSize)) {
    entry.header = ToArray<wire::RegisterRead::kHeaderSize>(*header);
  }
}

void TServerFileReader::ReadArea(const TTomlTable& table, TSimulatedNode& node) {
  table.AllowOnly({"name", "data", "data_file", "size"});
  const TTomlMember& name = table.Require("name", "the storage area's name");
  TStorageArea area;
  area.name = *table.String("name");
  if (area.name.empty()) table.Fail(name.value.place, "found an empty name, expected the storage area's name");
  // A request carries no more than this, so longer names could not be told apart.
  const std::string sent = area.name.substr(0, wire::StorageArea::kNameSize);
  if (!namesOfAreas_.insert(sent).second) {
    table.Fail(name.value.place, "found a second storage area " + Quoted(sent) +
                                     ", expected each name (its first 25 bytes) once per node");
  }
  area.data = BytesOrFile(table, "data", "data_file", kLargestDataFile);
  using TSize = std::numeric_limits<std::int32_t>;
  const auto reported = table.Integer("size", TSize::min(), TSize::max());
  area.size = static_cast<std::int32_t>(reported.value_or(static_cast<std::int64_t>(area.data.Size())));
  node.areas.push_back(std::move(area));
}

TStoredBytes TServerFileReader::BytesOrFile(const TTomlTable& table, std::string_view bytes, std::string_view file,
                                            std::size_t limit) {
  const TTomlMember* named = table.Find(file);
  const std::string either = "either " + Quoted(bytes) + " or " + Quoted(file);
  if (named == nullptr) table.Require(bytes, either);
  if (named != nullptr && table.Find(bytes) != nullptr) table.Fail(named->place, "found both, expected " + either);
  return named == nullptr ? *table.Bytes(bytes, std::nullopt) : DataFile(table, *named, limit);
}

bool LeadsUp(const std::string& name) { return ("/" + name + "/").find("/../") != std::string::npos; }

TStoredBytes TServerFileReader::DataFile(const TTomlTable& table, const TTomlMember& member, std::size_t limit) {
  const std::string name = *table.String(member.name);
  if (name.empty() || name.find('\0') != std::string::npos) {
    table.Fail(member.value.place, "found " + Quoted(name) + ", expected a file name");
  }
  if (name.front() == '/' || LeadsUp(name)) {
    table.Fail(member.value.place, "found " + Quoted(name) + ", expected a file in this file's folder or below, by a " +
                                       "relative name without \"..\"");
  }
  const auto known = dataFiles_.find(name);
  if (known != dataFiles_.end() && known->second.Size() <= limit) return known->second;
  return dataFiles_.insert_or_assign(name, OpenDataFile(table, member, limit)).first->second;
}

TStoredBytes TServerFileReader::OpenDataFile(const TTomlTable& table, const TTomlMember& member, std::size_t limit) {
  if (dataFiles_.size() == kMostDataFiles) {
    table.Fail(member.value.place, "found more than " + std::to_string(kMostDataFiles) +
                                       " data files, expected at most " + std::to_string(kMostDataFiles));
  }
  TStoredBytes content;
  try {
    content = folder_.Open(*table.String(member.name), limit);
  } catch (const TEndedReading&) {
    throw;
  } catch (const THostError& error) {
    document_.Fail(member.value.place, error.what(), error.Kind());
  }
  sizeInAll_ += content.Size();
  if (sizeInAll_ > kLargestServerInAll) {
    table.Fail(member.value.place, "found " + std::to_string(sizeInAll_) +
                                       " bytes in this file and its data files up to here, expected at most " +
                                       std::to_string(kLargestServerInAll));
  }
  server_.dataFiles.push_back(document_.file.substr(0, document_.file.rfind('/') + 1) + *table.String(member.name));
  return content;
}

}  // namespace

TServerFile ReadServerFile(const std::string& path, ISourceReader& reader, IDataFolder& folder) {
  const auto document = ParseTomlDocument(path, reader.Read(path, kLargestServerFile));
  reader.CheckStop();
  return TServerFileReader(*document, reader, folder).Read();
}

TServerFile ReadServerFile(const std::string& path, ISourceReader& reader) {
  TDataFolder folder(path);
  TServerFile server = ReadServerFile(path, reader, folder);
  malloc_trim(0);  // leaves the parser's memory to the collection
  return server;
}

}  // namespace velhost
