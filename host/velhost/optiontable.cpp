#include "host/velhost/optiontable.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "host/base/text.h"
#include "host/velhost/optionvalues.h"

namespace velhost {

namespace {

constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

template <typename T>
using TChoices = std::vector<std::pair<std::string, T>>;

const TChoices<EWhen> kWhen = {{"auto", EWhen::kAuto}, {"always", EWhen::kAlways}, {"never", EWhen::kNever}};
const TChoices<ELogFormat> kLogFormats = {{"text", ELogFormat::kText}, {"jsonl", ELogFormat::kJsonLines}};
// Whether the form is JSON.
const TChoices<bool> kListForms = {{"table", false}, {"json", true}};
const TChoices<bool> kTextForms = {{"text", false}, {"json", true}};
const TChoices<std::string> kOutputForms = {
    {"table", "table"}, {"json", "json"}, {"jsonl", "jsonl"}, {"mof", "mof"}, {"cimxml", "cimxml"}};
const TChoices<ESeverity> kSeverities = {
    {"fatal", ESeverity::kFatal}, {"error", ESeverity::kError}, {"corrected", ESeverity::kCorrected}};
const TChoices<std::string> kPrivileges = {{"user", "user"}, {"operator", "operator"}, {"admin", "admin"}};
const std::vector<std::string> kServiceProcessorForms = {"sim[:FILE]", "replay:FILE", "image:FILE", "inband[:DEVICE]",
                                                         "lan:[USER@]HOST[:PORT]"};

// The following functions describe the values of options. `place` selects the member of the command line to store to.

template <typename TPlace>
TOptionValue Text(const std::string& name, const std::string& completion, TPlace place) {
  return {.name = name, .completion = completion, .take = [place](TCommandLine& commandLine, const std::string& given) {
            place(commandLine) = given;
            return true;
          }};
}

template <typename TPlace>
TOptionValue List(const std::string& name, const std::string& completion, TPlace place) {
  return {.name = name,
          .completion = completion,
          .repeatable = true,
          .take = [place](TCommandLine& commandLine, const std::string& given) {
            place(commandLine).push_back(given);
            return true;
          }};
}

template <typename T, typename TPlace>
TOptionValue OneOf(const TChoices<T>& choices, TPlace place) {
  std::vector<std::string> words;
  for (const auto& [word, value] : choices) words.push_back(word);
  const std::string listed = fmt::format("{}", fmt::join(words, "|"));
  return {.name = listed,
          .expected = listed,
          .choices = words,
          .completion = fmt::format("words {}", fmt::join(words, " ")),
          .take = [choices, place](TCommandLine& commandLine, const std::string& given) {
            const auto isGiven = [&given](const auto& choice) { return choice.first == given; };
            const auto found = std::find_if(choices.begin(), choices.end(), isGiven);
            if (found != choices.end()) place(commandLine) = found->second;
            return found != choices.end();
          }};
}

// Empty if the text is not a number or is out of range.
template <typename T>
std::optional<T> NumberIn(const std::string& text, T least, T most) {
  T number{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  const bool isInRange = result.ec == std::errc() && result.ptr == end && number >= least && number <= most;
  return isInRange ? std::optional(number) : std::nullopt;
}

template <typename T, typename TPlace>
TOptionValue Number(const std::string& name, T least, T most, TPlace place) {
  return {.name = name,
          .expected = fmt::format("{} from {} to {}", name, least, most),
          .take = [least, most, place](TCommandLine& commandLine, const std::string& given) {
            const std::optional<T> number = NumberIn(given, least, most);
            if (number) place(commandLine) = *number;
            return number.has_value();
          }};
}

template <typename TPlace>
TOptionValue Flag(TPlace place) {
  return {.repeatable = true, .take = [place](TCommandLine& commandLine, const std::string&) {
            place(commandLine) = true;
            return true;
          }};
}

template <typename TPlace>
TOptionValue Count(TPlace place) {
  return {.repeatable = true, .take = [place](TCommandLine& commandLine, const std::string&) {
            ++place(commandLine);
            return true;
          }};
}

template <typename TPlace>
TOptionValue Time(TPlace place) {
  return {.name = "TIME", .expected = kTimeForms, .take = [place](TCommandLine& commandLine, const std::string& given) {
            const std::optional<double> seconds = SecondsOf(given);
            if (seconds) place(commandLine) = *seconds;
            return seconds.has_value();
          }};
}

TOptionValue Label() {
  return {.name = "KEY=VALUE", .repeatable = true, .take = [](TCommandLine& commandLine, const std::string& given) {
            AddLabel(commandLine.collect.labels, given);
            return true;
          }};
}

TOptionValue SchemaPath() {
  return {.name = "PATH",
          .expected = "PATH, +PATH or " + std::string(kExampleSchema),
          .completion = "schemas",
          .repeatable = true,
          .take = [](TCommandLine& commandLine, const std::string& given) {
            commandLine.common.schema.push_back(given);
            return given != "+";
          }};
}

// For options that the parser answers before it stores any value.
TOptionValue Question() {
  return {.repeatable = true, .take = [](TCommandLine&, const std::string&) { return true; }};
}

TOptionValue Offering(const std::string& words, TOptionValue value) {
  value.completion = "words " + words;
  return value;
}

std::string UnlessScheme(const TCommandLine& commandLine, const std::string& wanted) {
  const std::vector<std::string>& specs = commandLine.common.serviceProcessors;
  const std::string scheme = specs.empty() ? "sim" : SchemeOf(specs.front());
  return scheme == wanted ? std::string() : "with --sp " + SafeText(scheme);
}

std::string UnlessLan(const TCommandLine& commandLine) { return UnlessScheme(commandLine, "lan"); }

std::string UnlessReplay(const TCommandLine& commandLine) { return UnlessScheme(commandLine, "replay"); }

std::string UnlessLogged(const TCommandLine& commandLine) {
  return commandLine.common.log.empty() ? "without --log" : "";
}

std::string IfDryRun(const TCommandLine& commandLine) { return commandLine.collect.dryRun ? "with --dry-run" : ""; }

// If check is given files, it checks those instead of the schema, so --schema has no effect.
std::string IfFilesAreChecked(const TCommandLine& commandLine) {
  return commandLine.verb == EVerb::kCheck && !commandLine.check.files.empty() ? "with check" : "";
}

const std::vector<TVerb> kVerbs = {
    {.verb = EVerb::kCollect,
     .name = "collect",
     .help = "run one collection and print the instances",
     .example = "velhost collect --sp sim:failing.toml --format json -o errors.json",
     .operands = {.usage = "[CLASS...]",
                  .help = "classes to collect, or patterns with * and ?; default: all that this machine serves",
                  .most = kAnyNumber,
                  .completion = "classes",
                  .take = [](auto& c, const auto& words) { c.collect.classes = words; }}},
    {.verb = EVerb::kClasses,
     .name = "classes",
     .help = "list the collectable classes, and whether this machine serves each (if not, why)",
     .example = "velhost classes --machine-type 4411",
     .operands = {.usage = "[CLASS...]",
                  .help = "classes or patterns with * and ?; default: all",
                  .most = kAnyNumber,
                  .completion = "classes",
                  .take = [](auto& c, const auto& words) { c.classes.classes = words; }}},
    {.verb = EVerb::kDescribe,
     .name = "describe",
     .help = "show what a class reads, and what its registers and their fields mean",
     .example = "velhost describe KROSG_J2_MEMCTL_StatisticData.MemoryErrorStatus",
     .operands = {.usage = "CLASS[.REGISTER]",
                  .help = "a class, or one of its registers",
                  .least = 1,
                  .most = 1,
                  .completion = "registers",
                  .take = [](auto& c, const auto& words) { c.describe.name = words.front(); }}},
    {.verb = EVerb::kPlugin,
     .name = "plugin",
     .help = "load the collector and print its identity",
     .example = "velhost plugin --plugin ./libtorgareg.pi.so"},
    {.verb = EVerb::kCheck,
     .name = "check",
     .help = "check schemas, server files and recordings",
     .example = "velhost check my-schema/ --format json",
     .operands = {.usage = "[FILE...]",
                  .help = "MOF files or folders, server files, recordings; default: the schema",
                  .most = kAnyNumber,
                  .completion = "files",
                  .take = [](auto& c, const auto& words) { c.check.files = words; }}},
    {.verb = EVerb::kSimulate,
     .name = "simulate",
     .help = "serve a simulated or recorded server over IPMI on the network",
     .example = "velhost simulate demo.toml --port 9623",
     .operands = {.usage = "FILE",
                  .help = "a recording, a server file, or the name of a shipped one",
                  .least = 1,
                  .most = 1,
                  .completion = "servers",
                  .take = [](auto& c, const auto& words) { c.simulate.file = words.front(); }}},
    {.verb = EVerb::kShow,
     .name = "show",
     .help = "print results or recordings again, in any output format",
     .example = "velhost show errors.json --format table",
     .operands = {.usage = "FILE...",
                  .help = "results (json or jsonl), or recordings, which are replayed",
                  .least = 1,
                  .most = kAnyNumber,
                  .completion = "files",
                  .take = [](auto& c, const auto& words) { c.show.files = words; }}},
    {.verb = EVerb::kDiff,
     .name = "diff",
     .help = "print what changed between two results or recordings",
     .example = "velhost diff yesterday.json today.json",
     .operands = {.usage = "BEFORE AFTER",
                  .help = "results (json or jsonl), or recordings, which are replayed",
                  .least = 2,
                  .most = 2,
                  .completion = "files",
                  .take =
                      [](auto& c, const auto& words) {
                        c.diff.before = words.front();
                        c.diff.after = words.back();
                      }}},
};

const std::vector<TOption> kOptions = {
    {.name = "--help", .letter = 'h', .value = Question(), .help = "print this help"},
    {.name = "--version", .value = Question(), .help = "print the version"},
    {.name = "--plugin",
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.common.plugin; }),
     .help = "the collector's library",
     .usedBy = {EVerb::kCollect, EVerb::kPlugin, EVerb::kShow, EVerb::kDiff}},
    {.name = "--schema",
     .value = SchemaPath(),
     .help =
         "a MOF file or a folder of them; +PATH adds to the default, \"example\" is the shipped one; may be repeated",
     .usedBy = {EVerb::kCollect, EVerb::kClasses, EVerb::kDescribe, EVerb::kCheck, EVerb::kShow, EVerb::kDiff},
     .idle = IfFilesAreChecked},
    {.name = "--sp",
     .value = List(
         "SPEC", "sp", [](auto& c) -> auto& { return c.common.serviceProcessors; }),
     .help = fmt::format("the service processor: {}", fmt::join(kServiceProcessorForms, ", ")),
     .usedBy = {EVerb::kCollect, EVerb::kClasses, EVerb::kDescribe}},
    {.name = "--machine-type",
     .value = Text(
         "NNNN", "machinetypes", [](auto& c) -> auto& { return c.common.machineType; }),
     .help = "override the machine type",
     .usedBy = {EVerb::kCollect, EVerb::kClasses, EVerb::kDescribe}},
    {.name = "--log",
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.common.log; }),
     .help = "also write the collector's trace to FILE",
     .usedBy = {EVerb::kCollect, EVerb::kPlugin}},
    {.name = "--log-format",
     .value = OneOf(
         kLogFormats, [](auto& c) -> auto& { return c.common.logFormat; }),
     .help = "format of the --log file; default: text",
     .usedBy = {EVerb::kCollect, EVerb::kPlugin},
     .idle = UnlessLogged},
    {.name = "-v",
     .levels = 3,
     .value = Count([](auto& c) -> auto& { return c.common.verbosity; }),
     .help = "show host messages and the trace: status, debug or verbose messages"},
    {.name = "--color",
     .value = OneOf(
         kWhen, [](auto& c) -> auto& { return c.common.color; }),
     .help = "colour the text for people; default: auto"},
    {.name = "--no-pager",
     .value = Flag([](auto& c) -> auto& { return c.common.noPager; }),
     .help = "print long text on a terminal without a pager"},
    {.name = "--password-file",
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.common.passwordFile; }),
     .help = "lan: read the password from FILE; default: VELHOST_IPMI_PASSWORD",
     .usedBy = {EVerb::kCollect, EVerb::kClasses},
     .idle = UnlessLan},
    {.name = "--cipher-suite",
     .value = Offering("17 3", Number(
                                   "N", 0, 17, [](auto& c) -> auto& { return c.common.cipherSuite; })),
     .help = "lan: cipher suite; default: 17, then 3",
     .usedBy = {EVerb::kCollect, EVerb::kClasses},
     .idle = UnlessLan},
    {.name = "--privilege",
     .value = OneOf(
         kPrivileges, [](auto& c) -> auto& { return c.common.privilege; }),
     .help = "lan: privilege level; default: admin",
     .usedBy = {EVerb::kCollect, EVerb::kClasses},
     .idle = UnlessLan},
    {.name = "--replay-timing",
     .value = Flag([](auto& c) -> auto& { return c.common.replayTiming; }),
     .help = "replay: take as long as the recorded exchanges took",
     .usedBy = {EVerb::kCollect},
     .idle = UnlessReplay},

    {.name = "--format",
     .value = OneOf(
         kOutputForms, [](auto& c) -> auto& { return c.collect.format; }),
     .help = "output format; default: table on a terminal, otherwise json",
     .verbs = {EVerb::kCollect}},
    {.name = "--output",
     .letter = 'o',
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.collect.output; }),
     .help = "write to FILE instead of standard output",
     .verbs = {EVerb::kCollect}},
    {.name = "--only-findings",
     .value = Flag([](auto& c) -> auto& { return c.collect.onlyFindings; }),
     .help = "table, json: only what is wrong, and what could not be read",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},
    {.name = "--fail-on",
     .value = OneOf(
         kSeverities, [](auto& c) -> auto& { return c.collect.failOn; }),
     .help = "exit with status 1 if a finding that is not masked is that bad, or worse",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},
    {.name = "--baseline",
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.collect.baseline; }),
     .help = "mark findings that this earlier result has too as known: --fail-on ignores them",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},
    {.name = "--label",
     .value = Label(),
     .help = "add to the result, except in cimxml; may be repeated",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},
    {.name = "--dry-run",
     .value = Flag([](auto& c) -> auto& { return c.collect.dryRun; }),
     .help = "print what would be read, and send nothing",
     .verbs = {EVerb::kCollect}},
    {.name = "--record",
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.collect.record; }),
     .help = "record every exchange with the service processor",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},
    {.name = "--timeout",
     .value = Time([](auto& c) -> auto& { return c.collect.timeoutSeconds; }),
     .help = "deadline for the whole run: 90, 45s, 1.5m or 2h",
     .verbs = {EVerb::kCollect}},
    {.name = "--single-request",
     .value = Flag([](auto& c) -> auto& { return c.collect.singleRequest; }),
     .help = "request all classes at once, in the order given",
     .verbs = {EVerb::kCollect}},
    {.name = "--capture-dir",
     .value = Text(
         "DIR", "folders", [](auto& c) -> auto& { return c.collect.captureDir; }),
     .help = "also write each capture file to DIR",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},
    {.name = "--progress",
     .value = OneOf(
         kWhen, [](auto& c) -> auto& { return c.collect.progress; }),
     .help = "show progress on standard error; default: auto",
     .verbs = {EVerb::kCollect},
     .idle = IfDryRun},

    {.name = "--format",
     .value = OneOf(
         kListForms, [](auto& c) -> auto& { return c.classes.json; }),
     .help = "output format; default: table",
     .verbs = {EVerb::kClasses}},

    {.name = "--format",
     .value = OneOf(
         kTextForms, [](auto& c) -> auto& { return c.describe.json; }),
     .help = "output format; default: text",
     .verbs = {EVerb::kDescribe}},

    {.name = "--format",
     .value = OneOf(
         kTextForms, [](auto& c) -> auto& { return c.plugin.json; }),
     .help = "output format; default: text",
     .verbs = {EVerb::kPlugin}},

    {.name = "--format",
     .value = OneOf(
         kTextForms, [](auto& c) -> auto& { return c.check.json; }),
     .help = "output format; default: text",
     .verbs = {EVerb::kCheck}},

    {.name = "--format",
     .value = OneOf(
         kOutputForms, [](auto& c) -> auto& { return c.show.format; }),
     .help = "output format; default: table on a terminal, otherwise json",
     .verbs = {EVerb::kShow}},
    {.name = "--output",
     .letter = 'o',
     .value = Text(
         "FILE", "files", [](auto& c) -> auto& { return c.show.output; }),
     .help = "write to FILE instead of standard output",
     .verbs = {EVerb::kShow}},

    {.name = "--format",
     .value = OneOf(
         kTextForms, [](auto& c) -> auto& { return c.diff.json; }),
     .help = "output format; default: text",
     .verbs = {EVerb::kDiff}},

    {.name = "--node",
     .value = Number(
         "N", 0, 255, [](auto& c) -> auto& { return c.simulate.node; }),
     .help = "the BMC node to serve; default: 0",
     .verbs = {EVerb::kSimulate}},
    {.name = "--port",
     .value = Number(
         "PORT", 1, 65535, [](auto& c) -> auto& { return c.simulate.port; }),
     .help = "UDP port on 127.0.0.1; default: 9623",
     .verbs = {EVerb::kSimulate}},
    {.name = "--serial-port",
     .value = Number(
         "PORT", 1, 65535, [](auto& c) -> auto& { return c.simulate.serialPort; }),
     .help = "also serve as a virtual machine's BMC on this TCP port",
     .verbs = {EVerb::kSimulate}},
};

}  // namespace

bool TOption::BelongsTo(EVerb verb) const {
  return verbs.empty() || std::find(verbs.begin(), verbs.end(), verb) != verbs.end();
}

const std::vector<TVerb>& Verbs() { return kVerbs; }

const std::vector<TOption>& Options() { return kOptions; }

const std::vector<std::string>& ServiceProcessorForms() { return kServiceProcessorForms; }

const TVerb& EntryOf(EVerb verb) {
  return *std::find_if(kVerbs.begin(), kVerbs.end(), [verb](const TVerb& entry) { return entry.verb == verb; });
}

const TVerb* FindVerb(const std::string& name) {
  const auto isNamed = [&name](const TVerb& entry) { return entry.name == name; };
  const auto found = std::find_if(kVerbs.begin(), kVerbs.end(), isNamed);
  return found == kVerbs.end() ? nullptr : &*found;
}

std::vector<const TOption*> FindOptions(const std::string& name) {
  std::vector<const TOption*> found;
  for (const TOption& option : kOptions) {
    const bool isLetter = option.letter != 0 && name == std::string("-") + option.letter;
    if (option.name == name || isLetter) found.push_back(&option);
  }
  return found;
}

}  // namespace velhost
