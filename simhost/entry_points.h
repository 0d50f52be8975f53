// The host's entry points as the resolver hands them out, one group per concern
// (start-up, objects, pictures, graphics), each function counting its calls and
// checking its arguments against the active host.
#pragma once

#include <cstdint>
#include <string>

#include "platform/xojo/rb_plugin.h"

namespace simhost::internal {

// The address the resolver answers for a name, or null for a name the host does
// not know at all (before any configured fault).
void* EntryPointNamed(const std::string& name);

namespace entry {

double REALGetRBVersion();
void RegisterPluginVersion(int32_t definitionVersion);
void PluginRegisterClassExtension(REALclassDefinition* definition);
void PluginRegisterModule(REALmoduleDefinition* module);

void REALLockObject(REALobject object);
void REALUnlockObject(REALobject object);
void* pluginObjectType(const char* className);
bool REALGetPropValueInt(REALobject object, const char* property, int32_t* value);

REALpicture newPicture(int32_t width, int32_t height, int32_t depth);
void lockPictureDescription(REALpicture picture, REALpictureDescription* description);
bool REALLockPictureDescription(REALpicture picture, REALpictureDescription* description, int32_t pictureType);
void unlockPictureDescription(REALpicture picture);
void REALPictureClearCache(REALpicture picture);
REALpicture REALGetPictureMask(REALpicture picture, uint8_t create);

REALobject pluginPictureGraphicsGetter(REALpicture picture);
void* REALLoadObjectMethod(REALobject object, const char* declaration);

}  // namespace entry
}  // namespace simhost::internal
