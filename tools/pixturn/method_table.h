// The fifteen methods the plug-in adds to Picture, as the command knows them:
// the simulated host's table, under the command's names.
#pragma once

#include "simhost/picture_methods.h"

namespace pixturn {

using MethodEntry = simhost::PictureMethod;
using simhost::MethodForm;
namespace methods = simhost::methods;

}  // namespace pixturn
