// SPDX-License-Identifier: BSD-3-Clause
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cstdlib>

// GLib keeps each outgrown table of its names for threads that still read it, the first of them from when it was loaded.
// Which it is can only be seen in whole call stacks, and GLib is built without frame pointers.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
extern "C" const char* __lsan_default_suppressions() {
    return "leak:g_quark_\nleak:_dl_init\n";
}

// Listing the tests needs no GStreamer, and so no plug-in that is not built yet.
class gstreamer_environment : public testing::Environment {
  public:
    void SetUp() override {
        // The plug-in that was built, and a registry that no other program sees. Plug-ins are looked at by the test
        // itself: a sanitizer's runtime is not in the program that GStreamer would start for that.
        setenv("GST_PLUGIN_PATH", QVR_PLUGIN_FOLDER, 1);
        setenv("GST_REGISTRY", QVR_REGISTRY, 1);
        setenv("GST_REGISTRY_FORK", "no", 1);
        gst_init(nullptr, nullptr);
    }
    void TearDown() override { gst_deinit(); }
};

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new gstreamer_environment);
    return RUN_ALL_TESTS();
}
