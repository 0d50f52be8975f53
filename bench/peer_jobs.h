// The peer libraries doing the plug-in's tasks on the same pixels, each forced to
// one thread, with the input image made before any timing (no file reading), and
// the memory floors: copies of the bytes each method must write.
#pragma once

namespace bench {

void RegisterImageMagickJobs();
void RegisterLeptonicaJobs();
void RegisterOpenCvJobs();
void RegisterMemoryFloorJobs();

}  // namespace bench
