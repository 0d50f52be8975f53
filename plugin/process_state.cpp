// The process-wide values declared in process_state.h, as the library holds them
// when it is loaded.
#include "plugin/process_state.h"

#include "plugin/definitions.h"

REALResolver gResolver = nullptr;
double rbversion_rbversion = 0.0;
int32_t CurrentREALControlVersion = kNewestDefinitionVersion;
const char* gpartname = nullptr;
REALmoduleDefinition* gExtensionModule = nullptr;

HostEntryPointSlots gHostEntryPointSlots = {};
LegacyFunctionSlots gLegacyFunctions = {};

bool IsDesktop = false;
bool IsConsole = false;
