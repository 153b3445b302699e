#include "host/output/planwriter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/text.h"
#include "host/output/jsontext.h"
#include "host/output/planturns.h"
#include "host/output/resulttext.h"
#include "host/output/tablelayout.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

constexpr int kAddressBytes = 3;

// A turn that the collector reaches, with its number in the plan.
struct TReachedTurn {
  std::uint32_t number;
  const TPlannedClass& planned;
};

template <typename TVisit>
void ForEachTurn(const TPlan& plan, TVisit&& visit) {
  std::uint32_t number = 0;
  for (const TPlannedRequest& request : plan.requests) {
    for (const TPlannedTurn& turn : request.turns) {
      if (turn.isReached) visit(TReachedTurn{number, plan.ClassOf(turn)});
      ++number;
    }
  }
}

// The instances of a turn in the order in which they would be committed.
template <typename TVisit>
void ForEachPlace(const TPlan& plan, const TPlannedClass& planned, TVisit&& visit) {
  if (planned.turn != ETurn::kPlanned) return;
  const int instances = static_cast<int>(planned.instances);
  if (planned.path == EPath::kR8) {
    if (planned.registers.empty()) return;  // the collector makes no instance without a register
    for (int i = 0; i < instances; ++i) visit(TPlace{0, i});
  } else if (planned.path == EPath::kJfr) {
    // The collector keeps eight bits of the number.
    const int processors = plan.server.dotCommands ? static_cast<std::uint8_t>(plan.server.serviceProcessors) : 0;
    for (int s = 0; s < processors; ++s) {
      for (int i = 0; i < instances; ++i) visit(TPlace{s, i});
    }
  } else {
    for (int area = 0; area < static_cast<int>(kCaptureAreas.size()); ++area) {
      for (int node = 0; node < plan.server.bmcNodes; ++node) visit(TPlace{node, area});
    }
  }
}

template <typename TVisit>
void ForEachDotCommand(const TPlan& plan, TVisit&& visit) {
  ForEachTurn(plan, [&](const TReachedTurn& turn) {
    if (turn.planned.turn != ETurn::kPlanned || turn.planned.path != EPath::kJfr) return;
    for (unsigned s = 0; s < plan.blocks; ++s) visit(turn, s);
  });
}

template <typename TVisit>
void ForEachArea(const TPlan& plan, TVisit&& visit) {
  if (!plan.server.ipmiDriver) return;
  ForEachTurn(plan, [&](const TReachedTurn& turn) {
    if (turn.planned.path != EPath::kCapture) return;
    ForEachPlace(plan, turn.planned, [&](TPlace place) { visit(turn, place); });
  });
}

// Each read of one instance: a register of several addresses is read at each of them.
template <typename TVisit>
void ForEachRead(const TPlannedClass& planned, TVisit&& visit) {
  for (const TPlannedRegister& reg : planned.registers) {
    const std::string& property = planned.cimClass->Properties().at(reg.property)->Definition().name;
    TWhere where;
    if (planned.path == EPath::kJfr) {
      where.index = reg.index;
      visit(property, where);
    }
    for (const std::uint32_t address : reg.addresses) {
      where.address = address;
      visit(property, where);
    }
  }
}

// The JSON document. Its lists have a line for each entry.
class TPlanJson {
 public:
  TPlanJson(const TPlan& plan, ITextSink& sink) : plan_(plan), turns_(&plan), json_(sink) {}

  void Write() {
    json_.Raw("{");
    json_.Member("kind", "plan");
    json_.Raw(R"(,"format_version":2,)");
    json_.Member("machine_type", plan_.machineType);
    List("classes", [this] { ForEachTurn(plan_, [this](const TReachedTurn& turn) { Class(turn); }); });
    List("dot_commands", [this] {
      ForEachDotCommand(plan_, [this](const TReachedTurn& turn, unsigned processor) { DotCommand(turn, processor); });
    });
    List("areas",
         [this] { ForEachArea(plan_, [this](const TReachedTurn& turn, TPlace place) { Area(turn, place); }); });
    json_.Raw(R"(,"total":)");
    json_.Unsigned(plan_.Total());
    json_.Raw("}\n");
    json_.Flush();
  }

