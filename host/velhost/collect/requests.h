// The requests of a collection: its classes, the calls that they are divided into, and the outcome of each call.
#pragma once
#include "host/base/api.h"

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "host/bmc/record/recording.h"
#include "host/model/cimnamespace.h"
#include "host/profile/plan.h"
#include "host/velhost/commandline.h"
#include "nkrovel20/iplugincallbacks.h"

namespace velhost {

/// The classes of a collection and the way to ask for them.
struct TCollectedClasses {
  std::vector<TAskedClass> classes;
  bool singleRequest = false;
};

/// What the command line names. If it names no class and `recording` (may be null) says which ones were collected,
/// those again and in the same way; otherwise what this machine serves. Throws THostError (kInvalidArgument) as
/// ChooseClasses does, and for a recorded class that the schema does not have.
TCollectedClasses ClassesToCollect(const TNamespace& cimNamespace, const TCollectOptions& options,
                                   const std::string& machineType, const TPlanServer& server,
                                   const TRecordingHeader* recording);

/// The GetData calls for these classes: one for each, or a single one for all.
std::vector<std::vector<TAskedClass>> RequestsOf(const TCollectedClasses& collected);

/// Warnings about what is known not to be collected before anything is sent: classes that were named and are not
/// served, classes after the capture class in a single request, or that there is no class at all.
std::vector<std::string> PlanWarnings(const TPlan& plan);

/// Throws THostError (kTooLarge) if a request would take more memory than is allowed; see collectionsize.h.
void RefuseTooLarge(const TNamespace& cimNamespace, const TCollectedClasses& collected, const std::string& machineType,
                    int serviceProcessors);

/// Passes one request to the plugin. Returns an empty string, or the message of the exception that ended the request.
std::string RunRequest(IPluginBasicQueryCallbacks& plugin, const boost::shared_ptr<TNamespace>& cimNamespace,
                       const std::vector<boost::shared_ptr<TCIMClass>>& classes);

}  // namespace velhost
