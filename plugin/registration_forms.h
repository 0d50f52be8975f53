// The shapes the class extension takes on its way to a host: flag words in the
// host's dialect, the older 25-word record, and the module of global methods that
// newer hosts take instead of an extension of a built-in class. Everything these
// return for the host is allocated with the C library and lives until the process
// ends, since the host keeps pointers into it.
#pragma once

#include <cstdint>

#include "platform/xojo/rb_plugin.h"

// One flag word for a host of the given version: hosts from 2010.029 on read the
// new-style bits lower down; no host takes the high bits themselves.
uint32_t TranslateFlags(uint32_t flags, double hostVersion);
// The class word and every method and property of both of their tables.
void TranslateDefinitionFlags(REALclassDefinition& definition, double hostVersion);

// The first ten words of each property, as hosts of the older layout read them;
// null for no table (or no memory).
REALpropertyV9* FixProperties(const REALproperty* properties, int32_t count);

// Rewrites `definition` in place into the older 25-word layout with 4-word method
// entries. False, with the record left as it was, when memory runs out.
bool ConvertToOlderLayout(REALclassDefinition& definition);

// The declaration of a global method taking the extended object first, e.g.
// "Rotate90QLM as picture" becomes "Rotate90QLM(extends ref as Picture) as picture".
// A new heap string for the caller to free; null for a null declaration.
char* AddClassParameter(const char* declaration, const char* className);
// The same for a setter: the value assigned becomes the last parameter. Null when
// the declaration has no shape to put it in.
char* AssignmentDeclaration(const char* declaration, const char* className);

// The module "<class><part>ExtensionQLM" holding each method of `extended` as a
// global method. Null when there is nothing to register or no memory for it.
REALmoduleDefinition* BuildExtensionModule(const REALclassDefinition& extended, const char* partName,
                                           int32_t definitionVersion);
