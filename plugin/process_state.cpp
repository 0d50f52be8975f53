// The process-wide values declared in process_state.h, as the library holds them
// when it is loaded.
#include "plugin/process_state.h"

#include "plugin/definitions.h"

REALResolver gResolver = nullptr;
double rbversion_rbversion = 0.0;
int32_t CurrentREALControlVersion = kNewestDefinitionVersion;
const char* gpartname = nullptr;
REALmoduleDefinition* gExtensionModule = nullptr;

// Atomic words that took a lock would bring back the locks the plug-in does not take.
static_assert(std::atomic<void*>::is_always_lock_free && std::atomic<SetGWorldProc>::is_always_lock_free &&
              std::atomic<HostKindDecision>::is_always_lock_free);

HostEntryPointSlots gHostEntryPointSlots = {};
LegacyFunctionSlots gLegacyFunctions = {};

std::atomic<HostKindDecision> gHostKind{HostKindDecision::Undecided};
