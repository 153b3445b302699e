#include "host/velhost/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/unsafetext.h"
#include "host/velhost/usagecheck.h"

namespace velhost {

namespace {

constexpr std::size_t kHelpColumn = 28;
constexpr std::size_t kHelpWidth = 80;
constexpr const char* kNeedsServerFile = "simulate needs FILE";

template <typename T>
using TChoices = std::vector<std::pair<std::string, T>>;

const TChoices<EWhen> kWhen = {{"auto", EWhen::kAuto}, {"always", EWhen::kAlways}, {"never", EWhen::kNever}};
const TChoices<ELogFormat> kLogFormats = {{"text", ELogFormat::kText}, {"jsonl", ELogFormat::kJsonLines}};
const TChoices<bool> kFindingForms = {{"text", false}, {"json", true}};
const TChoices<std::string> kOutputForms = {
    {"table", "table"}, {"json", "json"}, {"jsonl", "jsonl"}, {"mof", "mof"}, {"cimxml", "cimxml"}};
const TChoices<std::string> kPrivileges = {{"user", "user"}, {"operator", "operator"}, {"admin", "admin"}};

[[noreturn]] void ThrowUsage(const std::string& message) { throw THostError(EExitStatus::kUsage, message); }

// One of a few words.
template <typename TTarget, typename T>
void AddChoice(CLI::App& app, const std::string& name, TTarget& target, const TChoices<T>& choices,
               const std::string& description) {
  std::string words;
  for (const auto& [word, value] : choices) words += (words.empty() ? "" : "|") + word;
  const auto take = [&target, &choices, name, words](const std::string& given) {
    std::vector<std::string> candidates;
    for (const auto& [word, value] : choices) {
      if (word == given) {
        target = value;
        return;
      }
      candidates.push_back(word);
    }
    ThrowUsage(name + " takes " + words + ", not " + QuotedWord(given) + DidYouMean(given, candidates));
  };
  app.add_option_function<std::string>(name, take, description)->type_name(words);
}

// A number of a range. What is none, or no finite one, is refused.
template <typename TTarget, typename T>
void AddNumber(CLI::App& app, const std::string& name, TTarget& target, T least, T most, const std::string& value,
               const std::string& description) {
  const auto take = [&target, name, least, most, value](const std::string& given) {
    T number{};
    const char* const end = given.data() + given.size();
    const auto result = std::from_chars(given.data(), end, number);
    // Written so that what is no number at all is not in the range either.
    if (result.ec == std::errc() && result.ptr == end && number >= least && number <= most) {
      target = number;
      return;
    }
    std::ostringstream message;
    message.precision(12);  // no powers of ten
    message << name << " takes " << value << " from " << least << " to " << most << ", not " << QuotedWord(given);
    ThrowUsage(message.str());
  };
  app.add_option_function<std::string>(name, take, description)->type_name(value);
}

void AddCommonOptions(CLI::App& app, TCommonOptions& options) {
  app.add_option("--plugin", options.plugin, "the collector's library")->type_name("FILE");
  app.add_option("--schema", options.schema, "a MOF file or a folder of them; may be repeated")
      ->type_name("PATH")
      ->take_all()
      ->allow_extra_args(false);  // what follows the value is a class or file of its own
  app.add_option("--sp", options.serviceProcessors,
                 "the service processor: sim[:FILE], replay:FILE, inband[:DEVICE], lan:[USER@]HOST[:PORT]")
      ->type_name("SPEC")
      ->take_all()
      ->allow_extra_args(false);  // what follows the value is a class or file of its own
  app.add_option("--machine-type", options.machineType, "overrides the machine type")->type_name("NNNN");
  app.add_option("--log", options.log, "also write the collector's trace there")->type_name("FILE");
  AddChoice(app, "--log-format", options.logFormat, kLogFormats, "form of that file");
  app.add_flag("-v", options.verbosity, "trace on standard error: -v status, -vv debug, -vvv verbose");
  AddChoice(app, "--color", options.color, kWhen, "colour in the table");
  app.add_option("--password-file", options.passwordFile, "lan: password file; or VELHOST_IPMI_PASSWORD")
      ->type_name("FILE");
  AddNumber(app, "--cipher-suite", options.cipherSuite, 0, 17, "N", "lan: cipher suite; default 17, then 3");
  AddChoice(app, "--privilege", options.privilege, kPrivileges, "lan: privilege level; default admin");
  app.add_flag("--replay-timing", options.replayTiming, "replay: wait as long as the recording did");
}

void AddCollect(CLI::App& app, TCollectOptions& options) {
  app.add_option("CLASS", options.classes, "classes to collect; default: all that this machine serves")->type_name("");
  AddChoice(app, "--format", options.format, kOutputForms, "output form; default: table on a terminal, else json");
  app.add_option("-o,--output", options.output, "write there instead of standard output")->type_name("FILE");
  app.add_option("--record", options.record, "record every exchange with the service processor")->type_name("FILE");
  AddNumber(app, "--timeout", options.timeoutSeconds, 0.001, 1e9, "SECONDS", "deadline for the whole run");
  app.add_flag("--single-request", options.singleRequest, "ask for all classes in one request, in this order");
  app.add_option("--capture-dir", options.captureDir, "also write each capture file there")->type_name("DIR");
  AddChoice(app, "--progress", options.progress, kWhen, "progress on standard error");
  app.footer("Example:\n  velhost collect --sp sim:failing.toml --format json -o errors.json");
}

void AddCheck(CLI::App& app, TCheckOptions& options) {
  app.add_option("MOF", options.mofs, "MOF files or folders; default: those of --schema")->type_name("");
  AddChoice(app, "--format", options.json, kFindingForms, "form of the findings; default text");
  app.footer("Example:\n  velhost check my-schema/ --format json");
}

void AddSimulate(CLI::App& app, TSimulateArguments& options) {
  app.add_option("FILE", options.file, "the server file; a shipped one by its name")->required()->type_name("");
  AddNumber(app, "--node", options.node, 0, 255, "N", "which BMC node answers; default 0");
  AddNumber(app, "--port", options.port, 1, 65535, "PORT", "UDP port on 127.0.0.1; default 9623");
  AddNumber(app, "--serial-port", options.serialPort, 1, 65535, "PORT",
            "also serve as a virtual machine's BMC on this TCP port");
  app.footer("Example:\n  velhost simulate demo.toml --port 9623");
}

struct TParser {
  TCommandLine result;
  CLI::App app{"Collects chipset error registers and capture files from a server's service processor.", "velhost"};
  CLI::App* collect = nullptr;
  CLI::App* check = nullptr;
  std::map<CLI::App*, EVerb> verbs;

