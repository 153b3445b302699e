// What the host knows of the collector: which classes it serves and how, which properties it reads,
// and how a register value is laid out. Used to list classes, check schemas, choose what to collect
// and print registers. Nothing of the plugin is compiled in: a test holds this profile against it.
#pragma once

#include <array>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"

namespace velhost::CollectorProfile {

enum class EPath { kNone, kR8, kJfr, kCapture };
/// "R8", "JFR", "FFDC"; "none" for a class that no path serves.
const char* NameOfPath(EPath path);

/// The base classes of the JFR path. A request names one of their subclasses.
inline constexpr std::array<std::string_view, 3> kJfrBaseClasses = {
    "KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"};
inline constexpr std::array<std::string_view, 4> kR8Classes = {
    "KROSG_T4_MEMCTL_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData", "KROSG_VO_MEMCTL_StatisticData",
    "KROSG_VO_PCIIOBRIDGE_StatisticData"};
inline constexpr std::string_view kCaptureClass = "KROSG_DCAPFile";
inline constexpr std::array<std::string_view, 8> kCaptureProperties = {
    "FileName",          "ErrRawData",           "MessageTimestamp", "SourceNode",
    "CreationClassName", "LogCreationClassName", "LogName",          "RecordID"};

// Qualifiers that steer the collection.
inline constexpr std::string_view kSupportedMachineTypes = "SupportedMachineTypes";
inline constexpr std::string_view kMaxInstanceCount = "MaxInstanceCount";
inline constexpr std::string_view kOffset = "Offset";
inline constexpr std::string_view kMaxLen = "MaxLen";
inline constexpr std::string_view kIndex = "Index";

/// Identification properties: never read as registers. The JFR path does read "ElementName".
bool IsSkippedName(EPath path, std::string_view propertyName);

/// Whether the collector would read the property as a register of the class on that path: declared
/// first in the class or its direct superclass, and not an identification property. The collector
/// cannot read a class without a superclass: its own search ends in an assertion there.
bool IsRegister(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path);
/// Those properties, in enumeration order.
std::vector<boost::shared_ptr<TPropertyDecl>> RegistersOf(const TCIMClass& cimClass, EPath path);

/// "MaxInstanceCount" as the collector reads it: the low 16 bits of a number or of a text that is one; 0 where there is
/// none, or something else.
unsigned int InstanceCountOf(const TCIMClass& cimClass);

/// The first subclass of a base class one of whose "SupportedMachineTypes" elements contains the
/// machine type; empty when there is none. A subclass without the qualifier matches nothing here,
/// while the collector's own search ends in an assertion.
boost::shared_ptr<TCIMClass> DelegateOf(const TNamespace& cimNamespace, std::string_view baseClass,
                                        const std::string& machineType);

/// The element of "SupportedMachineTypes" that contains the machine type; empty when there is none.
std::optional<std::string> MatchingElement(const TCIMClass& cimClass, const std::string& machineType);

struct TServedClass {
  boost::shared_ptr<TCIMClass> cimClass;
  EPath path = EPath::kNone;
  std::string baseClass;       ///< the JFR base class that the class stands below; empty on other paths
  bool served = false;         ///< whether a request for it on this machine type collects anything
  std::string servedBy;        ///< the matching qualifier element, where served by one
  unsigned int instances = 0;  ///< "MaxInstanceCount"; 0 where there is none
  std::size_t registers = 0;
};

/// The classes of a schema that a path exists for, in declaration order, the capture class last.
std::vector<TServedClass> CollectableClasses(const TNamespace& cimNamespace, const std::string& machineType);

/// The eight-byte family of machine types; all others, the empty one included, are labelled.
bool IsEightByteFamily(std::string_view machineType);

/// A register value of 14 bytes, taken apart for people.
struct TRegisterValue {
  std::array<std::uint8_t, 3> identification;  ///< R8: the address, most significant byte first
  std::vector<std::uint8_t> value;             ///< eight bytes, or four where the marker tail says so
};
/// Empty where the value is no array of 14 unsigned 8-bit values without nulls, or does not have the
/// path's layout.
std::optional<TRegisterValue> SplitRegisterValue(EPath path, const TCIMValue& value);

}  // namespace velhost::CollectorProfile
