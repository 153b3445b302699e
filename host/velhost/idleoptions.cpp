#include "host/velhost/idleoptions.h"

#include <algorithm>

#include "host/base/unsafetext.h"

namespace velhost {

namespace {

using TNames = std::vector<std::string>;

TNames GivenOptions(const TCommonOptions& options) {
  TNames names;
  const auto add = [&names](bool given, const char* name) {
    if (given) names.emplace_back(name);
  };
  add(!options.plugin.empty(), "--plugin");
  add(!options.schema.empty(), "--schema");
  add(!options.serviceProcessors.empty(), "--sp");
  add(options.machineType.has_value(), "--machine-type");
  add(!options.log.empty(), "--log");
  add(options.logFormat.has_value(), "--log-format");
  add(!options.passwordFile.empty(), "--password-file");
  add(options.cipherSuite.has_value(), "--cipher-suite");
  add(!options.privilege.empty(), "--privilege");
  add(options.replayTiming, "--replay-timing");
  return names;
}

struct TVerbUse {
  const char* name;
  TNames options;
};

// Of collect only what the service processor has no use for is idle.
TVerbUse UseOf(const TCommandLine& commandLine) {
  switch (commandLine.verb) {
    case EVerb::kClasses:
      return {"classes", {"--schema", "--sp", "--machine-type", "--password-file", "--cipher-suite", "--privilege"}};
    case EVerb::kPlugin: return {"plugin", {"--plugin", "--log", "--log-format"}};
    case EVerb::kCheck: return {"check", commandLine.check.mofs.empty() ? TNames{"--schema"} : TNames{}};
    case EVerb::kSimulate: return {"simulate", {}};
    case EVerb::kCollect: break;
  }
  return {"collect", GivenOptions(commandLine.common)};
}

bool Contains(const TNames& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

std::vector<std::string> IdleOptionTexts(const TCommandLine& commandLine) {
  const TCommonOptions& options = commandLine.common;
  const TVerbUse use = UseOf(commandLine);
  const std::string spec = options.serviceProcessors.empty() ? "sim" : options.serviceProcessors.front();
  const std::string scheme = spec.substr(0, spec.find(':'));
  const TNames lanOptions = {"--password-file", "--cipher-suite", "--privilege"};
  std::vector<std::string> texts;
  for (const std::string& name : GivenOptions(options)) {
    const bool idleHere =
        (Contains(lanOptions, name) && scheme != "lan") || (name == "--replay-timing" && scheme != "replay");
    if (!Contains(use.options, name)) {
      texts.push_back(name + " has no effect with " + use.name);
    } else if (name == "--log-format" && options.log.empty()) {
      texts.push_back(name + " has no effect without --log");
    } else if (idleHere) {
      texts.push_back(name + " has no effect with --sp " + SafeText(scheme));
    }
  }
  return texts;
}

}  // namespace velhost
