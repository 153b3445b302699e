#include "host/velhost/collect/baseline.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>

#include "host/base/names.h"
#include "host/base/storedbytes.h"
#include "host/readback/resultreader.h"
#include "host/velhost/messages.h"

namespace velhost {

TBaseline::TBaseline(const std::string& path, TInputs& inputs) {
  if (!path.empty()) Read(path, inputs);
}

void TBaseline::Read(const std::string& path, TInputs& inputs) {
  TInputReader reader(inputs, {"the baseline", "--baseline", EFileKind::kResult}, {path});
  const TStoredBytes text = reader.Open(path, kLargestResult, kLargestResultOfAPipe);
  const TResultReader result(path, text, EReadDetail::kCompared, &reader);
  if (result.CutWarning()) SayDiagnostics({*result.CutWarning()});
  for (const TReadFinding& finding : result.Result().findings) {
    places_.insert(PlaceOf(finding.key, finding.registerName, finding.bits));
  }
}

void TBaseline::MarkKnown(std::vector<TFinding>& findings) const {
  if (places_.empty()) return;
  for (TFinding& finding : findings) {
    finding.isKnown = places_.count(PlaceOf(finding.place->key, finding.place->name, finding.bits)) != 0;
  }
}

// Another schema may spell classes and registers in another case.
TBaseline::TPlace TBaseline::PlaceOf(const std::string& key, const std::string& registerName, const std::string& bits) {
  const std::size_t end = std::min(key.find('/'), key.size());
  return {FoldName(key.substr(0, end)) + key.substr(end), FoldName(registerName), bits};
}

}  // namespace velhost
