#include "host/velhost/commandline.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <set>
#include <string_view>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/velhost/help.h"
#include "host/velhost/optiontable.h"

namespace velhost {

namespace {

[[noreturn]] void Fail(const std::string& message) { throw THostError(EFailure::kInvalidArgument, message); }

std::vector<std::string> VerbNames() {
  std::vector<std::string> names;
  for (const TVerb& verb : Verbs()) names.push_back(verb.name);
  return names;
}

// An option as given on the command line.
struct TGivenOption {
  std::string name = {};            // as written, without "=VALUE"
  const TOption* option = nullptr;  // null if unknown; after ResolveOptions, the command's own entry
  std::string value = {};           // from "--name=VALUE" or the next word
  bool hasValue = false;            // also for an empty value; false for a negative number
  bool isValueAttached = false;
  bool isBeforeVerb = false;

  bool Is(std::string_view optionName) const { return option != nullptr && option->name == optionName; }
};

struct TGivenWords {
  bool asksForHelp = false;  // "help" in place of the command
  std::optional<std::string> verb;
  std::vector<TGivenOption> options;
  std::vector<std::string> operands;

  bool Has(std::string_view option) const {
    return std::any_of(options.begin(), options.end(), [option](const TGivenOption& o) { return o.Is(option); });
  }
};

// The only pass over the words. It classifies them and rejects none.
class TWordReader {
 public:
  explicit TWordReader(const std::vector<std::string>& words) : words_(words) {}

  TGivenWords Read() {
    for (; at_ < words_.size() && words_[at_] != "--"; ++at_) ReadWord(words_[at_]);
    for (++at_; at_ < words_.size(); ++at_) given_.operands.push_back(words_[at_]);
    return std::move(given_);
  }

 private:
  void ReadWord(const std::string& word) {
    if (word.starts_with("--")) return ReadLong(word);
    if (word.size() > 1 && word[0] == '-') return ReadLetters(word);
    if (given_.verb) {
      given_.operands.push_back(word);
    } else if (word == "help" && !given_.asksForHelp) {
      given_.asksForHelp = true;
    } else {
      given_.verb = word;
    }
  }

  static TGivenOption Named(const std::string& name) {
    const auto found = FindOptions(name);
    return {.name = name, .option = found.empty() ? nullptr : found.front()};
  }

  void ReadLong(const std::string& word) {
    const std::size_t equals = word.find('=');
    TGivenOption option = Named(word.substr(0, equals));
    if (equals != std::string::npos) Attach(option, word.substr(equals + 1));
    Add(std::move(option));
  }

  // Reads "-v", "-vv" or "-oFILE".
  void ReadLetters(const std::string& word) {
    for (std::size_t i = 1; i < word.size(); ++i) {
      TGivenOption option = Named(std::string("-") + word[i]);
      const bool isKnown = option.option != nullptr;
      const bool takesTheRest = isKnown && option.option->TakesValue();
      if (!isKnown) option.name = word;
      if (takesTheRest && i + 1 < word.size()) Attach(option, word.substr(i + 1));
      Add(std::move(option));
      if (!isKnown || takesTheRest) return;
    }
  }

  static void Attach(TGivenOption& option, const std::string& value) {
    option.value = value;
    option.hasValue = option.isValueAttached = true;
  }

  void Add(TGivenOption option) {
    const bool takesNext = option.option != nullptr && option.option->TakesValue() && !option.hasValue;
    if (takesNext && at_ + 1 < words_.size()) TakeNext(option);
    option.isBeforeVerb = !given_.verb;
    given_.options.push_back(std::move(option));
  }

  // An option is not a value. A negative number was meant as a value, so it is taken, and rejected later.
  void TakeNext(TGivenOption& option) {
    const std::string& next = words_[at_ + 1];
    const bool isNegative = next.size() > 1 && next[0] == '-' && IsDigit(next[1]);
    option.hasValue = next.empty() || next[0] != '-' || next == "-";
    if (!option.hasValue && !isNegative) return;
    option.value = next;
    ++at_;
  }

