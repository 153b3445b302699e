// The requests of a collection: the calls that its classes are divided into, and the outcome of each call.
#pragma once
#include "host/base/api.h"

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "host/model/cimnamespace.h"
#include "host/profile/plan.h"
#include "nkrovel20/iplugincallbacks.h"

namespace velhost {

/// The GetData calls for these classes: one for each, or a single one for all.
std::vector<std::vector<TAskedClass>> RequestsOf(const std::vector<TAskedClass>& classes, bool singleRequest);

/// Warnings about what is known not to be collected before anything is sent: classes that were named and are not
/// served, classes after the capture class in a single request, or that there is no class at all.
std::vector<std::string> PlanWarnings(const TPlan& plan);

/// Throws THostError (kTooLarge) if a request would take more memory than is allowed; see collectionsize.h. With
/// `singleRequest`, all classes are one request.
void RefuseTooLarge(const TNamespace& cimNamespace, const std::vector<TAskedClass>& classes,
                    const std::string& machineType, bool singleRequest, int serviceProcessors);

/// Passes one request to the plugin. Returns an empty string, or the message of the exception that ended the request.
std::string RunRequest(IPluginBasicQueryCallbacks& plugin, const boost::shared_ptr<TNamespace>& cimNamespace,
                       const std::vector<boost::shared_ptr<TCIMClass>>& classes);

}  // namespace velhost
