// Which classes a collection asks for.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "host/profile/plan.h"

namespace velhost {

/// A server that has a way to every class, for when the real one is not known.
inline constexpr TPlanServer kServerWithEveryWay = {1, true, true, true, 1};

TPlanServer PlanServerOf(const TDiscovery& discovery);

/// Whether it is one of the base classes of the JFR path, for which one of its subclasses is collected.
bool IsJfrBaseClass(const TCIMClass& cimClass);

/// The class of that name. Throws THostError (kInvalidArgument) with the nearest name if the schema has none.
boost::shared_ptr<TCIMClass> FindNamedClass(const TNamespace& cimNamespace, const std::string& name);

/// Throws THostError (kInvalidArgument) like FindNamedClass for the first word that is neither a class nor a pattern.
/// Depends on the schema alone, so it can be called before anything is opened.
void CheckClassNames(const TNamespace& cimNamespace, const std::vector<std::string>& words);

/// The classes to collect, in order. Each word is a class or a pattern with '*' and '?' (MatchesNamePattern).
///
/// Without words these are the default classes: all that the machine type is served by and the server has a way to, in
/// declaration order, the capture class last. A pattern means the default classes that it matches, in that order.
/// A base class of the JFR path means its subclass that serves the machine type, if there is one. A class that is
/// named twice occurs twice; one that a pattern or a base class yields again, before or after it is named, is not.
///
/// Throws THostError (kInvalidArgument) for an unknown name, and for a pattern that matches nothing.
std::vector<TAskedClass> ChooseClasses(const TNamespace& cimNamespace, const std::vector<std::string>& words,
                                       const std::string& machineType, const TPlanServer& server);

/// "no register class serves the machine type 6230; did you mean 6203?", with the nearest machine type that a class of
/// the schema names; empty if a register class serves it, or if the schema has none.
std::string MachineTypeWarning(const TNamespace& cimNamespace, const std::string& machineType);

}  // namespace velhost
