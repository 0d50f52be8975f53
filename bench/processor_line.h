// The line printed above the comparison naming the processor the figures come
// from and the vector path the plug-in takes on it, so that tables from two
// machines are never taken for one another.
#pragma once

#include <ostream>

namespace bench {

void PrintProcessor(std::ostream& out);

}  // namespace bench
