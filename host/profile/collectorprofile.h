// What the host knows about the collector: which classes it serves and how, which properties it reads, and
// how a register value is laid out. Used to list classes, check schemas, choose what to collect and print
// registers. Shares no code with the plugin; a test compares this profile with it.
#pragma once

#include <array>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/meaning/compile.h"
#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"

namespace velhost::CollectorProfile {

enum class EPath { kNone, kR8, kJfr, kCapture };
/// "R8", "JFR", "FFDC"; "none" for a class that no path serves.
const char* NameOfPath(EPath path);

/// The plugin that this profile describes, by the name that it gives itself.
inline constexpr std::string_view kCollectorName = "Engineering Information Collector";

/// The base classes of the JFR path. A request names one of their subclasses.
inline constexpr std::array<std::string_view, 3> kJfrBaseClasses = {
    "KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"};
inline constexpr std::array<std::string_view, 4> kR8Classes = {
    "KROSG_T4_MEMCTL_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData", "KROSG_VO_MEMCTL_StatisticData",
    "KROSG_VO_PCIIOBRIDGE_StatisticData"};
/// Those with several chips, numbered from 1. The others have chip 0 alone.
inline constexpr std::array<std::string_view, 2> kR8BridgeClasses = {"KROSG_T4_PCIIOBRIDGE_StatisticData",
                                                                     "KROSG_VO_PCIIOBRIDGE_StatisticData"};
inline constexpr std::string_view kCaptureClass = "KROSG_DCAPFile";
inline constexpr std::array<std::string_view, 8> kCaptureProperties = {
    "FileName",          "ErrRawData",           "MessageTimestamp", "SourceNode",
    "CreationClassName", "LogCreationClassName", "LogName",          "RecordID"};

// Qualifiers that control the collection.
inline constexpr std::string_view kSupportedMachineTypes = "SupportedMachineTypes";
inline constexpr std::string_view kMaxInstanceCount = "MaxInstanceCount";
inline constexpr std::string_view kOffset = "Offset";
inline constexpr std::string_view kMaxLen = "MaxLen";
inline constexpr std::string_view kIndex = "Index";

/// Whether the path skips the property as identification, whatever class declares it. The JFR path does not skip
/// "ElementName".
bool IsSkippedName(EPath path, std::string_view propertyName);

/// Whether the collector would read the property as a register of the class on that path: first declared in
/// the class or its direct superclass, and not an identification property. The collector cannot read a class
/// that has no superclass: its own search ends in an assertion.
bool IsRegister(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path);
/// Those properties, in enumeration order.
std::vector<boost::shared_ptr<TPropertyDecl>> RegistersOf(const TCIMClass& cimClass, EPath path);

/// Those properties as registers of 32 or 64 bits. On the JFR path all have 64.
std::vector<TRegisterShape> RegisterShapesOf(const TCIMClass& cimClass, EPath path);

/// "MaxInstanceCount" as the collector reads it: the low 16 bits of a number, or of a string that contains
/// one; 0 if there is none or it is anything else.
unsigned int InstanceCountOf(const TCIMClass& cimClass);

/// The first subclass of the base class with a "SupportedMachineTypes" element that contains the machine
/// type; empty if there is none. Here a subclass without the qualifier does not match; the collector's own
/// search ends in an assertion.
boost::shared_ptr<TCIMClass> DelegateOf(const TNamespace& cimNamespace, std::string_view baseClass,
                                        const std::string& machineType);

/// The element of "SupportedMachineTypes" that contains the machine type; empty if there is none.
std::optional<std::string> MatchingElement(const TCIMClass& cimClass, const std::string& machineType);

struct TServedClass {
  boost::shared_ptr<TCIMClass> cimClass;
  EPath path = EPath::kNone;
  std::string baseClass;       ///< the JFR base class from which the class descends; empty on other paths
  bool served = false;         ///< whether a request for it on this machine type collects anything
  std::string servedBy;        ///< the matching qualifier element, if one decided
  unsigned int instances = 0;  ///< "MaxInstanceCount"; 0 if there is none
  std::size_t registers = 0;
};

/// The classes of a schema that have a path, in declaration order, the capture class last.
std::vector<TServedClass> CollectableClasses(const TNamespace& cimNamespace, const std::string& machineType);

/// Whether registers of this machine type are raw eight-byte values. For all others, including the empty one,
/// they are labelled records.
bool IsEightByteFamily(std::string_view machineType);

/// A register value of 14 bytes, split for display.
struct TRegisterValue {
  std::array<std::uint8_t, 3> identification;  ///< R8: the address, most significant byte first
  std::vector<std::uint8_t> value;             ///< eight bytes, or four if the marker tail says so
};
/// Empty unless the value is an array of 14 unsigned 8-bit values without nulls and has the path's layout.
std::optional<TRegisterValue> SplitRegisterValue(EPath path, const TCIMValue& value);

}  // namespace velhost::CollectorProfile
