// Process-wide values set once by REALPluginMain and only read afterwards.
#pragma once

#include <cstdint>

#include "platform/xojo/rb_plugin.h"

extern REALResolver gResolver;
extern double rbversion_rbversion;         // host version, e.g. 2013.04; 0.0 when unknown
extern int32_t CurrentREALControlVersion;  // definition version chosen for this host
extern const char* gpartname;

// Hosts before 2012.0 expect a description unlock even after a failed lock.
inline bool HostUnlocksAfterFailedLock() { return rbversion_rbversion < 2012.0; }