 private:
  void List(std::string_view name, const std::function<void()>& entries) {
    json_.Raw(",");
    json_.Name(name);
    json_.Raw("[");
    isFirst_ = true;
    entries();
    json_.Raw(isFirst_ ? "]" : "\n]");
  }
  void BeginEntry(const TReachedTurn& turn) {
    json_.Raw(isFirst_ ? "\n{" : ",\n{");
    isFirst_ = false;
    json_.Member("class", turn.planned.cimClass->Name());
  }
  void Class(const TReachedTurn& turn) {
    BeginEntry(turn);
    if (turn.planned.path != EPath::kNone) {
      json_.Raw(",");
      json_.Member("path", NameOfOriginPath(turn.planned.path));
    }
    json_.Raw(R"(,"instances":[)");
    std::string_view before;
    ForEachPlace(plan_, turn.planned, [&](TPlace place) {
      json_.Raw(before);
      before = ",\n";
      Instance(turn, place);
    });
    json_.Raw("]}");
  }
  void Instance(const TReachedTurn& turn, TPlace place) {
    json_.Raw("{");
    json_.Member("key", turns_.Key(turn.number, place));
    json_.Raw(",");
    AppendOrigin(json_, turns_.Origin(turn.number, place));
    json_.Raw(R"(,"reads":[)");
    bool isFirst = true;
    ForEachRead(turn.planned, [&](const std::string& property, const TWhere& where) {
      json_.Raw(isFirst ? "{" : ",{");
      isFirst = false;
      Read(property, where);
      json_.Raw("}");
    });
    json_.Raw("]}");
  }
  void Read(const std::string& property, const TWhere& where) {
    json_.Member("property", property);
    if (where.index) Number("index", *where.index);
    if (!where.address) return;
    json_.Raw(",");
    json_.Name("address");
    json_.Hex(*where.address, kAddressBytes);
  }
  void DotCommand(const TReachedTurn& turn, unsigned processor) {
    BeginEntry(turn);
    Number("service_processor", processor);
    json_.Raw("}");
  }
  void Area(const TReachedTurn& turn, TPlace place) {
    BeginEntry(turn);
    json_.Raw(",");
    json_.Member("key", turns_.Key(turn.number, place));
    Number("node", place.owner);
    json_.Raw(",");
    json_.Member("area", kCaptureAreas.at(static_cast<std::size_t>(place.number)));
    json_.Raw("}");
  }
  void Number(std::string_view name, std::int64_t number) {
    json_.Raw(",");
    json_.Name(name);
    json_.Signed(number);
  }

  const TPlan& plan_;
  TPlanTurns turns_;
  TJsonText json_;
  bool isFirst_ = true;
};

class TPlanTable {
 public:
  TPlanTable(const TPlan& plan, ITextSink& sink, const TTableOptions& options)
      : plan_(plan), turns_(&plan), layout_(sink, options) {}

  void Write() {
    layout_.Line("Machine type: " + SafeText(plan_.machineType));
    layout_.BlankLine();
    ForEachTurn(plan_, [this](const TReachedTurn& turn) { Class(turn); });
    const std::size_t commands = DotCommands();
    const std::size_t files = CaptureFiles();
    layout_.Line("total: " + Counted(plan_.RegisterReads(), "register read") + ", " + Counted(commands, "dot command") +
                 ", " + Counted(files, "capture file"));
    layout_.Flush();
  }

 private:
  // The place of an instance: its key without the class.
  std::string PlaceOf(const TReachedTurn& turn, TPlace place) const {
    const std::string key = turns_.Key(turn.number, place);
    return key.substr(key.find('/') + 1);
  }
  void Heading(const TReachedTurn& turn, const std::string& place) {
    layout_.Line(SafeText(turn.planned.cimClass->Name()) + (place.empty() ? "" : "  " + place), EEmphasis::kHeading);
  }
  void Class(const TReachedTurn& turn) {
    if (turn.planned.path == EPath::kCapture && turn.planned.turn == ETurn::kPlanned) return;  // has a list of its own
    std::size_t width = 0;
    ForEachRead(turn.planned,
                [&](const std::string& property, const TWhere&) { width = std::max(width, property.size()); });
    bool isEmpty = true;
    ForEachPlace(plan_, turn.planned, [&](TPlace place) {
      isEmpty = false;
      Heading(turn, PlaceOf(turn, place));
      ForEachRead(turn.planned, [&](const std::string& property, const TWhere& where) {
        layout_.Row(2, SafeText(property), width + 4, WhereText(where));
      });
      layout_.BlankLine();
    });
    if (isEmpty) Unplanned(turn);
  }
  void Unplanned(const TReachedTurn& turn) {
    Heading(turn, {});
    const std::string& whyNot = turn.planned.whyNotServed;
    const bool isUnknown = turn.planned.turn == ETurn::kUnknown;
    layout_.Paragraph(2, !whyNot.empty() ? "not served: " + SafeText(whyNot)
                         : isUnknown     ? "what is read of it cannot be told in advance"
                                         : "it has no instances");
    layout_.BlankLine();
  }
  std::size_t DotCommands() {
    std::size_t count = 0;
    ForEachDotCommand(plan_, [&](const TReachedTurn& turn, unsigned processor) {
      if (count++ == 0) layout_.Line("Dot commands", EEmphasis::kHeading);
      layout_.Paragraph(2,
                        SafeText(turn.planned.cimClass->Name()) + "  service processor " + std::to_string(processor));
    });
    if (count > 0) layout_.BlankLine();
    return count;
  }
  std::size_t CaptureFiles() {
    std::size_t count = 0;
    ForEachArea(plan_, [&](const TReachedTurn& turn, TPlace place) {
      if (count++ == 0) layout_.Line("Capture files", EEmphasis::kHeading);
      layout_.Paragraph(2, SafeText(turn.planned.cimClass->Name()) + "  " + PlaceOf(turn, place));
    });
    if (count > 0) layout_.BlankLine();
    return count;
  }

  const TPlan& plan_;
  TPlanTurns turns_;
  TTableLayout layout_;
};

}  // namespace

void WritePlanAsJson(const TPlan& plan, ITextSink& sink) { TPlanJson(plan, sink).Write(); }

void WritePlanAsTable(const TPlan& plan, ITextSink& sink, const TTableOptions& options) {
  TPlanTable(plan, sink, options).Write();
}

}  // namespace velhost