  CLI::App* AddVerb(EVerb verb, const std::string& name, const std::string& description) {
    CLI::App* const added = app.add_subcommand(name, description);
    added->fallthrough();
    added->group("Commands");
    verbs[added] = verb;
    return added;
  }

  TParser() {
    const auto formatter = std::dynamic_pointer_cast<CLI::Formatter>(app.get_formatter());
    formatter->column_width(kHelpColumn);
    formatter->label("SUBCOMMAND", "COMMAND");
    app.set_version_flag("--version", std::string("velhost ") + VELHOST_VERSION);
    app.require_subcommand(1);
    AddCommonOptions(app, result.common);
    collect = AddVerb(EVerb::kCollect, "collect", "run one collection and print the instances");
    AddCollect(*collect, result.collect);
    CLI::App* const classes =
        AddVerb(EVerb::kClasses, "classes", "list the collectable classes and whether this machine serves them");
    classes->footer("Example:\n  velhost classes --machine-type 4411");
    CLI::App* const plugin = AddVerb(EVerb::kPlugin, "plugin", "load the collector and print its identity");
    plugin->footer("Example:\n  velhost plugin --plugin ./libtorgareg.pi.so");
    check = AddVerb(EVerb::kCheck, "check", "check a schema: syntax, semantics, and what the collector needs of it");
    AddCheck(*check, result.check);
    AddSimulate(*AddVerb(EVerb::kSimulate, "simulate", "serve a simulated server over IPMI on the network"),
                result.simulate);
    app.footer(
        "Examples:\n  velhost collect                      everything the demo server has\n"
        "  velhost collect --sp inband          from this server's BMC\n"
        "  velhost COMMAND --help               what a command takes");
  }
};

// What the options are, for CheckUsage.
void DescribeOptions(const CLI::App& app, const std::string& verb, TUsage& usage) {
  for (const CLI::Option* option : app.get_options()) {
    const std::vector<std::string>& longNames = option->get_lnames();
    if (longNames.empty() && option->get_snames().empty()) continue;  // what stands without a name
    TOptionUse use;
    use.name = longNames.empty() ? "-" + option->get_snames().front() : "--" + longNames.front();
    if (option->get_items_expected_max() > 0) use.value = option->get_type_name();
    use.repeatable = option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    const bool isHelp = use.name == "--help";
    std::vector<std::string> names;
    for (const std::string& name : longNames) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    for (const std::string& name : names) {
      const auto known = usage.options.emplace(name, use).first;
      if (!verb.empty() && !isHelp) known->second.verbs.push_back(verb);
    }
  }
}

TUsage UsageOf(const TParser& parser) {
  TUsage usage;
  DescribeOptions(parser.app, "", usage);
  for (const CLI::App* verb : parser.app.get_subcommands({})) {
    usage.verbs.push_back(verb->get_name());
    DescribeOptions(*verb, verb->get_name(), usage);
  }
  return usage;
}

// No line beyond the screen; what a line has too much stands below its description.
std::string Wrapped(const std::string& help) {
  std::istringstream lines(help);
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    const bool isOption = line.starts_with("  ");
    while (line.size() > kHelpWidth) {
      const std::size_t cut = line.rfind(' ', kHelpWidth);
      text += line.substr(0, cut) + "\n";
      line = std::string(isOption ? kHelpColumn : 0, ' ') + line.substr(cut + 1);
    }
    text += line + "\n";
  }
  return text;
}

std::string HelpOf(TParser& parser, const std::string& verb) {
  if (verb.empty()) return Wrapped(parser.app.help());
  return Wrapped(parser.app.get_subcommand(verb)->help(parser.app.get_name()) +
                 "\nThe options of \"velhost --help\" stand for every command.\n");
}

// "velhost help [COMMAND]" is "velhost [COMMAND] --help".
std::vector<std::string> WithoutHelpWord(const TUsage& usage, std::vector<std::string> arguments) {
  if (arguments.empty() || VerbOf(usage, arguments) != "help") return arguments;
  arguments.erase(std::find(arguments.begin(), arguments.end(), "help"));
  arguments.emplace_back("--help");
  return arguments;
}

// The text that is asked for instead of a command; empty where none is.
std::string AskedText(TParser& parser, const TUsage& usage, const std::vector<std::string>& arguments) {
  const std::string verb = VerbOf(usage, arguments);
  const bool known = std::find(usage.verbs.begin(), usage.verbs.end(), verb) != usage.verbs.end();
  if (HasOption(usage, arguments, {"--help", "-h"}) && (known || verb.empty())) return HelpOf(parser, verb);
  if (HasOption(usage, arguments, {"--version"})) return std::string("velhost ") + VELHOST_VERSION + "\n";
  return {};
}

void Parse(TParser& parser, const TUsage& usage, const std::vector<std::string>& arguments) {
  CheckUsage(usage, arguments);
  // CLI11 takes the arguments last first.
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
  try {
    parser.app.parse(std::move(reversed));
  } catch (const CLI::RequiredError&) {
    ThrowUsage(kNeedsServerFile);
  } catch (const CLI::ExtrasError&) {
    const std::string extra = parser.app.remaining(true).front();
    ThrowUsage(QuotedWord(extra) + " is more than " + VerbOf(usage, arguments) + " takes");
  } catch (const CLI::ParseError& error) {
    ThrowUsage(SafeText(error.what()));
  }
  parser.result.verb = parser.verbs.at(parser.app.get_subcommands().front());
  // An empty word counts as given.
  if (parser.result.verb == EVerb::kSimulate && parser.result.simulate.file.empty()) ThrowUsage(kNeedsServerFile);
}

std::string WhereToLook(const TUsage& usage, const std::string& verb) {
  const bool known = std::find(usage.verbs.begin(), usage.verbs.end(), verb) != usage.verbs.end();
  return "\nSee \"velhost " + (known ? verb + " " : std::string()) + "--help\".";
}

}  // namespace

std::optional<TCommandLine> ParseCommandLine(const std::vector<std::string>& arguments, std::string& text) {
  TParser parser;
  const TUsage usage = UsageOf(parser);
  const std::vector<std::string> words = WithoutHelpWord(usage, arguments);
  text = AskedText(parser, usage, words);
  if (!text.empty()) return std::nullopt;
  try {
    Parse(parser, usage, words);
  } catch (const THostError& error) {
    throw THostError(error.Status(), error.what() + WhereToLook(usage, VerbOf(usage, words)));
  }
  return parser.result;
}

}  // namespace velhost
