// Arbitrary bytes as a result: it is read or refused, reading its instances again gives the same ones, and what is
// written of it can be read and gives the same text again.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/output/writers.h"
#include "host/readback/resultreader.h"
#include "host/readback/shownresult.h"
#include "tests/support/require.h"

using namespace velhost;
using tests::Require;

static void ReadAs(EReadDetail detail, const TStoredBytes& text) {
  std::vector<std::string> keys;
  std::vector<TJsonPlace> places;
  TResultReader reader("r.json", text, detail, nullptr, [&](const TReadInstance& instance, const TJsonPlace& place) {
    keys.push_back(instance.facts.key);
    places.push_back(place);
  });
  Require(reader.Result().instances == keys.size());
  Require(reader.Result().isCut == reader.CutWarning().has_value());
  std::size_t next = 0;
  reader.ForEach(
      [&](const TReadInstance& instance, const TJsonPlace&) { Require(instance.facts.key == keys.at(next++)); });
  Require(next == keys.size());
  for (std::size_t i = keys.size(); i-- > 0;) Require(reader.ReadAt(places[i]).facts.key == keys[i]);
}

static std::string Shown(const std::string& text, EOutputForm form) {
  TStringSink sink;
  TResultReader reader("r.json", std::vector<std::uint8_t>(text.begin(), text.end()), EReadDetail::kAll);
  TShownResult(reader, nullptr, ESchemaUse::kNone).Write(*MakeWriter(form, sink, {}));
  return sink.Text();
}

static void ShowAgain(const std::string& text) {
  const std::string first = Shown(text, EOutputForm::kJson);
  Require(Shown(first, EOutputForm::kJson) == first);
  Shown(text, EOutputForm::kTable);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const EReadDetail detail : {EReadDetail::kAll, EReadDetail::kCompared}) {
    try {
      ReadAs(detail, std::vector<std::uint8_t>(data, data + size));
    } catch (const THostError&) {
    }
  }
  try {
    ShowAgain({data, data + size});
  } catch (const THostError&) {
  }
  return 0;
}
