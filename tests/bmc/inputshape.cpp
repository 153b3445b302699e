// Reads an input of a given shape, for tests that count instructions and memory: inputshape NAME SIZE. Without
// arguments, prints the names.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/base/hosterror.h"
#include "host/bmc/record/image.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/simulatedserver.h"
#include "tests/support/memoryreader.h"
#include "tests/support/readerfolder.h"

using namespace NKROVEL20;
using namespace velhost;
using tests::TMemoryReader;
using tests::TReaderFolder;

namespace {

const std::string kType = "machine_type = \"6203\"\n";
const char* const kValue = "value = \"01 02 03 04 05 06 07 08\"";

std::string Repeated(const std::string& text, int count) {
  std::string whole;
  for (int i = 0; i < count; ++i) whole += text;
  return whole;
}

/// `text` with each "@" replaced by the number.
std::string Numbered(const std::string& text, int count) {
  std::string whole;
  for (int i = 0; i < count; ++i) {
    const std::size_t at = text.find('@');
    whole += text.substr(0, at) + std::to_string(i) + text.substr(at + 1);
  }
  return whole;
}

std::string Registers(int size) {
  return kType + "[[bmc_node]]\n" + Numbered(std::string("[[bmc_node.register]]\naddress = @\n") + kValue + "\n", size);
}
std::string InlineRegisters(int size) {
  return kType + "[[bmc_node]]\nregister = [" + Numbered(std::string("{address=@,") + kValue + "},", size) + "]\n";
}
std::string Nodes(int size) { return kType + "bmc_node = [" + Repeated("{},", size) + "]"; }
std::string Headers(int size) { return kType + Repeated("[[a]]\n[a.b]\n[[a.c.d]]\n[a.c.d.e]\n", size); }
std::string DottedKeys(int size) { return kType + Repeated("[[a]]\nb.c.d = 1\nb.c.e = 1\nb.f = {g.h = 1}\n", size); }
std::string ManyKeys(int size) { return kType + Numbered("k@ = 1\n", size); }
std::string Areas(int size) {
  return kType + Repeated("[[bmc_node]]\n", 1) +
         Numbered("[[bmc_node.storage_area]]\nname = \"area@\"\ndata = \"00\"\n", size);
}
std::string Faults(int size) {
  return kType + "[[bmc_node]]\n" + Numbered("[[fault]]\non = \"ipmi\"\nnth = 1@\nlost = true\n", size);
}
std::string BadValue(int size) { return Registers(size) + "local_time = 2026-01-31T?2:34:56"; }
std::string LongBadValue(int size) { return kType + "x = " + Repeated("0", 100 * size) + "\n"; }
std::string Hex(int size) {
  return kType + "[[dot.service_processor]]\nblock = \"" + Repeated("0a ", 30 * size) + "\"\n";
}
std::string Escapes(int size) { return kType + "x = \"" + Repeated("\\u00e4\\n", 30 * size) + "\"\n"; }
std::string Lines(int size) { return kType + "x = \"\"\"\n" + Repeated("ab\"\"c\r\n\\  \n", 30 * size) + "\"\"\"\n"; }
std::string Comments(int size) { return kType + Repeated("  # \xC3\xA4\n", 30 * size); }
std::string LongLine(int size) { return kType + "x = [" + Repeated("'\xC3\xA4', 1.5, 12:34:56, ", size) + "]"; }

struct TServerShape {
  const char* name;
  std::string (*make)(int size);
};
constexpr TServerShape kServers[] = {{"registers", Registers},
                                     {"inline-registers", InlineRegisters},
                                     {"nodes", Nodes},
                                     {"headers", Headers},
                                     {"dotted-keys", DottedKeys},
                                     {"many-keys", ManyKeys},
                                     {"areas", Areas},
                                     {"faults", Faults},
                                     {"bad-value", BadValue},
                                     {"long-bad-value", LongBadValue},
                                     {"hex", Hex},
                                     {"escapes", Escapes},
                                     {"lines", Lines},
                                     {"comments", Comments},
                                     {"long-line", LongLine}};

TServerFile Read(const std::string& text) {
  TMemoryReader reader;
  reader.Add("s.toml", text);
  TReaderFolder folder("s.toml", reader);
  return ReadServerFile("s.toml", reader, folder);
}

// Makes as many exchanges as there are faults.
void Exchange(const TServerFile& server, int count) {
  TSimulatedServer simulator(server);
  TFaultInjector faults(simulator, server.faults);
  const TStopSignal never;
  const TIpmiRequest timestamp(0, 0x3A, 0, 0x6F, {});
  for (int i = 0; i < count; ++i) faults.SendIpmi(timestamp, never);
}

std::string Recording(int size) {
  return R"({"format":"velhost-recording","version":1,"machine_type":"","started":"","utc_offset_minutes":0,"discovery":)"
         R"({"bmc_nodes":1,"ipmi_driver":true,"dot_command":true,"sp_comm":true,"service_processors":1}})"
         "\n" +
         Repeated(R"({"kind":"clock","local_time":"2026-01-31T12:34:56+01:00"})"
                  "\n",
                  size);
}

void Replay(int size) {
  const std::string text = Recording(size);
  TReplay replay("r.jsonl", std::vector<std::uint8_t>(text.begin(), text.end()));
  for (int i = 0; i < size; ++i) static_cast<void>(replay.LocalTime());
}

// Every line asks the same, or gives another handle.
void UseImage(int size) {
  const std::string text =
      Recording(size) +
      Numbered(
          R"({"kind":"ipmi","node":@,"request":"01 20 2e 00 90 0d 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 61",)"
          R"("ok":true,"response":"01 20 2e 00 00 07 00 00 00 39 30 00 01","length":16,"us":0})"
          "\n",
          size);
  TImage image("r.jsonl", std::vector<std::uint8_t>(text.begin(), text.end()));
  for (int i = 0; i < size; ++i) static_cast<void>(image.LocalTime());
}

}  // namespace

int main(int argc, char** argv) {
  const int size = argc < 3 ? 0 : std::atoi(argv[2]);
  for (const TServerShape& shape : kServers) {
    if (argc < 3) std::puts(shape.name);
    if (argc < 3 || std::strcmp(argv[1], shape.name) != 0) continue;
    try {
      const TServerFile server = Read(shape.make(size));
      Exchange(server, size);
      std::printf("%zu nodes, %zu faults\n", server.nodes.size(), server.faults.size());
    } catch (const THostError& error) {
      std::printf("%.200s\n", error.what());
    }
  }
  if (argc < 3) std::puts("replay\nimage");
  if (argc >= 3 && std::strcmp(argv[1], "replay") == 0) Replay(size);
  if (argc >= 3 && std::strcmp(argv[1], "image") == 0) UseImage(size);
  return 0;
}
