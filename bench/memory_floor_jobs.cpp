// The memory floors: memcpy of the bytes each method must write (a copy reads as
// many as it writes, and no method reads more than it writes). "memcpy" copies
// between buffers already in memory: the bare bandwidth, the floor the goals are
// measured against. "memcpy-fresh" copies into pages newly mapped for each copy,
// what a new picture costs when the allocator hands every large block out anew:
// on a virtual machine the page faults cost many times the copy.
#include <benchmark/benchmark.h>

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "bench/job.h"
#include "bench/peer_jobs.h"
#include "bench/rotation_geometry.h"
#include "bench/tasks.h"
#include "bench/test_card.h"

namespace bench {

namespace {

struct Buffers {
    std::vector<uint8_t> source;
    std::vector<uint8_t> destination;
};

// Large enough for the largest picture any task writes; touched once, so that
// the kernel has handed out every page before the timings.
Buffers& Prepared(int64_t bytes) {
    static Buffers buffers;
    if (static_cast<int64_t>(buffers.source.size()) < bytes) {
        buffers.source.assign(static_cast<size_t>(bytes), 0x5A);
        buffers.destination.assign(static_cast<size_t>(bytes), 0xA5);
    }
    return buffers;
}

int64_t Largest(const std::vector<int64_t>& pieces) { return *std::max_element(pieces.begin(), pieces.end()); }

void RegisterFloors(const std::string& task, std::vector<int64_t> pieces) {
    const int64_t largest = Largest(pieces);
    Register({task, kMemcpy, [largest] { Prepared(largest); },
              [pieces, largest] {
                  Buffers& buffers = Prepared(largest);
                  for (int64_t bytes : pieces) {
                      std::memcpy(buffers.destination.data(), buffers.source.data(), static_cast<size_t>(bytes));
                      benchmark::ClobberMemory();
                  }
                  return true;
              },
              {}});
    Register({task, kMemcpyFresh, [largest] { Prepared(largest); },
              [pieces, largest] {
                  Buffers& buffers = Prepared(largest);
                  for (int64_t bytes : pieces) {
                      const auto length = static_cast<size_t>(bytes);
                      void* fresh = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                      if (fresh == MAP_FAILED) return false;
                      std::memcpy(fresh, buffers.source.data(), length);
                      benchmark::ClobberMemory();
                      munmap(fresh, length);
                  }
                  return true;
              },
              {}});
}

}  // namespace

void RegisterMemoryFloorJobs() {
    for (double angle : kRotationAngles) {
        std::vector<int64_t> pieces;
        for (const PictureSize& picture : PicturesOfRotation(test_card::kWidth, test_card::kHeight, angle).Written())
            pieces.push_back(picture.Bytes());
        RegisterFloors(RotateTask(angle), pieces);
    }
    for (const char* task : {kRotate90, kRotate180, kRotate270, kMirror, kHMirror, kVMirror, kMirrorInPlace,
                             kHMirrorInPlace, kVMirrorInPlace, kClone, kCloneToSize, kBitmap})
        RegisterFloors(task, {test_card::kBytes});
}

}  // namespace bench
