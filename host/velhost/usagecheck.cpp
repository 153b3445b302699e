#include "host/velhost/usagecheck.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "host/base/hosterror.h"
#include "host/base/nearestname.h"
#include "host/base/unsafetext.h"

namespace velhost {

namespace {

[[noreturn]] void Fail(const std::string& message) { throw THostError(EExitStatus::kUsage, message); }

bool Contains(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// "collect", "collect and check", "a, b and c"
std::string Listed(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " and " : ", ";
    text += words[i];
  }
  return text;
}

// An option as it stands on the command line.
struct TGivenOption {
  std::string name;       // without "=..."
  const TOptionUse* use;  // null: unknown
  std::string value;      // of "--name=value" or the argument behind
  bool hasValue = false;  // also an empty one; not a negative number
  bool valueIsAttached = false;
};

// The arguments taken apart, as far as that can be said without knowing their meaning.
struct TGivenArguments {
  std::string verb;
  std::vector<TGivenOption> options;
  std::size_t optionsBeforeVerb = 0;
};

class TTaker {
 public:
  TTaker(const TUsage& usage, const std::vector<std::string>& arguments) : usage_(usage), arguments_(arguments) {}

  TGivenArguments Take() {
    for (at_ = 0; at_ < arguments_.size() && arguments_[at_] != "--"; ++at_) {
      const std::string& argument = arguments_[at_];
      if (argument.starts_with("--")) {
        TakeLong(argument);
      } else if (argument.size() > 1 && argument[0] == '-') {
        TakeShort(argument);
      } else if (given_.verb.empty()) {
        given_.verb = argument;
        given_.optionsBeforeVerb = given_.options.size();
      }
    }
    if (given_.verb.empty()) given_.optionsBeforeVerb = given_.options.size();
    return std::move(given_);
  }

 private:
  const TOptionUse* Find(const std::string& name) const {
    const auto found = usage_.options.find(name);
    return found == usage_.options.end() ? nullptr : &found->second;
  }

  void TakeLong(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    TGivenOption option{argument.substr(0, equals), Find(argument.substr(0, equals)), {}};
    if (equals != std::string::npos) Attach(option, argument.substr(equals + 1));
    Add(std::move(option));
  }

  // "-v", "-vv", "-oFILE"
  void TakeShort(const std::string& argument) {
    for (std::size_t i = 1; i < argument.size(); ++i) {
      const std::string name = std::string("-") + argument[i];
      TGivenOption option{name, Find(name), {}};
      const bool takesTheRest = option.use != nullptr && !option.use->value.empty();
      if (option.use == nullptr) option.name = argument;
      if (takesTheRest && i + 1 < argument.size()) Attach(option, argument.substr(i + 1));
      const bool ends = takesTheRest || option.use == nullptr;
      Add(std::move(option));
      if (ends) return;
    }
  }

  static void Attach(TGivenOption& option, const std::string& value) {
    option.value = value;
    option.hasValue = option.valueIsAttached = true;
  }

  void Add(TGivenOption option) {
    const bool takesNext = option.use != nullptr && !option.use->value.empty() && !option.hasValue;
    if (takesNext && at_ + 1 < arguments_.size()) {
      const std::string& next = arguments_[at_ + 1];
      const bool isNegative = next.size() > 1 && next[0] == '-' && next[1] >= '0' && next[1] <= '9';
      option.hasValue = next.empty() || next[0] != '-' || next == "-";
      if (option.hasValue || isNegative) ++at_;
      if (option.hasValue || isNegative) option.value = next;
    }
    given_.options.push_back(std::move(option));
  }

