// The plan of a collection: which register reads and dot commands the collector will make, in which order, and which
// instances may result. Made before anything is sent, from the schema, the machine type, what discovery finds
// and the profile of the collector.
#pragma once

#include <array>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/meaning/classmeaning.h"
#include "host/meaning/compile.h"
#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

/// What a service processor says of itself, as far as the plan depends on it. The command fills it from TDiscovery,
/// which this layer does not know.
struct TPlanServer {
  int bmcNodes = 0;
  bool ipmiDriver = false;
  bool dotCommands = false;
  bool communicates = false;
  int serviceProcessors = 0;  ///< as discovered; the collector keeps the low eight bits
};

/// Whether the server has a way to the classes of a path: for register blocks, dot commands and a service processor,
/// and for the others a BMC node.
bool HasWay(CollectorProfile::EPath path, const TPlanServer& server);

/// One register property of a class, the same for all of its instances.
struct TPlannedRegister {
  std::size_t property = 0;              ///< index into TCIMClass::Properties()
  std::vector<std::uint32_t> addresses;  ///< R8: low 24 bits, in the order of "Offset"; empty on the JFR path
  std::uint16_t index = 0;               ///< JFR
  bool isNarrow = false;                 ///< R8: "MaxLen" is 4
};

enum class ETurn {
  kPlanned,  ///< every exchange is known
  kIdle,     ///< the collector does nothing for the class: no exchange, no instance, no exception
  kUnknown   ///< it may do anything: the schema check has an error for the class, or a register is not uint8[]
};

/// One class, however often it is asked for.
struct TPlannedClass {
  boost::shared_ptr<TCIMClass> cimClass;
  CollectorProfile::EPath path = CollectorProfile::EPath::kNone;
  ETurn turn = ETurn::kIdle;
  std::string whyNotServed;  ///< empty if this machine serves the class and has a way to it
  bool hasWay = false;
  bool isBridge = false;                         ///< R8: chips are numbered from 1; else the chip is 0
  unsigned instances = 0;                        ///< "MaxInstanceCount"; JFR: of each service processor
  std::vector<TPlannedRegister> registers;       ///< in enumeration order
  std::size_t readsOfInstance = 0;               ///< R8: number of addresses
  std::shared_ptr<const TClassMeaning> meaning;  ///< parallel to `registers`; null without any
  std::vector<TMeaningSlip> slips;               ///< what is wrong in the qualifiers that it was compiled from
};

/// A class being collected once.
struct TPlannedTurn {
  std::size_t planClass = 0;  ///< index into TPlan::classes
  unsigned time = 1;          ///< this is the class's n-th turn in the run
  bool isReached = true;      ///< false: the collector ends the request before it (after the capture class)
  bool isNamed = false;       ///< named on the command line, not chosen by default or pattern
};

/// One GetData call.
struct TPlannedRequest {
  std::vector<TPlannedTurn> turns;
};

struct TPlan {
  std::string machineType;
  bool isEightByte = false;
  TPlanServer server;
  unsigned blocks = 0;  ///< dot commands of each JFR turn: 0 without dot commands or communication
  std::vector<TPlannedClass> classes;
  std::vector<TPlannedRequest> requests;

  const TPlannedClass& ClassOf(const TPlannedTurn& turn) const { return classes[turn.planClass]; }
  /// Register reads or dot commands; none if the class is not planned.
  std::uint64_t ReadsOf(const TPlannedTurn& turn) const;
  /// The number of a request's first turn, counted over all requests.
  std::uint32_t FirstTurn(std::size_t request) const;
  std::uint64_t RegisterReads() const;  ///< over all turns that are reached
  std::uint64_t DotCommands() const;
  std::uint64_t Total() const { return RegisterReads() + DotCommands(); }
};

/// A class of a request.
struct TAskedClass {
  boost::shared_ptr<TCIMClass> cimClass;
  bool isNamed = false;
};

struct TPlanInput {
  const TNamespace& cimNamespace;
  std::string machineType;
  TPlanServer server;
  std::vector<std::vector<TAskedClass>> requests;       ///< the classes of each GetData call
  bool isCollector = true;                              ///< the plugin's name is the collector's
  std::function<bool(const TCIMClass&)> isCollectable;  ///< whether the schema check has no error for the class
};
TPlan MakePlan(const TPlanInput& input);

/// The class as it is collected on that path, on whatever machine: without what depends on the server. `isCollectable`
/// as in TPlanInput.
TPlannedClass PlanOfClass(const boost::shared_ptr<TCIMClass>& cimClass, CollectorProfile::EPath path,
                          bool isCollectable);

/// The storage areas that the collector reads, in its order.
inline constexpr std::array<std::string_view, 3> kCaptureAreas = {"cpu_err", "ioh_err", "zyn_err"};

/// Where an instance comes from.
struct TPlace {
  int owner = 0;   ///< BMC node or service processor, from 0
  int number = 0;  ///< R8: instance; JFR: bank; capture files: index into kCaptureAreas
};
/// "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance2", with "#2" from the second turn on.
std::string KeyOf(const TPlannedClass& planned, unsigned time, TPlace place);

}  // namespace velhost
