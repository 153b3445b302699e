#include "tests/result/plantedmistake.h"

#include <utility>

namespace tests {

namespace {

void PlantInClass(TPlannedClass& planned, EPlanted planted) {
  if (planned.turn != ETurn::kPlanned || planned.registers.empty()) return;
  auto& registers = planned.registers;
  switch (planted) {
    case EPlanted::kSkippedAddress:
      if (registers.back().addresses.empty()) return;
      registers.back().addresses.pop_back();
      --planned.readsOfInstance;
      return;
    case EPlanted::kSwappedRegisters:
      if (registers.size() > 1) std::swap(registers[0].property, registers[1].property);
      return;
    case EPlanted::kOtherChips: planned.isBridge = !planned.isBridge; return;
    case EPlanted::kOtherIndex: registers.back().index ^= 1U; return;
    case EPlanted::kAnInstanceMore: ++planned.instances; return;
    default: return;
  }
}

}  // namespace

void Plant(TPlan& plan, EPlanted planted) {
  for (TPlannedClass& planned : plan.classes) PlantInClass(planned, planted);
  for (TPlannedRequest& request : plan.requests) {
    auto& turns = request.turns;
    if (planted == EPlanted::kSwappedTurns && turns.size() > 1) std::swap(turns[0].planClass, turns[1].planClass);
    for (TPlannedTurn& turn : turns) turn.time += planted == EPlanted::kOtherTurnNumber ? 1U : 0U;
  }
}

}  // namespace tests