  const TUsage& usage_;
  const std::vector<std::string>& arguments_;
  std::size_t at_ = 0;
  TGivenArguments given_;
};

// What the command takes; without one, what every command takes. An option of another would help nobody.
std::vector<std::string> OptionsOf(const TUsage& usage, const std::string& verb) {
  std::vector<std::string> names;
  for (const auto& [name, use] : usage.options) {
    if (use.verbs.empty() || Contains(use.verbs, verb)) names.push_back(name);
  }
  return names;
}

// The value of an unknown option looks like a command, so that any that is one will do.
std::string LikelyVerb(const TUsage& usage, const std::vector<std::string>& arguments) {
  const auto isVerb = [&usage](const std::string& argument) { return Contains(usage.verbs, argument); };
  const auto found = std::find_if(arguments.begin(), arguments.end(), isVerb);
  return found == arguments.end() ? std::string() : *found;
}

void CheckKnown(const TUsage& usage, const TGivenArguments& given, const std::vector<std::string>& arguments) {
  const std::string verb = Contains(usage.verbs, given.verb) ? given.verb : LikelyVerb(usage, arguments);
  const std::vector<std::string> names = OptionsOf(usage, verb);
  for (const TGivenOption& option : given.options) {
    if (option.use != nullptr) continue;
    // Two letters are near everything.
    const bool isLetter = option.name.size() == 2;
    Fail("unknown option " + SafeText(option.name) + (isLetter ? std::string() : DidYouMean(option.name, names)));
  }
}

void CheckVerb(const TUsage& usage, const std::string& verb) {
  if (verb.empty()) Fail("no command is given; there are " + Listed(usage.verbs));
  if (Contains(usage.verbs, verb)) return;
  const std::string suggestion = DidYouMean(verb, usage.verbs);
  Fail("unknown command " + QuotedWord(verb) +
       (suggestion.empty() ? "; there are " + Listed(usage.verbs) : suggestion));
}

void CheckPlaces(const TGivenArguments& given) {
  for (std::size_t i = 0; i < given.options.size(); ++i) {
    const TOptionUse& use = *given.options[i].use;
    if (use.verbs.empty()) continue;
    if (!Contains(use.verbs, given.verb)) Fail(given.options[i].name + " belongs to " + Listed(use.verbs));
    if (i < given.optionsBeforeVerb) Fail(given.options[i].name + " has to stand behind \"" + given.verb + "\"");
  }
}

void CheckValues(const TGivenArguments& given) {
  std::set<std::string> seen;
  for (const TGivenOption& option : given.options) {
    const TOptionUse& use = *option.use;
    if (use.value.empty()) {
      if (option.valueIsAttached) Fail(option.name + " takes no value");
      continue;
    }
    // An empty word is what is left of a variable that is not set: no value, or what was to be recorded is lost.
    if (!option.hasValue || option.value.empty()) {
      Fail(option.name + " needs " + use.value + (option.value.empty() ? "" : ", not " + QuotedWord(option.value)));
    }
    if (!seen.insert(use.name).second && !use.repeatable) Fail(use.name + " is given twice");
  }
}

}  // namespace

std::string VerbOf(const TUsage& usage, const std::vector<std::string>& arguments) {
  return TTaker(usage, arguments).Take().verb;
}

bool HasOption(const TUsage& usage, const std::vector<std::string>& arguments, const std::vector<std::string>& names) {
  const TGivenArguments given = TTaker(usage, arguments).Take();
  return std::any_of(given.options.begin(), given.options.end(),
                     [&names](const TGivenOption& option) { return Contains(names, option.name); });
}

void CheckUsage(const TUsage& usage, const std::vector<std::string>& arguments) {
  const TGivenArguments given = TTaker(usage, arguments).Take();
  CheckKnown(usage, given, arguments);
  CheckVerb(usage, given.verb);
  CheckPlaces(given);
  CheckValues(given);
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
  const std::vector<std::string_view> views(candidates.begin(), candidates.end());
  std::string_view nearest = NearestName(word, views);
  const auto begins = [&word](std::string_view candidate) { return word.size() > 1 && candidate.starts_with(word); };
  const auto longer = std::find_if(views.begin(), views.end(), begins);
  if (nearest.empty() && longer != views.end()) nearest = *longer;
  return nearest.empty() ? "" : "; did you mean " + std::string(nearest) + "?";
}

std::string QuotedWord(const std::string& word) { return "\"" + SafeText(word) + "\""; }

}  // namespace velhost
