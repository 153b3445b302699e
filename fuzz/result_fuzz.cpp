// Arbitrary bytes as a result: it is read or refused, and reading its instances again gives the same ones.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/readback/resultreader.h"
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

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const EReadDetail detail : {EReadDetail::kAll, EReadDetail::kCompared}) {
    try {
      ReadAs(detail, std::vector<std::uint8_t>(data, data + size));
    } catch (const THostError&) {
    }
  }
  return 0;
}
