// The tasks every implementation is timed on, named as the plug-in's methods are
// called, so that the table lines up a method with its peers and floors.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// RotateQLM's angles: the goal angle, the steepest shear, one past a quarter
// turn, and the shear path with almost no skew.
inline const std::vector<double> kRotationAngles{30, 45, 60, 1e-10};

std::string RotateTask(double angle);  // "RotateQLM(30)", "RotateQLM(1e-10)"

inline constexpr char kRotate90[] = "Rotate90QLM";
inline constexpr char kRotate180[] = "Rotate180QLM";
inline constexpr char kRotate270[] = "Rotate270QLM";
inline constexpr char kMirror[] = "MirrorQLM";
inline constexpr char kHMirror[] = "HMirrorQLM";
inline constexpr char kVMirror[] = "VMirrorQLM";
inline constexpr char kMirrorInPlace[] = "MirrorPictureQLM";
inline constexpr char kHMirrorInPlace[] = "HMirrorPictureQLM";
inline constexpr char kVMirrorInPlace[] = "VMirrorPictureQLM";
inline constexpr char kClone[] = "CloneQLM";
inline constexpr char kCloneToSize[] = "CloneQLM(w,h)";
inline constexpr char kBitmap[] = "BitmapQLM";
inline constexpr char kRotateMemory[] = "RotateMemoryQLM(30)";
inline constexpr char kRotateWithMask[] = "RotateImageAndMaskQLM(30)";
inline constexpr char kRotateWithMaskCut[] = "RotateImageAndMaskQLM(30,cut)";

// RotateQLM(30) on pictures of this size from several threads at once, one picture
// per thread: "RotateQLM(30) 1000x750, 2 threads". The counts are 1, 2 and the
// machine's cores.
inline constexpr int32_t kScalingPictureWidth = 1000;
inline constexpr int32_t kScalingPictureHeight = 750;
std::vector<int> ScalingThreadCounts();
std::string ScalingTask(int threads);

// Implementations other than the plug-in's hosts.
inline constexpr char kImageMagick[] = "imagemagick";
inline constexpr char kLeptonica[] = "leptonica";
inline constexpr char kLeptonicaAreaMap[] = "leptonica-areamap";
inline constexpr char kOpenCv[] = "opencv";
inline constexpr char kMemcpy[] = "memcpy";
inline constexpr char kMemcpyFresh[] = "memcpy-fresh";
std::string HostCopyImplementation(const char* hostLabel);  // "host-copy-desktop"

}  // namespace bench
