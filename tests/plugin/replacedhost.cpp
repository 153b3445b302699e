#include "tests/plugin/replacedhost.h"

#include <dlfcn.h>

#include <ctime>
#include <new>

#include "nkrovel20/splibrary.h"
#include "nkrovel20/tcimvalue.h"
#include "nkrovel20/trootobject.h"

namespace tests {

TReplacedHost library;

namespace {

void Note(const std::string& call) { library.calls.push_back(call); }

// The host's original function, by its mangled name (Itanium C++ ABI). A member function takes its object as
// the first argument.
template <typename TFunction>
TFunction* Original(const char* symbol) {
  return reinterpret_cast<TFunction*>(dlsym(RTLD_NEXT, symbol));
}

}  // namespace
}  // namespace tests

using tests::library;
using tests::Note;
using tests::Original;

// The form of operator new that reports failure as a null pointer.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return library.noMemory ? nullptr : ::operator new[](size);
}

// Replaces the conversion of the C library.
extern "C" struct tm* gmtime_r(const time_t* seconds, struct tm* result) noexcept {
  if (library.brokenClock) return nullptr;
  *result = {};
  result->tm_year = 70;
  result->tm_mday = 1;
  result->tm_sec = static_cast<int>(*seconds);
  return result;
}

namespace NKROVEL20 {

SPLibrary::SPLibrary() : SPLibrary(0) {}
SPLibrary::SPLibrary(int node) : node_(node) {
  static_cast<void>(node_);  // unused: all nodes behave alike here
}
SPLibrary::~SPLibrary() = default;

SPLibrary* SPLibrary::GetSplibraryInstance(int node) {
  Note("instance " + std::to_string(node));
  if (library.onInstance) library.onInstance();
  static SPLibrary instance;
  return library.noInstance ? nullptr : &instance;
}
int SPLibrary::GetNumberBMCNode() {
  Note("nodes");
  return library.nodes;
}
bool SPLibrary::IsIPMIDriversPresent() {
  Note("driver");
  return true;
}
bool SPLibrary::checkSPComm() {
  Note("check");
  return library.communicates;
}
int SPLibrary::discoverSPs() {
  Note("discover");
  return library.serviceProcessors;
}
bool SPLibrary::isDotcommand() {
  Note("takes dot commands");
  return library.dotCommands;
}

bool SPLibrary::sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool flag) {
  library.sent.push_back({capacity, flag, *length, std::vector<unsigned char>(buffer, buffer + 256)});
  return library.answer && library.answer(buffer, length);
}

bool SPLibrary::sendDotCommand(dotCmd* command, unsigned char* response, int* responseLength, int spIndex,
                               int bufferSize) {
  Note("dot " + std::to_string(spIndex) + " " + std::to_string(bufferSize) + " " +
       std::to_string(command->GetIdentifier().size()) + " " + std::to_string(command->GetParameters().size()) +
       " length " + std::to_string(*responseLength));
  response[0] = 0x5A;
  *responseLength = 1;
  return true;
}

dotCmd::dotCmd(unsigned char command, int identifierLength, int parameterLength, const unsigned char* identifier,
               const unsigned char* parameters)
    : command_(command),
      identifier_(identifier, identifier + identifierLength),
      parameters_(parameters, parameters + parameterLength) {
  Note("command made");
}
dotCmd::~dotCmd() { Note("command gone"); }

ILogger* TRootObject::GetCoreLogger() {
  ++library.coreLoggerCalls;
  static auto* const original = Original<ILogger*()>("_ZN9NKROVEL2011TRootObject13GetCoreLoggerEv");
  return original();
}

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() {
  ++library.pluginManagerCalls;
  static auto* const original =
      Original<boost::shared_ptr<ICIMNamespace>()>("_ZN9NKROVEL2011TRootObject16GetPluginManagerEv");
  return original();
}

TCIMValue::TCIMValue(const char* text) {
  if (library.notesValues) Note("C string " + std::string(text));
  static auto* const original = Original<void(TCIMValue*, const char*)>("_ZN9NKROVEL209TCIMValueC1EPKc");
  original(this, text);
}

TCIMValue::TCIMValue(const std::string& text) {
  if (library.notesValues) Note("string " + text);
  static auto* const original = Original<void(TCIMValue*, const std::string&)>(
      "_ZN9NKROVEL209TCIMValueC1ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
  original(this, text);
}

TCIMValue::operator const std::vector<TCIMValue>&() const {
  if (library.notesValues) Note("elements");
  static auto* const original =
      Original<const std::vector<TCIMValue>&(const TCIMValue*)>("_ZNK9NKROVEL209TCIMValuecvRKSt6vectorIS0_SaIS0_EEEv");
  return original(this);
}

}  // namespace NKROVEL20
