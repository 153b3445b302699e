// What a result says, in words: IPMI completion codes (IPMI 2.0, "Completion Codes"), how reads ended, what is missing,
// why instances were not delivered; and the lines that the formats `mof` and `cimxml` can only say in comments.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// The meaning of the code, in lower case. Codes without a meaning of their own are named by their range:
/// device-specific (0x01-0x7E), command-specific (0x80-0xBE), reserved otherwise.
std::string_view MeaningOfCompletionCode(std::uint8_t code);

/// "0xC3 timeout while processing command"; "lost: no answer" without a code.
std::string DescribeCompletionCode(std::optional<std::uint8_t> code);

/// "0xC3 timeout while processing command", "lost: no answer", "3 bytes received", "not sent: the run was stopped",
/// "not in the recording", "2 addresses answered".
std::string HowText(THow how);

/// Whether there was nothing to read, as opposed to a read that failed.
bool IsAbsent(const TMissing& missing);

/// "absent", or the words of HowText.
std::string WhyText(const TMissing& missing);

/// "0xABCDEF", "0xABCDEF, 0xABCDF0", "no address", "index 84", "offset 120"; empty if nothing is set.
std::string WhereText(const TWhere& where);

/// Safe text: "Log at 0xABCDF0: 0xCB requested sensor, data, or record not present".
std::string MissingText(const TMissing& missing);

/// The place in a key, without its class: "node0/instance2".
std::string_view PlaceInKey(std::string_view key);

/// Safe text: "KROSG_A: 2 of 24 registers were not read".
std::string ReasonText(const TReason& reason);

/// "0.012 s", "2 min 3.4 s", "1 h 2 min 3 s".
std::string ElapsedText(std::int64_t milliseconds);

/// "SIMULATED: sim:demo.toml, not a real service processor", as safe text.
std::string SimulatedText(const TSourceFacts& source);

/// "machine type 6203, Engineering Information Collector 1.0 (interface version 1.0)", as safe text.
std::string MachineText(const TResultHeader& header);

/// "failed: MESSAGE" if the reasons do not say why; otherwise only the status.
std::string StatusText(const TResultSummary& summary);

/// "15, 8 failed", "42, none failed".
std::string ExchangesText(const TResultSummary& summary);

enum class ELabels { kShown, kLeftOut };

/// Safe lines about the run: first of all that its source is simulated, if so; run, source, labels, machine type and
/// collector, schema.
std::vector<std::string> HeaderComments(const TResultHeader& header, ELabels labels);

/// Safe lines about an instance: its key, and a line for each thing that is missing.
std::vector<std::string> InstanceComments(const TInstanceFacts& facts);

/// Safe lines about the end: status, reasons, what was not read, exchanges, time.
std::vector<std::string> SummaryComments(const TResultSummary& summary);

}  // namespace velhost
