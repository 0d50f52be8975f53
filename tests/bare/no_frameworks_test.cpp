// The process the bare host tests run in holds none of the frameworks' functions,
// so the shipped library has nothing to find them in but what a real Linux host
// would give it: nothing.
#include <dlfcn.h>
#include <gtest/gtest.h>

TEST(WithoutMacOS, TheProcessHoldsNoFrameworkFunction) {
    for (const char* name : {"CFBundleCreate", "FSFindFolder", "kCFAllocatorSystemDefault"})
        EXPECT_EQ(dlsym(RTLD_DEFAULT, name), nullptr) << name;
}