  const std::vector<std::string>& words_;
  std::size_t at_ = 0;
  TGivenWords given_;
};

const TVerb* VerbOf(const TGivenWords& given) { return given.verb ? FindVerb(*given.verb) : nullptr; }

// The command, or the word that probably names it: the value of an unknown option may have been taken for the
// command.
const TVerb* LikelyVerb(const TGivenWords& given) {
  const TVerb* verb = VerbOf(given);
  for (std::size_t i = 0; i < given.operands.size() && verb == nullptr; ++i) verb = FindVerb(given.operands[i]);
  return verb;
}

// The options that the command accepts; without a command, those common to all. Others would be bad suggestions.
std::vector<std::string> OptionNamesFor(const TVerb* verb) {
  std::vector<std::string> names;
  for (const TOption& option : Options()) {
    if (verb != nullptr ? !option.BelongsTo(verb->verb) : !option.verbs.empty()) continue;
    names.push_back(option.name);
    if (option.letter != 0) names.push_back(std::string("-") + option.letter);
  }
  return names;
}

void CheckKnown(const TGivenWords& given) {
  for (const TGivenOption& option : given.options) {
    if (option.option != nullptr) continue;
    // A single letter differs from any other by one edit, so every option would be a suggestion.
    const bool isLetter = option.name.size() == 2;
    Fail("unknown option " + SafeText(option.name) +
         (isLetter ? std::string() : DidYouMean(option.name, OptionNamesFor(LikelyVerb(given)))));
  }
}

const TVerb& RequireVerb(const TGivenWords& given) {
  const std::string commands = "; the commands are " + Listed(VerbNames(), " and ");
  if (!given.verb) Fail("no command given" + commands);
  if (const TVerb* const verb = VerbOf(given)) return *verb;
  const std::string suggestion = DidYouMean(*given.verb, VerbNames());
  Fail("unknown command " + QuotedWord(*given.verb) + (suggestion.empty() ? commands : suggestion));
}

// The entry of the option that belongs to the command.
const TOption* OwnEntry(const TGivenOption& given, const TVerb& verb) {
  std::vector<std::string> owners;
  for (const TOption* option : FindOptions(given.name)) {
    if (option->BelongsTo(verb.verb)) return option;
    for (const EVerb owner : option->verbs) owners.push_back(EntryOf(owner).name);
  }
  Fail(given.name + " is an option of " + Listed(owners, " and "));
}

void ResolveOptions(TGivenWords& given, const TVerb& verb) {
  for (TGivenOption& option : given.options) {
    option.option = OwnEntry(option, verb);
    const bool isCommon = option.option->verbs.empty();
    if (option.isBeforeVerb && !isCommon) Fail(option.name + " must come after \"" + verb.name + "\"");
  }
}

// Options reject empty values: an empty value is usually an unset variable, and ignoring it would lose a recording.
void CheckHasValue(const TGivenOption& given) {
  const bool takesValue = given.option->TakesValue();
  if (!takesValue && given.isValueAttached) Fail(given.name + " takes no value");
  if (!takesValue || (given.hasValue && !given.value.empty())) return;
  Fail(given.name + " needs " + given.option->value.name +
       (given.value.empty() ? "" : ", not " + QuotedWord(given.value)));
}

void CheckValuesAreGiven(const TGivenWords& given) {
  std::set<const TOption*> seen;
  for (const TGivenOption& option : given.options) {
    CheckHasValue(option);
    const bool isRepeated = !seen.insert(option.option).second;
    if (isRepeated && !option.option->value.repeatable) Fail(option.option->name + " is given twice");
  }
}

void TakeValues(const TGivenWords& given, TCommandLine& commandLine) {
  for (const TGivenOption& option : given.options) {
    const TOptionValue& value = option.option->value;
    if (value.take(commandLine, option.value)) continue;
    Fail(option.option->name + " takes " + value.expected + ", not " + QuotedWord(option.value) +
         DidYouMean(option.value, value.choices));
  }
}

void TakeOperands(const std::vector<std::string>& given, const TVerb& verb, TCommandLine& commandLine) {
  const TOperands& operands = verb.operands;
  if (given.size() > operands.most) {
    Fail("unexpected argument " + QuotedWord(given[operands.most]) + "; " + verb.name + " takes " +
         (operands.most == 0 ? "none" : operands.usage));
  }
  const auto needed = static_cast<std::size_t>(std::min(operands.least, given.size()));
  const auto* const end = given.data() + needed;
  if (needed < operands.least || std::find(given.data(), end, std::string()) != end) {
    Fail(verb.name + " needs " + operands.usage);
  }
  if (operands.take) operands.take(commandLine, given);
}

// A path with a '+' adds to the default schema, and one without replaces it. The example counts as both.
void CheckSchemas(const std::vector<std::string>& given) {
  const auto added = std::find_if(given.begin(), given.end(), AddsToDefaultSchema);
  const auto other = std::find_if_not(given.begin(), given.end(), AddsToDefaultSchema);
  if (added == given.end() || other == given.end()) return;
  if (std::find(given.begin(), given.end(), kExampleSchema) != given.end()) return;
  Fail("--schema " + SafeText(*added) + " adds to the default schema, and --schema " + SafeText(*other) +
       " replaces it; give every path a '+', or none, or add --schema " + std::string(kExampleSchema));
}

// A plan is not a result, so it has only two of the forms.
void CheckFormOfPlan(const TCollectOptions& options) {
  if (!options.dryRun || options.format.empty() || options.format == "table" || options.format == "json") return;
  Fail("--dry-run prints a table or json, not " + options.format);
}

void CheckFormOfFindings(const TCollectOptions& options) {
  if (!options.onlyFindings || options.format.empty() || options.format == "table" || options.format == "json") return;
  Fail("--only-findings prints a table or json, not " + options.format);
}

std::string ReasonForIdleness(const TOption& option, const TCommandLine& commandLine) {
  const auto& users = option.usedBy;
  if (!users.empty() && std::find(users.begin(), users.end(), commandLine.verb) == users.end()) {
    return "with " + EntryOf(commandLine.verb).name;
  }
  return option.idle ? option.idle(commandLine) : std::string();
}

std::vector<std::string> WarningsOf(const TGivenWords& given, const TCommandLine& commandLine) {
  std::vector<std::string> texts;
  for (const TOption& option : Options()) {
    const auto isIt = [&option](const TGivenOption& candidate) { return candidate.option == &option; };
    if (std::none_of(given.options.begin(), given.options.end(), isIt)) continue;
    const std::string reason = ReasonForIdleness(option, commandLine);
    if (!reason.empty()) texts.push_back(option.name + " has no effect " + reason);
  }
  return texts;
}

TCommandLine Interpret(TGivenWords& given) {
  CheckKnown(given);
  const TVerb& verb = RequireVerb(given);
  ResolveOptions(given, verb);
  CheckValuesAreGiven(given);
  TCommandLine commandLine;
  commandLine.verb = verb.verb;
  TakeValues(given, commandLine);
  TakeOperands(given.operands, verb, commandLine);
  CheckSchemas(commandLine.common.schema);
  CheckFormOfPlan(commandLine.collect);
  CheckFormOfFindings(commandLine.collect);
  commandLine.warnings = WarningsOf(given, commandLine);
  return commandLine;
}

// The help or version text that was requested, even if other words are wrong; empty if none was.
std::string AskedText(const TGivenWords& given) {
  const TVerb* const verb = VerbOf(given);
  const bool asksForHelp = given.asksForHelp || given.Has("--help");
  if (asksForHelp && verb != nullptr) return HelpOf(*verb);
  if (asksForHelp && given.verb.value_or("").empty()) return Help();
  return given.Has("--version") ? std::string("velhost ") + VELHOST_VERSION + "\n" : std::string();
}

}  // namespace

std::optional<TCommandLine> ParseCommandLine(const std::vector<std::string>& arguments, std::string& text) {
  TGivenWords given = TWordReader(arguments).Read();
  text = AskedText(given);
  if (!text.empty()) return std::nullopt;
  try {
    return Interpret(given);
  } catch (const THostError& error) {
    const TVerb* const verb = VerbOf(given);
    const std::string place = verb == nullptr ? "velhost " : "velhost " + verb->name + " ";
    throw THostError(error.Kind(), error.what() + ("\nSee \"" + place + "--help\"."));
  }
}

std::string SchemeOf(const std::string& spec) { return spec.substr(0, spec.find(':')); }

std::string RestOf(const std::string& spec) {
  const std::size_t colon = spec.find(':');
  return colon == std::string::npos ? std::string() : spec.substr(colon + 1);
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
  const std::vector<std::string_view> views(candidates.begin(), candidates.end());
  std::string_view nearest = NearestName(word, views);
  const auto begins = [&word](std::string_view candidate) { return word.size() > 1 && candidate.starts_with(word); };
  const auto longer = std::find_if(views.begin(), views.end(), begins);
  if (nearest.empty() && longer != views.end()) nearest = *longer;
  return Suggestion(nearest);
}

std::string QuotedWord(const std::string& word) { return fmt::format("\"{}\"", SafeText(word)); }

}  // namespace velhost
