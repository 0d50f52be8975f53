// Parts of the plug-in the fuzz target calls directly rather than through a
// method, because no host of this plug-in reaches them: the plain per-pixel
// definitions the specialised loops follow, and start-up's reshaping of records
// unlike the plug-in's own. Each returns what went wrong, or nothing.
#pragma once

#include <string>

#include "fuzz/fuzz_case.h"

namespace pixturn_fuzz {

// The specialised loops give the bytes their plain definitions give.
std::string CompareLoopsWithDefinitions(const LoopCase& loops);

// Rewritten declarations stay within the host's buffers, and records with
// setters and properties convert without a fault (the sanitizers watch).
std::string ReshapeRecords(const RecordCase& records);

}  // namespace pixturn_fuzz
